// Consistent orientation of plane-fit normals: each normal takes the side of a reference
// where the reference is clear, and the rest take their side from their neighbours
// along a minimum spanning forest of the k-nearest-neighbour graph. Internal.
#pragma once

#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/core/Vector3.h>

namespace ZOL {

/// A normal takes the side of its reference when |cos| of their angle is at least this
/// (about 78 degrees); closer to perpendicular, the neighbours decide.
inline constexpr double kConfidentCosine = 0.2;

/// Orients \p normals in place, only negating some of them:
/// 1. a point with a non-zero reference whose |cos(n, r)| >= kConfidentCosine takes the
///    side of its reference (n . r > 0);
/// 2. the others take the side of an oriented neighbour, growing a minimum spanning
///    forest on the weights 1 - |ni . nj| over the symmetric k-nearest-neighbour graph
///    out of the points of step 1 (Prim; ties go to the lower index, so the result is
///    the same on every run);
/// 3. a connected part without such a point grows from its point of largest |cos(n, r)|
///    (which takes the side of its reference) or, without any reference, from its lowest
///    index, and in that case the whole part is then turned to face away from its
///    centroid on the whole (sum of n . (p - centroid) >= 0).
/// \param[in] xyz 3 doubles per point.
/// \param[in] neighborIds \p neighborCount ids per point, row by row, \p rowStride ids
///            from one row to the next (entry 0 is the point itself; negative ids are
///            skipped).
/// \param[in] references one per point (zero for none); null for none at all.
/// \param[in,out] normals one per point; zero normals are left as they are.
void OrientNormals(const double* xyz,
                   int pointCount,
                   const int* neighborIds,
                   int neighborCount,
                   int rowStride,
                   const Vector3* references,
                   std::vector<Vector3>& normals);

/// Scanner-side references of a range image (a PointCloud with grid topology), whose cell
/// x grows to the right and y upwards as seen from the scanner: per point, the sum of the
/// unit normals (right x up turned around the point) of the up to four grid triangles it
/// spans with its cell's neighbours, which face the scanner. A point without a cell or
/// without two adjacent neighbour cells gets the normalised sum over all points (the
/// mean viewing side).
/// \param[in] xyz the points as read through the cloud's interface (x, y, z triples): a
///            class derived from PointCloud may serve other coordinates than its arrays.
/// \param[out] references one per point.
/// \return false when the cloud has no grid topology or not a single grid triangle.
bool ComputeGridReferences(const PointCloud& cloud,
                           const double* xyz,
                           std::vector<Vector3>& references);

}  // namespace ZOL
