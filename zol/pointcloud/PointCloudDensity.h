// The point spacing of a cloud: the median over points of the mean distance from a
// point to its nearest other points. Smoothing, sampling and registration scale their
// tolerances by it.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/IPointList.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class PointCloudInfo;

/// Point spacing of any point list, through a nearest-neighbour index of its own.
///
/// With k = min(point count, \p neighborCount), every point's mean distance to its
/// k - 1 nearest other points is computed (on the workers; the result does not depend on
/// the thread count) and the lower median of these means (the element of rank
/// ceil(n / 2) - 1) is the density.
/// \param[in] pointList the points; null is an error.
/// \param[in] neighborCount k, the point itself included; at least 2.
/// \param[out] density the spacing in the unit of the coordinates; untouched on failure.
/// \return RESULT_OK (0);
///         RESULT_INVALID_INPUT (-2) for a null list ("CalculatePointListDensity: invalid
///         input");
///         RESULT_FAIL (-1) when the list is empty or neighborCount < 2
///         ("CalculatePointListDensity invalid pointCount: " n " neighborCount: " k);
///         a single point has no other point to measure to, so its density is NaN;
///         RESULT_NOT_READY (-5) when the index cannot be built, e.g. for a NaN
///         coordinate ("CalculatePointListDensity: Ann initialize failed");
///         the query's status when the neighbour search fails ("CalculatePointListDensity
///         Ann find nearest neighbor failed").
ZOL_API int CalculatePointListDensity(const IPointList* pointList,
                                      int neighborCount,
                                      double& density);

/// Point spacing of a cloud through a caller's neighbour context, so that the index and
/// the neighbour lists already cached there are reused (and the missing lists are added
/// to the cache).
/// \param[in] pointCloud the cloud; null is an error.
/// \param[in,out] info the cloud's neighbour context (InitAnn is called on it).
/// \param[in] neighborCount k, the point itself included; at least 2.
/// \param[out] density the lower median, over the selected points, of the mean distance
///             to the k - 1 nearest other points (k = min(point count, neighborCount)).
/// \param[in] selectIndex the points whose means count (each listed once); null for all.
/// \return RESULT_OK (0);
///         RESULT_INVALID_INPUT (-2) for a null cloud ("CalculatePointListDensity:
///         invalid input"), an empty selection ("CalculatePointListDensity: selectIndex
///         is empty"), a selected index outside the cloud ("CalculatePointListDensity:
///         invalid selectIndex: " and the index) or \p info holding the index of a cloud
///         of another size ("CalculatePointListDensity: info holds the index of another
///         cloud");
///         RESULT_FAIL (-1) when the cloud is empty or neighborCount < 2
///         ("CalculatePointListDensity invalid pointCount: " n " neighborCount: " k; a
///         single point gives NaN, as above);
///         InitAnn's status when the index cannot be built ("CalculatePointListDensity:
///         Ann initialize failed"); the search's status when it fails
///         ("CalculatePointListDensity Ann find nearest neighbor failed").
ZOL_API int _CalculatePointListDensity(const IPointCloud* pointCloud,
                                       PointCloudInfo& info,
                                       int neighborCount,
                                       double& density,
                                       const std::vector<int>* selectIndex);

}  // namespace ZOL
