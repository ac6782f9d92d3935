// What coarse alignment knows about each cloud: the cloud reduced to a few hundred
// points on a voxel grid, its smoothed normals, per-point shape descriptors that do not
// change with the pose, and flags for points at the border of a scan. Internal.
#pragma once

#include <vector>

#include <zol/core/PointCloud.h>

namespace ZOL {

/// Components of a descriptor: at two radii, the mean signed elevation angle of the
/// neighbours over the tangent plane (a curvature with its sign) and the mean normal
/// deviation (how much the surface bends, whatever the direction).
constexpr int kAlignDescriptorDim = 4;

/// A reduced cloud in flat arrays.
struct AlignCloud {
    PointCloud cloud;                      ///< reduced points and their normals
    std::vector<double> xyz;               ///< 3 per point
    std::vector<double> normals;           ///< 3 per point, unit (or zero)
    std::vector<double> descriptors;       ///< kAlignDescriptorDim per point
    std::vector<unsigned char> border;     ///< 1 where the neighbourhood is one-sided

    int Count() const { return static_cast<int>(xyz.size() / 3); }
    const double* Point(int i) const { return &xyz[3 * static_cast<size_t>(i)]; }
    const double* Normal(int i) const { return &normals[3 * static_cast<size_t>(i)]; }
    const double* Descriptor(int i) const {
        return &descriptors[static_cast<size_t>(i) * kAlignDescriptorDim];
    }
};

/// The voxel size at which ReduceOnVoxels keeps about \p targetCount of the points
/// \p xyz (3 per point; estimated on at most 20000 evenly strided points); 0 when the
/// points have no extent.
double ChooseVoxelSize(const std::vector<double>& xyz, int targetCount);

/// Replaces \p out by one point per occupied voxel of size \p voxelSize (> 0): the mean
/// of its points, with the normalised sum of their normals. Voxels come out in key order.
/// \param[in] xyz, normals 3 per point.
void ReduceOnVoxels(const std::vector<double>& xyz,
                    const std::vector<double>& normals,
                    double voxelSize,
                    PointCloud* out);

/// Copies the (smoothed) reduced cloud into the flat arrays and computes descriptors and
/// border flags at the scale of the reduction spacing \p spacing.
void DescribeAlignCloud(double spacing, AlignCloud& cloud);

/// Scales every descriptor component of both clouds by the inverse of its spread over
/// the ref cloud, so that the L1 distance weighs the components alike.
void BalanceDescriptors(AlignCloud& ref, AlignCloud& from);

/// L1 distance between two descriptors.
inline double DescriptorDistance(const double* a, const double* b) {
    double sum = 0.0;
    for (int k = 0; k < kAlignDescriptorDim; ++k) sum += a[k] > b[k] ? a[k] - b[k] : b[k] - a[k];
    return sum;
}

}  // namespace ZOL
