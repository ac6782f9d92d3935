// The spatial hash of the reduced ref points in coarse alignment: shell queries (points
// at a given distance from a point, for congruent triangles) and the nearest point
// within half a cell (for counting the misses of a candidate pose). Internal.
#pragma once

#include <vector>

#include <zol/core/Vector3.h>

namespace ZOL {

/// Points hashed into cubic cells: cell (ix, iy, iz) = floor((p - origin) / cell) with
/// origin = bounding-box minimum - (cell, cell, cell); bucket = (ix * 73856093 ^ iy *
/// 19349669 ^ iz * 83492791) mod 1024 in unsigned arithmetic. Each bucket keeps its
/// entries ordered by ix, iy, iz, then point id. Every occupied cell also keeps its
/// centre; all cells share the half diagonal sqrt(3) * cell / 2. Read-only after Build,
/// so any number of threads may query it.
class AlignHashGrid {
public:
    static constexpr unsigned kBucketCount = 1024;

    /// Hashes \p count points (x, y, z each in \p xyz, which must outlive the grid).
    /// \p cellSize must be positive and the coordinates finite.
    void Build(const double* xyz, int count, double cellSize);

    /// Appends to \p ids (cleared first) every point whose distance d from \p center
    /// satisfies |d - radius| <= tolerance, cell by cell in (ix, iy, iz) order and by
    /// ascending id within a cell.
    void FindDistanceNeighbors(const double* center,
                               double radius,
                               double tolerance,
                               std::vector<int>* ids) const;

    /// \return the point nearest to \p p among those within half a cell of it (the
    ///         lower id on a tie), or -1 when there is none; \p squaredDistance gets its
    ///         squared distance.
    int FindNearestWithinHalfCell(const double* p, double* squaredDistance) const;

    int GetCellCount() const { return static_cast<int>(mCells.size()); }
    double GetCellSize() const { return mCellSize; }

private:
    struct Entry {
        int ix, iy, iz, id;
    };
    struct Cell {
        double center[3];
        int begin, end;  ///< range in mCellPoints
    };

    static unsigned Bucket(int ix, int iy, int iz);
    /// \return the entries of one cell (a range in mEntries), empty when unoccupied.
    void CellRange(int ix, int iy, int iz, int* begin, int* end) const;

    const double* mpXyz = nullptr;
    double mCellSize = 0.0;
    double mHalfDiagonal = 0.0;
    double mOrigin[3] = {0.0, 0.0, 0.0};
    int mMaxIndex[3] = {0, 0, 0};
    std::vector<int> mBucketStart;  ///< kBucketCount + 1 offsets into mEntries
    std::vector<Entry> mEntries;    ///< by bucket, then ix, iy, iz, id
    std::vector<Cell> mCells;       ///< occupied cells by (ix, iy, iz)
    std::vector<int> mCellPoints;   ///< point ids of each cell, ascending
};

}  // namespace ZOL
