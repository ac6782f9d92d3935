// The kd-tree behind Ann, and the one process-wide lock that every call into the
// kd-tree library takes. That library keeps its search state in process-wide globals
// and creates a shared empty leaf lazily while building, so two builds or searches at
// once, on one tree or on two, corrupt each other.
#pragma once

#include <mutex>
#include <vector>

class ANNkd_tree;

namespace ZOL {

/// The lock that serialises every kd-tree build, search and deletion in the process.
std::mutex& AnnLibraryLock();

/// Queries per lock acquisition in batched searches: large enough that the hand-off
/// cost vanishes, small enough that other workers do not wait long.
inline constexpr int kAnnQueryBatch = 256;

/// The indexed points (one contiguous block, row-major) and their kd-tree.
class AnnImpl {
public:
    /// Builds the tree over \p data (count rows of dim doubles), which it takes over.
    /// \return 0; -5 when the tree cannot be built (non-finite coordinate, no memory).
    int Build(std::vector<double>&& data, int count, int dim);
    ~AnnImpl();

    int GetPointCount() const { return mPointCount; }
    int GetDimension() const { return mDimension; }
    /// \return the indexed point \p pointId (dim doubles).
    const double* GetPoint(int pointId) const {
        return mData.data() + static_cast<size_t>(pointId) * mDimension;
    }

    /// Weight of the normal part when the index was built with normals, else 0.
    double mNormalWeight = 0.0;
    /// True when rows are coordinates followed by weighted normals.
    bool mWithNormal = false;

    /// Searches the \p k nearest points (1 <= k <= point count) of \p queryCount query
    /// rows under one acquisition of the library lock. Row q of the results starts at
    /// indexRes + q * stride and distanceRes + q * stride (squared distances, nearest
    /// first); both arrays are required.
    void SearchBatch(const double* queries,
                     int queryCount,
                     int k,
                     int* indexRes,
                     double* distanceRes,
                     int stride) const;
    /// All points within squared distance \p squaredRadius of \p query, nearest first.
    void SearchRadius(const double* query,
                      double squaredRadius,
                      std::vector<int>* indexRes,
                      std::vector<double>* distanceRes) const;

private:
    std::vector<double> mData;
    std::vector<double*> mRows;
    int mPointCount = 0;
    int mDimension = 0;
    ANNkd_tree* mpTree = nullptr;
};

}  // namespace ZOL
