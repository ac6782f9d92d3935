// Constant-time "nearest point within a radius" for counting the misses of candidate
// poses in coarse alignment, where every candidate asks it for every check point.
// Internal.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace ZOL {

/// A grid of cells half the radius wide; each cell stores the point nearest to its
/// centre among those within reach. A query returns the point stored for its cell when
/// that point lies within the radius of the query. This is the nearest point up to half
/// a cell diagonal (a quarter of the radius), which is all a hit-or-miss count needs.
/// Read-only after Build, so any number of threads may query it.
class AlignNearestMap {
public:
    /// Stores \p count points (x, y, z each in \p xyz, which must outlive the map) for
    /// queries of radius \p radius > 0. Coordinates must be finite.
    void Build(const double* xyz, int count, double radius);

    /// \return the point found for \p p within the radius, or -1.
    int Find(const double* p) const;

private:
    /// Cells above which the map is hashed instead of a dense array.
    static constexpr int64_t kMaxDenseCells = 1 << 22;

    bool CellOf(const double* p, int64_t* cell) const;

    const double* mpXyz = nullptr;
    double mRadius2 = 0.0;
    double mCell = 1.0;
    double mOrigin[3] = {0.0, 0.0, 0.0};
    int64_t mDims[3] = {0, 0, 0};
    std::vector<int> mDense;
    std::unordered_map<int64_t, int> mSparse;
};

}  // namespace ZOL
