// Plane-fit normals of single points from their neighbour lists, shared by the normal
// estimation of ConsolidatePointCloud and by registration (sample normals). Internal.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/GeneralMatrixInternal.h>

namespace ZOL {

class PointCloudInfo;

/// Centroid of the points \p ids[0 .. count) of a flat coordinate array and their
/// scatter matrix: the sum over the points of d d^T with d = p - centroid (not divided
/// by the count), both triangles filled. \p count must be at least 1.
void ComputeScatter(
    const double* xyz, const int* ids, int count, Vector3& centroid, GeneralMatrix3& scatter);

/// Unit normal of the least-squares plane through the points \p ids[0 .. count) of a
/// flat coordinate array (x, y, z per point): the eigenvector of the smallest eigenvalue
/// of their covariance about the centroid. Unoriented (either sign may come out, but
/// always the same one for the same input).
/// \param[in] xyz 3 doubles per point.
/// \param[in] ids indices into \p xyz; \p count of them.
/// \param[out] normal the unit normal; (0, 0, 0) when the fit fails.
/// \param[out] curvature smallest eigenvalue / sum of eigenvalues, in [0, 1/3] (0 for a
///             perfect plane); may be null.
/// \param[in] solver a solver to reuse across calls (no allocation after its first
///            use), e.g. one per worker; null makes a temporary one.
/// \return true; false for fewer than 3 points, points that do not span a plane (all on
///         one line or one spot) or a non-finite coordinate.
bool FitPlaneNormal(const double* xyz,
                    const int* ids,
                    int count,
                    Vector3& normal,
                    double* curvature = nullptr,
                    GeneralMatrixEigenSolver* solver = nullptr);

/// Unit plane-fit normal of point \p pointId of \p pointCloud from its \p neighborCount
/// nearest points (the point itself included), read through \p info (the index must
/// have been built by info.InitAnn over the same cloud; cached lists are used when
/// present). Safe to call from several threads once the index is built.
/// \param[out] normal the unit normal, unoriented; (0, 0, 0) when the fit fails.
/// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for a null cloud; RESULT_FAIL (-1)
///         when the neighbours do not span a plane; GetNeighbor's status when the
///         neighbours cannot be read.
int EstimatePointNormal(IPointCloud* pointCloud,
                        const PointCloudInfo& info,
                        int pointId,
                        int neighborCount,
                        Vector3& normal);

}  // namespace ZOL
