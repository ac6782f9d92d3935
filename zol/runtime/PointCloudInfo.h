// PointCloudInfo: the neighbour context of the point-cloud algorithms. It owns the
// nearest-neighbour index of one cloud and caches each point's k nearest neighbours, so
// that a caller working on one cloud several times builds the index once.
#pragma once

#include <vector>

#include <zol/runtime/Export.h>

namespace ZOL {

class Ann;
class IPointCloud;
class NeighborBatchVisitor;

/// Nearest-neighbour index of one cloud plus a per-point neighbour cache.
///
/// Neighbour lists hold point indices nearest first; entry 0 is the point itself (among
/// points at the same spot, the point's own index is put first). Distances are squared.
/// Once filled, the cache may be read from many threads at once (GetNeighbor does not
/// write).
class ZOL_API PointCloudInfo {
public:
    PointCloudInfo();
    ~PointCloudInfo();
    PointCloudInfo(const PointCloudInfo&) = delete;
    PointCloudInfo& operator=(const PointCloudInfo&) = delete;

    /// Builds the index over \p pointCloud if there is none yet (an existing index is
    /// kept, even for another cloud), and prepares the caches for \p neighborCount
    /// neighbours per point: a larger count than cached clears the cache, a smaller one
    /// keeps it. The caches grow to the cloud's point count.
    /// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for a null cloud
    ///         ("PointCloudInfo::InitAnn pointCloud is NULL"); RESULT_STEP_FAIL (-3) when
    ///         the index cannot be built, e.g. for an empty cloud or a non-finite
    ///         coordinate (after the index's own line; the failed index stays attached).
    int InitAnn(const IPointCloud* pointCloud, int neighborCount);
    /// Fills the cache of the selected points with their \p neighborCount nearest points
    /// (at most the indexed point count), in parallel on GetThreadCount() workers. The
    /// queries are the cloud's current coordinates.
    /// \param[in] selection point indices (out-of-range ones are ignored); null for all.
    /// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for a null cloud
    ///         ("PointCloudInfo::FindNearestNeighbors pointCloud is NULL") or
    ///         neighborCount < 1 ("PointCloudInfo::FindNearestNeighbors: neighborCount <
    ///         1"); RESULT_NOT_READY (-5) without a built 3-D index ("PointCloudInfo::
    ///         FindNearestNeighbors: InitAnn first"); RESULT_STEP_FAIL (-3) when no worker
    ///         starts ("FindNearestNeighbors: invalid thread count = " and the count) or a
    ///         task cannot be queued ("FindNearestNeighbors: InsertTask FindNeighborsMT
    ///         Failed").
    int FindNearestNeighbors(int neighborCount,
                             const IPointCloud* pointCloud,
                             const std::vector<int>* selection);
    /// The \p neighborCount nearest points of \p pointId, from the cache when it holds
    /// that many, else straight from the index (not stored, so concurrent calls are safe).
    /// \param[out] neighborIds resized to min(neighborCount, indexed point count); may be
    ///             null.
    /// \param[out] squaredDistances likewise; may be null.
    /// \return RESULT_OK (0); RESULT_NOT_READY (-5) without a built 3-D index
    ///         ("PointCloudInfo::GetNeighbor: InitAnn first"); RESULT_INVALID_INPUT (-2)
    ///         for neighborCount < 1 ("PointCloudInfo::GetNeighbor: neighborCount < 1"),
    ///         both outputs null ("PointCloudInfo::GetNeighbor: neighborIds == NULL &&
    ///         squaredDistances == NULL") or a point that is neither indexed nor cached
    ///         ("PointCloudInfo::GetNeighbor: invalid pointId = " and the id).
    int GetNeighbor(int pointId,
                    int neighborCount,
                    std::vector<int>* neighborIds,
                    std::vector<double>* squaredDistances = nullptr) const;

    /// \return how many neighbours the cache holds for \p pointId (0 when none).
    int GetCachedNeighborCount(int pointId) const;
    /// \return the cached neighbour ids of \p pointId (GetCachedNeighborCount entries),
    ///         or null when none are cached. Valid until the next InitAnn,
    ///         FindNearestNeighbors or Clear.
    const int* GetCachedNeighborIds(int pointId) const;
    /// \return the matching squared distances, or null when none are cached.
    const double* GetCachedNeighborDistances(int pointId) const;

    /// \return the index (null before the first InitAnn).
    Ann* GetAnn() const;
    /// \return the number of neighbours per point that the cache is laid out for.
    int GetNeighborCount() const;
    /// Releases the index and the caches.
    void Clear();

private:
    friend class NeighborBatchSearch;

    /// FindNearestNeighbors that hands each batch of filled rows to \p visitor (may be
    /// null) on the worker that filled it.
    int FindNearestNeighbors(int neighborCount,
                             const IPointCloud* pointCloud,
                             const std::vector<int>* selection,
                             NeighborBatchVisitor* visitor);
    void WidenCaches(int neighborCount);
    void ResizeCaches(int pointCount);

    Ann* mpAnn;
    int mNeighborCount;
    std::vector<int> mNeighborIds;           ///< mNeighborCount entries per point
    std::vector<double> mNeighborDistances;  ///< mNeighborCount entries per point
    std::vector<int> mFilledCounts;          ///< neighbours cached per point
};

}  // namespace ZOL
