// The nearest-within-radius map of coarse alignment: every point is written into the
// cells it can be the answer for, keeping per cell the point nearest to the cell centre.
#include <zol/registration/AlignNearestMapInternal.h>

#include <algorithm>
#include <cmath>

namespace ZOL {

void AlignNearestMap::Build(const double* xyz, int count, double radius) {
    mpXyz = xyz;
    mRadius2 = radius * radius;
    mCell = 0.5 * radius;
    mDense.clear();
    mSparse.clear();
    double lo[3] = {xyz[0], xyz[1], xyz[2]}, hi[3] = {xyz[0], xyz[1], xyz[2]};
    for (int i = 1; i < count; ++i) {
        for (int a = 0; a < 3; ++a) {
            lo[a] = std::min(lo[a], xyz[3 * i + a]);
            hi[a] = std::max(hi[a], xyz[3 * i + a]);
        }
    }
    double cells = 1.0;
    for (int a = 0; a < 3; ++a) {
        mOrigin[a] = lo[a] - radius - mCell;
        const double span = std::floor((hi[a] + radius + mCell - mOrigin[a]) / mCell) + 1.0;
        mDims[a] = static_cast<int64_t>(std::min(span, 4e9));
        cells *= span;
    }
    const bool dense = cells <= static_cast<double>(kMaxDenseCells);
    std::vector<double> bestDistance;
    std::unordered_map<int64_t, double> sparseDistance;
    if (dense) {
        mDense.assign(static_cast<size_t>(cells), -1);
        bestDistance.assign(static_cast<size_t>(cells), 0.0);
    }
    // A cell can answer for point i when some query in it lies within the radius of i.
    const double reach = radius + mCell * std::sqrt(3.0) * 0.5;
    const double reach2 = reach * reach;
    for (int i = 0; i < count; ++i) {
        const double* p = xyz + 3 * static_cast<size_t>(i);
        int64_t first[3], last[3];
        for (int a = 0; a < 3; ++a) {
            first[a] = static_cast<int64_t>(std::floor((p[a] - reach - mOrigin[a]) / mCell));
            last[a] = static_cast<int64_t>(std::floor((p[a] + reach - mOrigin[a]) / mCell));
        }
        for (int64_t x = first[0]; x <= last[0]; ++x) {
            const double cx = mOrigin[0] + (x + 0.5) * mCell - p[0];
            for (int64_t y = first[1]; y <= last[1]; ++y) {
                const double cy = mOrigin[1] + (y + 0.5) * mCell - p[1];
                for (int64_t z = first[2]; z <= last[2]; ++z) {
                    const double cz = mOrigin[2] + (z + 0.5) * mCell - p[2];
                    const double d2 = cx * cx + cy * cy + cz * cz;
                    if (d2 > reach2) continue;
                    const int64_t cell = (x * mDims[1] + y) * mDims[2] + z;
                    // Points come in ascending id, so a tie keeps the lower id.
                    if (dense) {
                        int& stored = mDense[static_cast<size_t>(cell)];
                        if (stored < 0 || d2 < bestDistance[static_cast<size_t>(cell)]) {
                            stored = i;
                            bestDistance[static_cast<size_t>(cell)] = d2;
                        }
                    } else {
                        auto found = sparseDistance.find(cell);
                        if (found == sparseDistance.end() || d2 < found->second) {
                            sparseDistance[cell] = d2;
                            mSparse[cell] = i;
                        }
                    }
                }
            }
        }
    }
}

bool AlignNearestMap::CellOf(const double* p, int64_t* cell) const {
    int64_t index[3];
    for (int a = 0; a < 3; ++a) {
        const double u = (p[a] - mOrigin[a]) / mCell;
        if (!(u >= 0.0 && u < static_cast<double>(mDims[a]))) return false;
        index[a] = static_cast<int64_t>(u);
    }
    *cell = (index[0] * mDims[1] + index[1]) * mDims[2] + index[2];
    return true;
}

int AlignNearestMap::Find(const double* p) const {
    int64_t cell;
    if (!CellOf(p, &cell)) return -1;
    int id = -1;
    if (!mDense.empty()) {
        id = mDense[static_cast<size_t>(cell)];
    } else {
        const auto found = mSparse.find(cell);
        if (found != mSparse.end()) id = found->second;
    }
    if (id < 0) return -1;
    const double* q = mpXyz + 3 * static_cast<size_t>(id);
    const double dx = q[0] - p[0], dy = q[1] - p[1], dz = q[2] - p[2];
    return dx * dx + dy * dy + dz * dz <= mRadius2 ? id : -1;
}

}  // namespace ZOL
