// Spatial grid of the reduced ref points of coarse alignment: the occupied cells with
// their centres, so that a shell query tests a whole cell against the shell before its
// points.
#include <zol/registration/AlignHashGridInternal.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include <zol/runtime/LogInternal.h>

namespace ZOL {

void AlignHashGrid::Build(const double* xyz, int count, double cellSize) {
    mpXyz = xyz;
    mHalfDiagonal = std::sqrt(3.0) * cellSize * 0.5;
    double origin[3] = {xyz[0], xyz[1], xyz[2]};
    for (int i = 1; i < count; ++i) {
        for (int a = 0; a < 3; ++a) origin[a] = std::min(origin[a], xyz[3 * i + a]);
    }
    for (double& o : origin) o -= cellSize;
    struct Entry {
        int ix, iy, iz, id;
    };
    std::vector<Entry> entries(count);
    int maxX = 0;
    for (int i = 0; i < count; ++i) {
        int index[3];
        for (int a = 0; a < 3; ++a) {
            index[a] = static_cast<int>(std::floor((xyz[3 * i + a] - origin[a]) / cellSize));
        }
        maxX = std::max(maxX, index[0]);
        entries[i] = {index[0], index[1], index[2], i};
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& l, const Entry& r) {
        return std::tie(l.ix, l.iy, l.iz, l.id) < std::tie(r.ix, r.iy, r.iz, r.id);
    });
    mCells.clear();
    mCellPoints.resize(count);
    for (int i = 0; i < count; ++i) {
        const Entry& e = entries[i];
        if (i == 0 || e.ix != entries[i - 1].ix || e.iy != entries[i - 1].iy ||
            e.iz != entries[i - 1].iz) {
            Cell cell;
            cell.center[0] = origin[0] + (e.ix + 0.5) * cellSize;
            cell.center[1] = origin[1] + (e.iy + 0.5) * cellSize;
            cell.center[2] = origin[2] + (e.iz + 0.5) * cellSize;
            cell.begin = cell.end = i;
            mCells.push_back(cell);
        }
        mCellPoints[i] = e.id;
        mCells.back().end = i + 1;
    }
    LogAt(LOG_TRACE, "hash block size:", mCells.size(), " maxX:", maxX, " minX:", 1);
}

void AlignHashGrid::FindDistanceNeighbors(const double* center,
                                          double radius,
                                          double tolerance,
                                          std::vector<int>* ids) const {
    ids->clear();
    const double low = radius - tolerance, high = radius + tolerance;
    const double low2 = low > 0.0 ? low * low : 0.0, high2 = high * high;
    for (const Cell& cell : mCells) {
        const double dx = cell.center[0] - center[0];
        const double dy = cell.center[1] - center[1];
        const double dz = cell.center[2] - center[2];
        const double d = std::sqrt(dx * dx + dy * dy + dz * dz);
        if (d - mHalfDiagonal > high || d + mHalfDiagonal < low) continue;
        for (int k = cell.begin; k < cell.end; ++k) {
            const double* q = mpXyz + 3 * static_cast<size_t>(mCellPoints[k]);
            const double ex = q[0] - center[0], ey = q[1] - center[1], ez = q[2] - center[2];
            const double d2 = ex * ex + ey * ey + ez * ez;
            if (d2 < low2 || d2 > high2) continue;
            // The squared test is exact except at the bounds; settle those on distances.
            const double dist = std::sqrt(d2);
            if (std::abs(dist - radius) <= tolerance) ids->push_back(mCellPoints[k]);
        }
    }
}

}  // namespace ZOL
