// The order in which a worker answers its nearest-neighbour queries, and in which an
// index stores its points. Searching queries that lie next to each other one after the
// other keeps the tree nodes and points they visit in the cache; shuffled queries and
// shuffled points make every search fetch them afresh.
#pragma once

#include <vector>

namespace ZOL {

/// Orders the queries rows[r] (rows + r * dim, the first min(dim, 3) coordinates used)
/// for r = ids[first .. first + count), or r = first .. first + count - 1 when \p ids is
/// null, along a space-filling curve when consecutive queries jump across space.
/// \return the rows in search order; empty when the given order is kept (few queries,
///         already coherent, or no finite extent).
std::vector<int> CoherentQueryOrder(
    const double* rows, int dim, const int* ids, int first, int count);

}  // namespace ZOL
