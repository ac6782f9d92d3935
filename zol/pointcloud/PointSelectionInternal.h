// Turns the index lists that point operations take (selections, fixed sets) into bit
// vectors of the point count, finding the first index outside the cloud on the way so
// that callers can reject it before any work.
#pragma once

#include <vector>

namespace ZOL {

/// Marks \p ids in \p marks (resized to \p pointCount); a null list marks every point
/// when \p allWhenNull, none otherwise. A repeated index marks its bit once.
/// \param[out] badIndex the first listed index outside [0, pointCount), if any.
/// \return true when every listed index is inside the cloud (\p marks is then complete).
inline bool MarkPointSelection(const std::vector<int>* ids,
                               int pointCount,
                               bool allWhenNull,
                               std::vector<bool>& marks,
                               int& badIndex) {
    marks.assign(static_cast<size_t>(pointCount > 0 ? pointCount : 0),
                 ids == nullptr && allWhenNull);
    if (ids == nullptr) return true;
    for (int id : *ids) {
        if (id < 0 || id >= pointCount) {
            badIndex = id;
            return false;
        }
        marks[id] = true;
    }
    return true;
}

}  // namespace ZOL
