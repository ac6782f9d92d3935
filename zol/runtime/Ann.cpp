// Ann: argument checks, building the index rows from raw data or point lists, and the
// batched and parallel k-nearest queries.
#include <zol/runtime/Ann.h>

#include <algorithm>
#include <new>

#include <zol/core/IPointList.h>
#include <zol/core/Matrix4x4.h>
#include <zol/runtime/AnnInternal.h>
#include <zol/runtime/AnnQueryOrderInternal.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

namespace {

/// Answers the k nearest of rows [begin, end) of the queries, writing those rows of the
/// outputs, in batches on the tree \p preferredTree when its copy is free. Shuffled
/// queries are answered in spatial order. kk = min(k, point count) columns come from
/// the index, the rest are filled with -1 / REAL_LARGE.
void AnswerRows(const AnnImpl& impl,
                const double* queries,
                int begin,
                int end,
                int k,
                int* indexRes,
                double* distanceRes,
                int preferredTree) {
    const int kk = std::min(k, impl.GetPointCount());
    const int dim = impl.GetDimension();
    const std::vector<int> order = CoherentQueryOrder(queries, dim, nullptr, begin, end - begin);
    const int* rowOrder = order.empty() ? nullptr : order.data();
    const int first = rowOrder ? 0 : begin;
    const AnnRows rows{queries, dim, indexRes, distanceRes, k};
    for (int done = 0; done < end - begin; done += kAnnQueryBatch) {
        const int count = std::min(kAnnQueryBatch, end - begin - done);
        impl.SearchBatch(rows, rowOrder, first + done, count, kk, preferredTree);
        if (kk == k) continue;
        for (int j = first + done; j < first + done + count; ++j) {
            const size_t r = static_cast<size_t>(rowOrder ? rowOrder[j] : j) * k;
            if (indexRes) std::fill(indexRes + r + kk, indexRes + r + k, -1);
            if (distanceRes) std::fill(distanceRes + r + kk, distanceRes + r + k, REAL_LARGE);
        }
    }
}

/// One worker's contiguous slice of a parallel list query.
class FindNearestByPointListMT : public TaskBase {
public:
    FindNearestByPointListMT(const AnnImpl* impl,
                             int threadId,
                             const double* queries,
                             int begin,
                             int end,
                             int k,
                             int* indexRes,
                             double* distanceRes)
        : mpImpl(impl),
          mThreadId(threadId),
          mpQueries(queries),
          mBegin(begin),
          mEnd(end),
          mK(k),
          mpIndexRes(indexRes),
          mpDistanceRes(distanceRes) {}

    void Run() override {
        AnswerRows(*mpImpl, mpQueries, mBegin, mEnd, mK, mpIndexRes, mpDistanceRes, mThreadId);
    }

private:
    const AnnImpl* mpImpl;
    int mThreadId;  ///< also the tree this task searches first
    const double* mpQueries;
    int mBegin;
    int mEnd;
    int mK;
    int* mpIndexRes;
    double* mpDistanceRes;
};

/// Rows of a point list: coordinates (moved by \p transform), followed by the normals
/// (turned by \p transform) times \p normalWeight when \p withNormal.
std::vector<double> ListRows(const IPointList* pointList,
                             bool withNormal,
                             double normalWeight,
                             const Matrix4x4* transform) {
    std::vector<double> coords;
    CopyPointListCoords(pointList, &coords);
    const size_t count = coords.size() / 3;
    if (transform) {
        for (size_t i = 0; i < count; ++i) {
            const Vector3 p = transform->TransformPoint(
                Vector3(coords[3 * i], coords[3 * i + 1], coords[3 * i + 2]));
            coords[3 * i] = p.x;
            coords[3 * i + 1] = p.y;
            coords[3 * i + 2] = p.z;
        }
    }
    if (!withNormal) return coords;
    std::vector<double> normals;
    CopyPointListNormals(pointList, &normals);
    std::vector<double> rows(count * 6);
    for (size_t i = 0; i < count; ++i) {
        Vector3 n(normals[3 * i], normals[3 * i + 1], normals[3 * i + 2]);
        if (transform) n = transform->RotateVector(n);
        for (int a = 0; a < 3; ++a) {
            rows[6 * i + a] = coords[3 * i + a];
            rows[6 * i + 3 + a] = n[a] * normalWeight;
        }
    }
    return rows;
}

}  // namespace

Ann::Ann() = default;

Ann::~Ann() = default;

Ann::Ann(const Ann& other) = default;

Ann& Ann::operator=(const Ann& other) = default;

void Ann::Clear() { mpImpl.reset(); }

int Ann::GetPointCount() const { return mpImpl ? mpImpl->GetPointCount() : 0; }

int Ann::GetDimension() const { return mpImpl ? mpImpl->GetDimension() : 0; }

namespace {

/// The checks that every query makes first, in order.
/// \return 0 when the query may go on, else the logged failure status.
int CheckQuery(const AnnImpl* impl, bool hasOutput, bool badQuery) {
    if (!impl) {
        if (badQuery || !hasOutput) {
            return LogFailure(RESULT_NOT_READY,
                              "AnnImpl::FindNearestNeighbors not initialized: invalid input");
        }
        return LogFailure(RESULT_NOT_READY, "AnnImpl::FindNearestNeighbors not initialized");
    }
    if (!hasOutput) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Invalid input: indexRes == NULL && distanceRes == NULL");
    }
    return RESULT_OK;
}

/// Builds a fresh implementation, or null after logging the tree failure.
std::shared_ptr<AnnImpl> BuildImpl(std::vector<double>&& rows, int count, int dim, int* status) {
    auto impl = std::shared_ptr<AnnImpl>(new (std::nothrow) AnnImpl);
    *status = impl ? impl->Build(std::move(rows), count, dim) : RESULT_NOT_READY;
    if (*status != RESULT_OK) {
        *status = LogFailure(RESULT_NOT_READY, "Ann Init: Tree init failed");
        return nullptr;
    }
    return impl;
}

}  // namespace

int Ann::Init(double* refData, int refCount, int refDim) {
    if (!refData || refCount < 1 || refDim < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Ann Init: refData == NULL || refCount < 1 || refDim < 1: refCount=",
                          refCount, " refDim=", refDim);
    }
    mpImpl.reset();
    std::vector<double> rows(refData, refData + static_cast<size_t>(refCount) * refDim);
    int status = RESULT_OK;
    mpImpl = BuildImpl(std::move(rows), refCount, refDim, &status);
    return status;
}

int Ann::Init(const IPointList* pointList, const Matrix4x4* transform) {
    if (!pointList || pointList->GetPointCount() < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Ann Init: pointList == NULL || pointList->GetPointCount() < 1");
    }
    mpImpl.reset();
    const int count = pointList->GetPointCount();
    int status = RESULT_OK;
    mpImpl = BuildImpl(ListRows(pointList, false, 0.0, transform), count, 3, &status);
    return status;
}

int Ann::InitWithNormal(const IPointList* pointList,
                        double normalWeight,
                        const Matrix4x4* transform) {
    if (!pointList || pointList->GetPointCount() < 1) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "Ann InitWithNormal: pointList == NULL || pointList->GetPointCount() < 1");
    }
    mpImpl.reset();
    const int count = pointList->GetPointCount();
    int status = RESULT_OK;
    mpImpl = BuildImpl(ListRows(pointList, true, normalWeight, transform), count, 6, &status);
    if (mpImpl) {
        mpImpl->mWithNormal = true;
        mpImpl->mNormalWeight = normalWeight;
    }
    return status;
}

int Ann::FindNearestNeighbors(
    double* queryData, int queryCount, int k, int* indexRes, double* distanceRes) {
    const bool badQuery = (!queryData && queryCount > 0) || queryCount < 0 || k < 1;
    const int status = CheckQuery(mpImpl.get(), indexRes || distanceRes, badQuery);
    if (status != RESULT_OK) return status;
    if (badQuery) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "Ann::FindNearestNeighbors: queryData == NULL || queryCount < 0 || k < 1");
    }
    AnswerRows(*mpImpl, queryData, 0, queryCount, k, indexRes, distanceRes, AnnThreadHint());
    return RESULT_OK;
}

int Ann::FindNearestNeighbors(const IPointList* queryList,
                              int k,
                              int* indexRes,
                              double* distanceRes) {
    const bool badQuery = !queryList || k < 1;
    const int status = CheckQuery(mpImpl.get(), indexRes || distanceRes, badQuery);
    if (status != RESULT_OK) return status;
    if (badQuery) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Ann::FindNearestNeighbors: queryList == NULL || k < 1");
    }
    const int dim = mpImpl->GetDimension();
    if (dim != (mpImpl->mWithNormal ? 6 : 3)) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "Ann::FindNearestNeighbors: index dimension does not fit a point list: ", dim);
    }
    // Copy the queries once, so that the workers read a flat array, not the list.
    const std::vector<double> queries =
        ListRows(queryList, mpImpl->mWithNormal, mpImpl->mNormalWeight, nullptr);
    const int queryCount = static_cast<int>(queries.size() / dim);

    // Keep the index alive for the workers even if another copy of this Ann is cleared.
    const std::shared_ptr<AnnImpl> impl = mpImpl;
    const double* rows = queries.data();
    const int taskCount = ParallelTaskCount();
    // The thread count may have grown since Init: one tree per worker where copies allow.
    impl->EnsureTrees(taskCount);
    return RunTasks(
        taskCount,
        [&](int t, int n) -> TaskBase* {
            return new FindNearestByPointListMT(impl.get(), t, rows, SliceBegin(queryCount, t, n),
                                                SliceBegin(queryCount, t + 1, n), k, indexRes,
                                                distanceRes);
        },
        {"FindNearestNeighbors",
         "FindNearestNeighbors: ThreadPool InsertTask FindNearestByPointListMT Failed"},
        taskCount);
}

int Ann::FindNearestNeighbors(double* query,
                              double radius,
                              std::vector<int>* indexRes,
                              std::vector<double>* distanceRes) {
    const bool badQuery = !query || !(radius >= 0.0);
    const int status = CheckQuery(mpImpl.get(), indexRes || distanceRes, badQuery);
    if (status != RESULT_OK) return status;
    if (badQuery) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Ann::FindNearestNeighbors: query == NULL || radius < 0");
    }
    mpImpl->SearchRadius(query, radius * radius, indexRes, distanceRes);
    return RESULT_OK;
}

}  // namespace ZOL
