// The kd-trees behind Ann. The kd-tree library keeps its search state in process-wide
// globals, so an index holds one tree per private copy of the library (see
// AnnLibraryCopiesInternal.h), and each batch of searches borrows a tree whose copy is
// free. Every tree gives the same answers, so which one serves a query does not matter.
#pragma once

#include <array>
#include <atomic>
#include <mutex>
#include <vector>

#include <zol/runtime/AnnLibraryCopiesInternal.h>

class ANNkd_tree;

namespace ZOL {

/// Queries per tree borrowing in batched searches: large enough that the hand-off
/// cost vanishes, small enough that a thread sharing the tree does not wait long.
inline constexpr int kAnnQueryBatch = 256;

/// Where a batched search reads its queries and writes its answers: query row r is
/// queries + r * dim; its k results go to ids + r * stride and dists + r * stride
/// (squared distances, nearest first). A null output array is not written.
struct AnnRows {
    const double* queries;
    int dim;
    int* ids;
    double* dists;
    int stride;
};

/// The tree that the calling thread tries first when it has no task number of its own,
/// so that host threads searching at once spread over the trees.
int AnnThreadHint();

/// The indexed points (one contiguous block, row-major) and their kd-trees.
class AnnImpl {
public:
    AnnImpl() = default;
    ~AnnImpl();
    AnnImpl(const AnnImpl&) = delete;
    AnnImpl& operator=(const AnnImpl&) = delete;

    /// Takes over \p data (count rows of dim doubles) and builds trees for
    /// ParallelTaskCount() workers.
    /// \return RESULT_OK; RESULT_NOT_READY (-5) when no tree can be built (non-finite
    ///         coordinate, no memory).
    int Build(std::vector<double>&& data, int count, int dim);
    /// Makes sure that \p workers workers can search at once: one tree per library copy,
    /// as many as there are copies for, the missing ones built in parallel. Safe while
    /// other threads search.
    /// \return the number of trees.
    int EnsureTrees(int workers);

    int GetPointCount() const { return mPointCount; }
    int GetDimension() const { return mDimension; }
    /// \return the indexed point \p pointId (dim doubles).
    const double* GetPoint(int pointId) const { return mRows[pointId]; }

    /// Weight of the normal part when the index was built with normals, else 0.
    double mNormalWeight = 0.0;
    /// True when rows are coordinates followed by weighted normals.
    bool mWithNormal = false;

    /// Searches the \p k nearest points (1 <= k <= point count) of \p count query rows
    /// of \p rows: rows order[first + j] for j < count, or first + j when \p order is
    /// null. The batch runs on one tree, \p preferredTree if its copy is free.
    void SearchBatch(const AnnRows& rows,
                     const int* order,
                     int first,
                     int count,
                     int k,
                     int preferredTree) const;
    /// All points within squared distance \p squaredRadius of \p query, nearest first.
    void SearchRadius(const double* query,
                      double squaredRadius,
                      std::vector<int>* indexRes,
                      std::vector<double>* distanceRes) const;

private:
    /// The coordinates, in spatial order when they came shuffled; mRows[i] is point i
    /// wherever it is stored, and the trees see only mRows.
    std::vector<double> mData;
    std::vector<double*> mRows;
    int mPointCount = 0;
    int mDimension = 0;
    /// Tree t was built through library copy t; entries below mTreeCount never change.
    std::array<ANNkd_tree*, kMaxAnnLibraryCopies> mTrees{};
    std::atomic<int> mTreeCount{0};
    std::mutex mGrowLock;
};

}  // namespace ZOL
