// Spatial hash of the reduced ref points of coarse alignment: buckets of cell entries
// for point lookups near a position, and the list of occupied cells with their centres
// for shell queries, which test a whole cell against the shell before its points.
#include <zol/registration/AlignHashGridInternal.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include <zol/runtime/LogInternal.h>

namespace ZOL {

unsigned AlignHashGrid::Bucket(int ix, int iy, int iz) {
    const unsigned h = (static_cast<unsigned>(ix) * 73856093u) ^
                       (static_cast<unsigned>(iy) * 19349669u) ^
                       (static_cast<unsigned>(iz) * 83492791u);
    return h % kBucketCount;
}

void AlignHashGrid::Build(const double* xyz, int count, double cellSize) {
    mpXyz = xyz;
    mCellSize = cellSize;
    mHalfDiagonal = std::sqrt(3.0) * cellSize * 0.5;
    double boxMin[3] = {xyz[0], xyz[1], xyz[2]};
    for (int i = 1; i < count; ++i) {
        for (int a = 0; a < 3; ++a) boxMin[a] = std::min(boxMin[a], xyz[3 * i + a]);
    }
    for (int a = 0; a < 3; ++a) {
        mOrigin[a] = boxMin[a] - cellSize;
        mMaxIndex[a] = 0;
    }
    mEntries.resize(count);
    for (int i = 0; i < count; ++i) {
        int index[3];
        for (int a = 0; a < 3; ++a) {
            index[a] = static_cast<int>(std::floor((xyz[3 * i + a] - mOrigin[a]) / cellSize));
            mMaxIndex[a] = std::max(mMaxIndex[a], index[a]);
        }
        mEntries[i] = {index[0], index[1], index[2], i};
    }
    const auto byCell = [](const Entry& l, const Entry& r) {
        return std::tie(l.ix, l.iy, l.iz, l.id) < std::tie(r.ix, r.iy, r.iz, r.id);
    };
    // Occupied cells in (ix, iy, iz) order, each with its points by ascending id.
    std::sort(mEntries.begin(), mEntries.end(), byCell);
    mCells.clear();
    mCellPoints.resize(count);
    for (int i = 0; i < count; ++i) {
        const Entry& e = mEntries[i];
        if (i == 0 || e.ix != mEntries[i - 1].ix || e.iy != mEntries[i - 1].iy ||
            e.iz != mEntries[i - 1].iz) {
            Cell cell;
            cell.center[0] = mOrigin[0] + (e.ix + 0.5) * cellSize;
            cell.center[1] = mOrigin[1] + (e.iy + 0.5) * cellSize;
            cell.center[2] = mOrigin[2] + (e.iz + 0.5) * cellSize;
            cell.begin = cell.end = i;
            mCells.push_back(cell);
        }
        mCellPoints[i] = e.id;
        mCells.back().end = i + 1;
    }
    // Buckets: a stable sort by bucket keeps the (ix, iy, iz, id) order inside each.
    std::stable_sort(mEntries.begin(), mEntries.end(), [](const Entry& l, const Entry& r) {
        return Bucket(l.ix, l.iy, l.iz) < Bucket(r.ix, r.iy, r.iz);
    });
    mBucketStart.assign(kBucketCount + 1, 0);
    for (const Entry& e : mEntries) ++mBucketStart[Bucket(e.ix, e.iy, e.iz) + 1];
    for (unsigned b = 0; b < kBucketCount; ++b) mBucketStart[b + 1] += mBucketStart[b];
    LogAt(LOG_TRACE, "hash block size:", mCells.size(), " maxX:", mMaxIndex[0], " minX:", 1);
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

void AlignHashGrid::CellRange(int ix, int iy, int iz, int* begin, int* end) const {
    const unsigned b = Bucket(ix, iy, iz);
    int lo = mBucketStart[b], hi = mBucketStart[b + 1];
    while (lo < hi &&
           std::tie(mEntries[lo].ix, mEntries[lo].iy, mEntries[lo].iz) < std::tie(ix, iy, iz)) {
        ++lo;
    }
    int stop = lo;
    while (stop < hi && mEntries[stop].ix == ix && mEntries[stop].iy == iy &&
           mEntries[stop].iz == iz) {
        ++stop;
    }
    *begin = lo;
    *end = stop;
}

int AlignHashGrid::FindNearestWithinHalfCell(const double* p, double* squaredDistance) const {
    // The ball of radius cell / 2 around p touches at most two cells per axis.
    int first[3];
    for (int a = 0; a < 3; ++a) {
        const double u = (p[a] - mOrigin[a]) / mCellSize - 0.5;
        if (!(u > -1.0 && u < mMaxIndex[a] + 1.0)) return -1;
        first[a] = static_cast<int>(std::floor(u));
    }
    const double limit2 = 0.25 * mCellSize * mCellSize;
    int best = -1;
    double bestD2 = 0.0;
    for (int ix = first[0]; ix <= first[0] + 1; ++ix) {
        for (int iy = first[1]; iy <= first[1] + 1; ++iy) {
            for (int iz = first[2]; iz <= first[2] + 1; ++iz) {
                int begin, end;
                CellRange(ix, iy, iz, &begin, &end);
                for (int k = begin; k < end; ++k) {
                    const int id = mEntries[k].id;
                    const double* q = mpXyz + 3 * static_cast<size_t>(id);
                    const double ex = q[0] - p[0], ey = q[1] - p[1], ez = q[2] - p[2];
                    const double d2 = ex * ex + ey * ey + ez * ez;
                    if (d2 > limit2) continue;
                    if (best < 0 || d2 < bestD2 || (d2 == bestD2 && id < best)) {
                        best = id;
                        bestD2 = d2;
                    }
                }
            }
        }
    }
    *squaredDistance = bestD2;
    return best;
}

}  // namespace ZOL
