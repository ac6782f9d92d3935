// PointCloudInfo: building the index of a cloud, filling the neighbour cache in
// parallel (FindNeighborsMT), and answering one point's neighbour list.
#include <zol/runtime/PointCloudInfo.h>

#include <algorithm>

#include <zol/core/IPointList.h>
#include <zol/runtime/Ann.h>
#include <zol/runtime/AnnInternal.h>
#include <zol/runtime/AnnQueryOrderInternal.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NeighborBatchSearchInternal.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

namespace {

/// Makes the point itself entry 0 of its list whenever it lies at the query: among
/// entries at the nearest distance it is moved to the front, and when more duplicates
/// than the list holds pushed it out of the search, it is put in front of them.
void PutSelfFirst(
    const AnnImpl& impl, int pointId, const double* query, int* ids, double* dists, int count) {
    if (count < 1 || ids[0] == pointId) return;
    for (int j = 1; j < count && dists[j] == dists[0]; ++j) {
        if (ids[j] == pointId) {
            std::swap(ids[0], ids[j]);
            return;
        }
    }
    if (dists[0] != 0.0 || pointId < 0 || pointId >= impl.GetPointCount()) return;
    const double* self = impl.GetPoint(pointId);
    if (self[0] != query[0] || self[1] != query[1] || self[2] != query[2]) return;
    std::copy_backward(ids, ids + count - 1, ids + count);
    std::copy_backward(dists, dists + count - 1, dists + count);
    ids[0] = pointId;
    dists[0] = 0.0;
}

/// Task t of n: slice t of the selected points (already in search order), searched in
/// batches on tree t when its copy is free, straight into their cache rows; each filled
/// batch then goes to the visitor, if any.
class FindNeighborsMT : public TaskBase {
public:
    FindNeighborsMT(const AnnImpl* impl,
                    const std::vector<double>* coords,
                    const std::vector<int>* selected,
                    int threadId,
                    int threadCount,
                    int k,
                    int stride,
                    int* cacheIds,
                    double* cacheDists,
                    int* filledCounts,
                    NeighborBatchVisitor* visitor)
        : mpImpl(impl),
          mpCoords(coords),
          mpSelected(selected),
          mThreadId(threadId),
          mThreadCount(threadCount),
          mK(k),
          mStride(stride),
          mpCacheIds(cacheIds),
          mpCacheDists(cacheDists),
          mpFilledCounts(filledCounts),
          mpVisitor(visitor) {}

    void Run() override {
        const std::vector<int>& points = *mpSelected;
        const double* coords = mpCoords->data();
        const int size = static_cast<int>(points.size());
        const int begin = SliceBegin(size, mThreadId, mThreadCount);
        const int end = SliceBegin(size, mThreadId + 1, mThreadCount);
        const AnnRows rows{coords, 3, mpCacheIds, mpCacheDists, mStride};
        for (int first = begin; first < end; first += kAnnQueryBatch) {
            const int count = std::min(kAnnQueryBatch, end - first);
            mpImpl->SearchBatch(rows, points.data(), first, count, mK, mThreadId);
            for (int q = first; q < first + count; ++q) {
                const int p = points[q];
                const size_t row = static_cast<size_t>(p) * mStride;
                PutSelfFirst(*mpImpl, p, coords + 3 * static_cast<size_t>(p), mpCacheIds + row,
                             mpCacheDists + row, mK);
                mpFilledCounts[p] = mK;
            }
            if (mpVisitor) mpVisitor->Visit(mThreadId, points.data() + first, count);
        }
    }

private:
    const AnnImpl* mpImpl;
    const std::vector<double>* mpCoords;
    const std::vector<int>* mpSelected;
    int mThreadId;
    int mThreadCount;
    int mK;
    int mStride;
    int* mpCacheIds;
    double* mpCacheDists;
    int* mpFilledCounts;
    NeighborBatchVisitor* mpVisitor;
};

}  // namespace

PointCloudInfo::PointCloudInfo() : mpAnn(nullptr), mNeighborCount(0) {}

PointCloudInfo::~PointCloudInfo() { Clear(); }

void PointCloudInfo::Clear() {
    delete mpAnn;
    mpAnn = nullptr;
    mNeighborCount = 0;
    mNeighborIds.clear();
    mNeighborDistances.clear();
    mFilledCounts.clear();
}

Ann* PointCloudInfo::GetAnn() const { return mpAnn; }

int PointCloudInfo::GetNeighborCount() const { return mNeighborCount; }

void PointCloudInfo::WidenCaches(int neighborCount) {
    if (neighborCount <= mNeighborCount) return;
    // A wider row layout invalidates every cached row.
    mNeighborIds.clear();
    mNeighborDistances.clear();
    mFilledCounts.clear();
    mNeighborCount = neighborCount;
}

void PointCloudInfo::ResizeCaches(int pointCount) {
    const size_t points = std::max(mFilledCounts.size(), static_cast<size_t>(pointCount));
    mFilledCounts.resize(points, 0);
    mNeighborIds.resize(points * mNeighborCount, -1);
    mNeighborDistances.resize(points * mNeighborCount, REAL_LARGE);
}

int PointCloudInfo::InitAnn(const IPointCloud* pointCloud, int neighborCount) {
    if (!pointCloud) {
        return LogFailure(RESULT_INVALID_INPUT, "PointCloudInfo::InitAnn pointCloud is NULL");
    }
    if (!mpAnn) {
        mpAnn = new Ann;
        PointCloudPointList pointList(pointCloud);
        if (mpAnn->Init(&pointList, nullptr) != RESULT_OK) return RESULT_STEP_FAIL;
    }
    WidenCaches(neighborCount);
    ResizeCaches(pointCloud->GetPointCount());
    return RESULT_OK;
}

int PointCloudInfo::FindNearestNeighbors(int neighborCount,
                                         const IPointCloud* pointCloud,
                                         const std::vector<int>* selection) {
    return FindNearestNeighbors(neighborCount, pointCloud, selection, nullptr);
}

int PointCloudInfo::FindNearestNeighbors(int neighborCount,
                                         const IPointCloud* pointCloud,
                                         const std::vector<int>* selection,
                                         NeighborBatchVisitor* visitor) {
    if (!pointCloud) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "PointCloudInfo::FindNearestNeighbors pointCloud is NULL");
    }
    if (neighborCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "PointCloudInfo::FindNearestNeighbors: neighborCount < 1");
    }
    if (!mpAnn || !mpAnn->mpImpl) {
        return LogFailure(RESULT_NOT_READY, "PointCloudInfo::FindNearestNeighbors: InitAnn first");
    }
    const AnnImpl* impl = mpAnn->mpImpl.get();
    if (impl->GetDimension() != 3) {
        return LogFailure(RESULT_NOT_READY, "PointCloudInfo::FindNearestNeighbors: InitAnn first");
    }
    WidenCaches(neighborCount);
    const int pointCount = pointCloud->GetPointCount();
    ResizeCaches(pointCount);

    std::vector<int> selected;
    if (selection) {
        std::vector<bool> marked(static_cast<size_t>(pointCount), false);
        for (int id : *selection) {
            if (id >= 0 && id < pointCount) marked[id] = true;
        }
        for (int i = 0; i < pointCount; ++i) {
            if (marked[i]) selected.push_back(i);
        }
    } else {
        selected.resize(static_cast<size_t>(pointCount));
        for (int i = 0; i < pointCount; ++i) selected[i] = i;
    }
    std::vector<double> coords;
    PointCloudPointList pointList(pointCloud);
    CopyPointListCoords(&pointList, &coords);

    // One spatial order for all queries, cut into one contiguous block per worker: each
    // worker then walks only its own region of the tree.
    std::vector<int> order =
        CoherentQueryOrder(coords.data(), 3, selected.data(), 0, static_cast<int>(selected.size()));
    if (!order.empty()) selected.swap(order);
    const int k = std::min(neighborCount, impl->GetPointCount());
    const int taskCount = ParallelTaskCount();
    mpAnn->mpImpl->EnsureTrees(taskCount);
    return RunTasks(
        taskCount,
        [&](int t, int n) -> TaskBase* {
            return new FindNeighborsMT(impl, &coords, &selected, t, n, k, mNeighborCount,
                                       mNeighborIds.data(), mNeighborDistances.data(),
                                       mFilledCounts.data(), visitor);
        },
        {"FindNearestNeighbors", "FindNearestNeighbors: InsertTask FindNeighborsMT Failed"});
}

int PointCloudInfo::GetNeighbor(int pointId,
                                int neighborCount,
                                std::vector<int>* neighborIds,
                                std::vector<double>* squaredDistances) const {
    if (!mpAnn || !mpAnn->mpImpl || mpAnn->mpImpl->GetDimension() != 3) {
        return LogFailure(RESULT_NOT_READY, "PointCloudInfo::GetNeighbor: InitAnn first");
    }
    if (neighborCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "PointCloudInfo::GetNeighbor: neighborCount < 1");
    }
    if (!neighborIds && !squaredDistances) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "PointCloudInfo::GetNeighbor: neighborIds == NULL && squaredDistances "
                          "== NULL");
    }
    const AnnImpl& impl = *mpAnn->mpImpl;
    const int k = std::min(neighborCount, impl.GetPointCount());
    if (GetCachedNeighborCount(pointId) >= k) {
        const size_t row = static_cast<size_t>(pointId) * mNeighborCount;
        if (neighborIds) neighborIds->assign(&mNeighborIds[row], &mNeighborIds[row] + k);
        if (squaredDistances) {
            squaredDistances->assign(&mNeighborDistances[row], &mNeighborDistances[row] + k);
        }
        return RESULT_OK;
    }
    if (pointId < 0 || pointId >= impl.GetPointCount()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "PointCloudInfo::GetNeighbor: invalid pointId = ", pointId);
    }
    std::vector<int> ids(static_cast<size_t>(k));
    std::vector<double> dists(static_cast<size_t>(k));
    const AnnRows rows{impl.GetPoint(pointId), 3, ids.data(), dists.data(), k};
    impl.SearchBatch(rows, nullptr, 0, 1, k, AnnThreadHint());
    PutSelfFirst(impl, pointId, impl.GetPoint(pointId), ids.data(), dists.data(), k);
    if (neighborIds) neighborIds->swap(ids);
    if (squaredDistances) squaredDistances->swap(dists);
    return RESULT_OK;
}

int PointCloudInfo::GetCachedNeighborCount(int pointId) const {
    if (pointId < 0 || pointId >= static_cast<int>(mFilledCounts.size())) return 0;
    return mFilledCounts[pointId];
}

const int* PointCloudInfo::GetCachedNeighborIds(int pointId) const {
    if (GetCachedNeighborCount(pointId) < 1) return nullptr;
    return &mNeighborIds[static_cast<size_t>(pointId) * mNeighborCount];
}

const double* PointCloudInfo::GetCachedNeighborDistances(int pointId) const {
    if (GetCachedNeighborCount(pointId) < 1) return nullptr;
    return &mNeighborDistances[static_cast<size_t>(pointId) * mNeighborCount];
}

}  // namespace ZOL
