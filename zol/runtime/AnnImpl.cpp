// AnnImpl: the only file that calls the kd-tree library. Every call runs under
// AnnLibraryLock(); the points are handed over once, as one contiguous block.
#include <zol/runtime/AnnInternal.h>

#include <ANN/ANN.h>

#include <cmath>
#include <new>
#include <type_traits>

#include <zol/runtime/Constants.h>

namespace ZOL {

static_assert(std::is_same<ANNcoord, double>::value, "kd-tree coordinates must be doubles");
static_assert(std::is_same<ANNdist, double>::value, "kd-tree distances must be doubles");
static_assert(std::is_same<ANNidx, int>::value, "kd-tree indices must be ints");

namespace {
constexpr int kBucketSize = 16;
constexpr double kExactSearch = 0.0;
}  // namespace

std::mutex& AnnLibraryLock() {
    static std::mutex lock;
    return lock;
}

int AnnImpl::Build(std::vector<double>&& data, int count, int dim) {
    for (double v : data) {
        if (!std::isfinite(v)) return RESULT_NOT_READY;
    }
    mData = std::move(data);
    mPointCount = count;
    mDimension = dim;
    try {
        mRows.resize(static_cast<size_t>(count));
        for (int i = 0; i < count; ++i) mRows[i] = mData.data() + static_cast<size_t>(i) * dim;
        std::lock_guard<std::mutex> lock(AnnLibraryLock());
        mpTree = new ANNkd_tree(mRows.data(), count, dim, kBucketSize, ANN_KD_SUGGEST);
    } catch (const std::bad_alloc&) {
        mpTree = nullptr;
        return RESULT_NOT_READY;
    }
    return RESULT_OK;
}

AnnImpl::~AnnImpl() {
    if (!mpTree) return;
    std::lock_guard<std::mutex> lock(AnnLibraryLock());
    delete mpTree;
}

void AnnImpl::SearchBatch(const double* queries,
                          int queryCount,
                          int k,
                          int* indexRes,
                          double* distanceRes,
                          int stride) const {
    std::lock_guard<std::mutex> lock(AnnLibraryLock());
    for (int q = 0; q < queryCount; ++q) {
        const size_t row = static_cast<size_t>(q) * stride;
        mpTree->annkSearch(const_cast<double*>(queries + static_cast<size_t>(q) * mDimension), k,
                           indexRes + row, distanceRes + row, kExactSearch);
    }
}

void AnnImpl::SearchRadius(const double* query,
                           double squaredRadius,
                           std::vector<int>* indexRes,
                           std::vector<double>* distanceRes) const {
    std::vector<int> ids;
    std::vector<double> dists;
    {
        std::lock_guard<std::mutex> lock(AnnLibraryLock());
        double* q = const_cast<double*>(query);
        const int found = mpTree->annkFRSearch(q, squaredRadius, 0, nullptr, nullptr, kExactSearch);
        if (found > 0) {
            ids.resize(found);
            dists.resize(found);
            mpTree->annkFRSearch(q, squaredRadius, found, ids.data(), dists.data(), kExactSearch);
        }
    }
    if (indexRes) indexRes->swap(ids);
    if (distanceRes) distanceRes->swap(dists);
}

}  // namespace ZOL
