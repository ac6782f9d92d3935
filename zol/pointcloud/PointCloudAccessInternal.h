// How the point-cloud operations read a cloud in their hot loops: coordinates and
// normals copied once per pass into flat arrays, and one point's neighbour list read
// from the cache of its PointCloudInfo without copying.
#pragma once

#include <vector>

#include <zol/core/IPointList.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Ann.h>
#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

/// True when \p info already holds an index over another number of points than the
/// cloud's: InitAnn keeps an existing index, and its neighbour ids would then point
/// outside the cloud.
inline bool HoldsIndexOfOtherCloud(const PointCloudInfo& info, int pointCount) {
    const Ann* ann = info.GetAnn();
    return ann != nullptr && ann->GetPointCount() > 0 && ann->GetPointCount() != pointCount;
}

/// The cloud's coordinates as x, y, z triples.
inline std::vector<double> CopyCloudCoords(const IPointCloud* cloud) {
    std::vector<double> xyz;
    PointCloudPointList list(cloud);
    CopyPointListCoords(&list, &xyz);
    return xyz;
}

/// The cloud's normals as x, y, z triples (zeros without normals).
inline std::vector<double> CopyCloudNormals(const IPointCloud* cloud) {
    std::vector<double> xyz;
    PointCloudPointList list(cloud);
    CopyPointListNormals(&list, &xyz);
    return xyz;
}

/// Point \p i of a flat x, y, z array.
inline Vector3 FlatPoint(const std::vector<double>& xyz, int i) {
    const double* p = &xyz[3 * static_cast<size_t>(i)];
    return Vector3(p[0], p[1], p[2]);
}

/// The \p k nearest points of \p pointId: the cached row when it holds k entries, else
/// a fresh query into \p scratch (an index built over another cloud can give fewer).
/// Safe on many threads once the cache is filled.
/// \param[out] row the ids, nearest first; \param[out] count how many.
/// \return RESULT_OK or GetNeighbor's status.
inline int ReadNeighborRow(const PointCloudInfo& info,
                           int pointId,
                           int k,
                           std::vector<int>& scratch,
                           const int*& row,
                           int& count) {
    if (info.GetCachedNeighborCount(pointId) >= k) {
        row = info.GetCachedNeighborIds(pointId);
        count = k;
        return 0;
    }
    const int status = info.GetNeighbor(pointId, k, &scratch);
    row = scratch.data();
    count = static_cast<int>(scratch.size());
    return status;
}

}  // namespace ZOL
