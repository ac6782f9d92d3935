// The spatial grid of the reduced ref points in coarse alignment, for shell queries:
// the points at a given distance from a point, which make the sides of congruent
// triangles. Internal.
#pragma once

#include <vector>

namespace ZOL {

/// Points binned into cubic cells: cell (ix, iy, iz) = floor((p - origin) / cell) with
/// origin = bounding-box minimum - (cell, cell, cell). Every occupied cell keeps its
/// centre and its points; all cells share the half diagonal sqrt(3) * cell / 2, so a
/// shell query tests a whole cell before its points. Read-only after Build, so any
/// number of threads may query it.
class AlignHashGrid {
public:
    /// Bins \p count points (x, y, z each in \p xyz, which must outlive the grid).
    /// \p cellSize must be positive and the coordinates finite.
    void Build(const double* xyz, int count, double cellSize);

    /// Replaces \p ids by every point whose distance d from \p center satisfies
    /// |d - radius| <= tolerance, cell by cell in (ix, iy, iz) order and by ascending id
    /// within a cell.
    void FindDistanceNeighbors(const double* center,
                               double radius,
                               double tolerance,
                               std::vector<int>* ids) const;

    int GetCellCount() const { return static_cast<int>(mCells.size()); }

private:
    struct Cell {
        double center[3];
        int begin, end;  ///< range in mCellPoints
    };

    const double* mpXyz = nullptr;
    double mHalfDiagonal = 0.0;
    std::vector<Cell> mCells;      ///< occupied cells by (ix, iy, iz)
    std::vector<int> mCellPoints;  ///< point ids of each cell, ascending
};

}  // namespace ZOL
