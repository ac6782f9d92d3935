// What coarse alignment knows about each cloud: the cloud reduced on a voxel grid to
// voxel means with plane-fit normals, and per-point curvature descriptors that do not
// change with the pose. Internal.
#pragma once

#include <vector>

#include <zol/core/PointCloud.h>

namespace ZOL {

/// Components of a descriptor: the two principal curvatures, times the radius, of the
/// quadric height field fitted around the point in its tangent frame, at five radii (1.5,
/// 2, 2.5, 3 and 4 reduction spacings). The fit has linear terms, so a tilted normal or a
/// neighbourhood cut off by the border of a scan bends the values little.
constexpr int kAlignDescriptorDim = 10;

/// A reduced cloud in flat arrays.
struct AlignCloud {
    PointCloud cloud;                 ///< voxel means and their normals
    std::vector<double> xyz;          ///< 3 per point
    std::vector<double> normals;      ///< 3 per point, unit (or zero)
    std::vector<double> descriptors;  ///< kAlignDescriptorDim per point

    int Count() const { return static_cast<int>(xyz.size() / 3); }
    const double* Point(int i) const { return &xyz[3 * static_cast<size_t>(i)]; }
    const double* Normal(int i) const { return &normals[3 * static_cast<size_t>(i)]; }
    const double* Descriptor(int i) const {
        return &descriptors[static_cast<size_t>(i) * kAlignDescriptorDim];
    }
    /// Copies the cloud's points and normals into the flat arrays.
    void CopyFlat();
};

/// The voxel size at which ReduceOnVoxels keeps about \p targetCount of the points
/// \p xyz (3 per point; estimated on at most 20000 evenly strided points); 0 when the
/// points have no extent.
double ChooseVoxelSize(const std::vector<double>& xyz, int targetCount);

/// Replaces \p out by one point per occupied voxel of size \p voxelSize (> 0), in voxel
/// key order: the mean of its points, with the normal of the plane fitted to the points
/// of its 3 x 3 x 3 block of voxels, turned to the side of the sum of their normals.
/// Fills out->cloud and the flat arrays.
/// \param[in] xyz, normals 3 per point.
void ReduceOnVoxels(const std::vector<double>& xyz,
                    const std::vector<double>& normals,
                    double voxelSize,
                    AlignCloud* out);

/// Computes the descriptors of a reduced cloud from its current normals, at the scale of
/// the reduction spacing \p spacing.
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
