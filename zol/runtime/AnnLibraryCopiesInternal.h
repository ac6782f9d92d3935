// Private copies of the kd-tree library. The library keeps its search state in
// process-wide globals, so one copy runs one build, search or release at a time; each
// further copy, loaded with globals of its own, lets one more thread search at once.
#pragma once

#include <mutex>

class ANNkd_tree;

namespace ZOL {

/// At most this many copies, the normally linked library (copy 0) included. Each loaded
/// copy brings its own C and C++ runtimes and takes static thread-local storage that the
/// loader budgets for a few namespaces only; staying within that budget leaves the
/// reserve for libraries that the host loads later.
inline constexpr int kMaxAnnLibraryCopies = 8;

/// Makes up to \p wanted copies usable, loading missing ones on first need.
/// \return how many copies serve new trees: at least 1 (copy 0), at most \p wanted, the
///         processor count and the limit; 1 when private copies are not available (no
///         glibc, a sanitizer, ZOL_ANN_SHARED set, the loader refusing).
int AcquireAnnLibraryCopies(int wanted);

/// The lock that every build, search and release through copy \p copy holds.
std::mutex& AnnLibraryCopyLock(int copy);

/// Builds a kd-tree (bucket size 24, suggested split rule) over \p rows through copy
/// \p copy, under its lock. The rows are only read and must outlive the tree.
/// \return the tree, or null when it cannot be built (no memory).
ANNkd_tree* BuildAnnTreeInCopy(int copy, double** rows, int count, int dim);

/// Releases a tree built by BuildAnnTreeInCopy through the same copy, so that its
/// memory goes back to the allocator that gave it.
void ReleaseAnnTreeInCopy(int copy, ANNkd_tree* tree);

/// Test switch: at most \p limit copies serve the trees built from now on (1 forces the
/// shared lock); 0 restores the default. Trees already built keep their copies.
void SetAnnLibraryCopyLimit(int limit);

}  // namespace ZOL
