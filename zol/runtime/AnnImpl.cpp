// AnnImpl: building the trees of an index, one per library copy, and lending them to
// searches. Every call into the kd-tree library holds the lock of the tree's copy.
#include <zol/runtime/AnnInternal.h>

#include <ANN/ANN.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <type_traits>

#include <zol/runtime/AnnQueryOrderInternal.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

static_assert(std::is_same<ANNcoord, double>::value, "kd-tree coordinates must be doubles");
static_assert(std::is_same<ANNdist, double>::value, "kd-tree distances must be doubles");
static_assert(std::is_same<ANNidx, int>::value, "kd-tree indices must be ints");

namespace {

constexpr double kExactSearch = 0.0;
/// How many searches ahead the rows of a reordered batch are fetched.
constexpr int kPrefetchAhead = 4;
/// Below this many points the extra trees are built on the calling thread: starting
/// workers would cost more than the builds.
constexpr int kParallelBuildPoints = 4096;

/// Asks the cache for the line holding \p address ahead of its use.
inline void Prefetch(const void* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address);
#else
    (void)address;
#endif
}

/// Holds the lock of one tree's library copy for a batch of searches: the preferred
/// tree when its copy is free, else any free one, else it waits for the preferred one.
class TreeLease {
public:
    TreeLease(int treeCount, int preferred) {
        const int start = preferred % treeCount;
        for (int i = 0; i < treeCount; ++i) {
            const int tree = (start + i) % treeCount;
            if (AnnLibraryCopyLock(tree).try_lock()) {
                mTree = tree;
                return;
            }
        }
        AnnLibraryCopyLock(start).lock();
        mTree = start;
    }
    ~TreeLease() { AnnLibraryCopyLock(mTree).unlock(); }
    TreeLease(const TreeLease&) = delete;
    TreeLease& operator=(const TreeLease&) = delete;

    int Tree() const { return mTree; }

private:
    int mTree = 0;
};

}  // namespace

int AnnThreadHint() {
    static std::atomic<int> next{0};
    thread_local const int hint = next.fetch_add(1, std::memory_order_relaxed) & 0xffff;
    return hint;
}

int AnnImpl::Build(std::vector<double>&& data, int count, int dim) {
    for (double v : data) {
        if (!std::isfinite(v)) return RESULT_NOT_READY;
    }
    mPointCount = count;
    mDimension = dim;
    try {
        mRows.resize(static_cast<size_t>(count));
        // Shuffled points are stored in spatial order, so that the points a search visits
        // share cache lines. Point i keeps its row, so the trees and answers are the same.
        const std::vector<int> order = CoherentQueryOrder(data.data(), dim, nullptr, 0, count);
        if (order.empty()) {
            mData = std::move(data);
            for (int i = 0; i < count; ++i) mRows[i] = &mData[static_cast<size_t>(i) * dim];
        } else {
            mData.resize(data.size());
            for (int slot = 0; slot < count; ++slot) {
                double* stored = &mData[static_cast<size_t>(slot) * dim];
                std::copy_n(&data[static_cast<size_t>(order[slot]) * dim], dim, stored);
                mRows[order[slot]] = stored;
            }
            std::vector<double>().swap(data);  // taken over: no second copy while building
        }
    } catch (const std::bad_alloc&) {
        return RESULT_NOT_READY;
    }
    return EnsureTrees(ParallelTaskCount()) > 0 ? RESULT_OK : RESULT_NOT_READY;
}

int AnnImpl::EnsureTrees(int workers) {
    const int ready = mTreeCount.load(std::memory_order_acquire);
    if (ready >= workers) return ready;
    std::lock_guard<std::mutex> guard(mGrowLock);
    const int have = mTreeCount.load(std::memory_order_relaxed);
    const int target = AcquireAnnLibraryCopies(workers);
    if (target <= have) return have;

    std::array<ANNkd_tree*, kMaxAnnLibraryCopies> built{};
    auto build = [&](int t, int) {
        built[have + t] = BuildAnnTreeInCopy(have + t, mRows.data(), mPointCount, mDimension);
    };
    const int missing = target - have;
    if (missing == 1 || mPointCount < kParallelBuildPoints) {
        for (int t = 0; t < missing; ++t) build(t, missing);
    } else {
        ParallelFor(missing, build, {"Ann Init", "Ann Init: ThreadPool InsertTask Failed"});
        // Without workers an index still needs its first tree.
        if (have == 0 && !built[0]) build(0, missing);
    }
    int count = have;
    while (count < target && built[count]) {
        mTrees[count] = built[count];
        ++count;
    }
    for (int t = count; t < target; ++t) ReleaseAnnTreeInCopy(t, built[t]);
    mTreeCount.store(count, std::memory_order_release);
    return count;
}

AnnImpl::~AnnImpl() {
    const int count = mTreeCount.load(std::memory_order_acquire);
    for (int t = 0; t < count; ++t) ReleaseAnnTreeInCopy(t, mTrees[t]);
}

void AnnImpl::SearchBatch(
    const AnnRows& rows, const int* order, int first, int count, int k, int preferredTree) const {
    // The library writes both outputs; a missing one gets a row that is overwritten.
    std::vector<int> spareIds(rows.ids ? 0 : static_cast<size_t>(k));
    std::vector<double> spareDists(rows.dists ? 0 : static_cast<size_t>(k));
    const TreeLease lease(mTreeCount.load(std::memory_order_acquire), preferredTree);
    ANNkd_tree* tree = mTrees[lease.Tree()];
    for (int j = 0; j < count; ++j) {
        const size_t r = static_cast<size_t>(order ? order[first + j] : first + j);
        if (order && j + kPrefetchAhead < count) {
            // Rows in search order lie all over the arrays: fetch a later one early.
            const size_t later = static_cast<size_t>(order[first + j + kPrefetchAhead]);
            Prefetch(rows.queries + later * rows.dim);
            if (rows.ids) Prefetch(rows.ids + later * rows.stride);
            if (rows.dists) Prefetch(rows.dists + later * rows.stride);
        }
        int* ids = rows.ids ? rows.ids + r * rows.stride : spareIds.data();
        double* dists = rows.dists ? rows.dists + r * rows.stride : spareDists.data();
        tree->annkSearch(const_cast<double*>(rows.queries + r * rows.dim), k, ids, dists,
                         kExactSearch);
    }
}

void AnnImpl::SearchRadius(const double* query,
                           double squaredRadius,
                           std::vector<int>* indexRes,
                           std::vector<double>* distanceRes) const {
    std::vector<int> ids;
    std::vector<double> dists;
    {
        const TreeLease lease(mTreeCount.load(std::memory_order_acquire), AnnThreadHint());
        ANNkd_tree* tree = mTrees[lease.Tree()];
        double* q = const_cast<double*>(query);
        const int found = tree->annkFRSearch(q, squaredRadius, 0, nullptr, nullptr, kExactSearch);
        if (found > 0) {
            ids.resize(found);
            dists.resize(found);
            tree->annkFRSearch(q, squaredRadius, found, ids.data(), dists.data(), kExactSearch);
        }
    }
    if (indexRes) indexRes->swap(ids);
    if (distanceRes) distanceRes->swap(dists);
}

}  // namespace ZOL
