// FarthestSearch: candidate distances in blocks of spatial neighbours. A block is
// skipped when the squared distance from the new sample to its box is not below its
// farthest member's distance: then no member can be lowered. The box distance is
// computed with the same roundings as a member's distance and never exceeds it, so the
// skip changes nothing; ties keep the lowest candidate position as the plain scan does.
#include <zol/pointcloud/FarthestSearchInternal.h>

#include <algorithm>
#include <cmath>

#include <zol/runtime/Constants.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

namespace {

// Taken candidates: never lowered (no distance is below it) and never chosen.
const double kTaken = -1.0;
// Candidates per block at most, and on average per grid cell when sorting them.
const int kBlockSize = 256;
const double kPointsPerCell = 128.0;

inline double SquaredDistance(const double* p, const double* q) {
    const double dx = p[0] - q[0];
    const double dy = p[1] - q[1];
    const double dz = p[2] - q[2];
    return dx * dx + dy * dy + dz * dz;
}

// Gap between q and [lower, upper] along one axis, rounded as p - q is for a member p.
inline double Gap(double q, double lower, double upper) {
    if (q < lower) return lower - q;
    if (q > upper) return q - upper;
    return 0.0;
}

}  // namespace

FarthestSearch::FarthestSearch(const double* xyz, int count)
    : mPosition(count), mDistance(count, kInitialDistance), mLastEntry(-1), mLastBlock(-1) {
    double lower[3] = {xyz[0], xyz[1], xyz[2]};
    double upper[3] = {xyz[0], xyz[1], xyz[2]};
    for (int c = 1; c < count; ++c) {
        for (int a = 0; a < 3; ++a) {
            lower[a] = std::min(lower[a], xyz[3 * static_cast<size_t>(c) + a]);
            upper[a] = std::max(upper[a], xyz[3 * static_cast<size_t>(c) + a]);
        }
    }
    // A coarse grid over the box orders the candidates (stable counting sort by cell).
    const int side = std::max(1, static_cast<int>(std::cbrt(count / kPointsPerCell)));
    int cells[3];
    double scale[3];
    for (int a = 0; a < 3; ++a) {
        const double extent = upper[a] - lower[a];
        const bool split = extent > 0.0 && std::isfinite(extent);
        cells[a] = split ? side : 1;
        scale[a] = split ? side / extent : 0.0;
    }
    auto cellOf = [&](int c) {
        int index = 0;
        for (int a = 2; a >= 0; --a) {
            const double u =
                cells[a] > 1 ? (xyz[3 * static_cast<size_t>(c) + a] - lower[a]) * scale[a] : 0.0;
            index = index * cells[a] + std::min(cells[a] - 1, static_cast<int>(u));
        }
        return index;
    };
    std::vector<int> start(static_cast<size_t>(cells[0]) * cells[1] * cells[2] + 1, 0);
    for (int c = 0; c < count; ++c) ++start[cellOf(c) + 1];
    for (size_t i = 1; i < start.size(); ++i) start[i] += start[i - 1];
    std::vector<int> next(start.begin(), start.end() - 1);
    for (int c = 0; c < count; ++c) mPosition[next[cellOf(c)]++] = c;
    // Coordinates in entry order, so that a block is read in one sweep.
    mXyz.resize(3 * static_cast<size_t>(count));
    for (int e = 0; e < count; ++e) {
        const double* p = xyz + 3 * static_cast<size_t>(mPosition[e]);
        std::copy(p, p + 3, mXyz.begin() + 3 * static_cast<size_t>(e));
    }

    // Blocks: each cell's candidates in runs of at most kBlockSize.
    for (size_t cell = 0; cell + 1 < start.size(); ++cell) {
        for (int begin = start[cell]; begin < start[cell + 1]; begin += kBlockSize) {
            Block block;
            block.begin = begin;
            block.end = std::min(start[cell + 1], begin + kBlockSize);
            const double* p = mXyz.data() + 3 * static_cast<size_t>(begin);
            std::copy(p, p + 3, block.lower);
            std::copy(p, p + 3, block.upper);
            for (int e = begin + 1; e < block.end; ++e) {
                p = mXyz.data() + 3 * static_cast<size_t>(e);
                for (int a = 0; a < 3; ++a) {
                    block.lower[a] = std::min(block.lower[a], p[a]);
                    block.upper[a] = std::max(block.upper[a], p[a]);
                }
            }
            block.farthest = kInitialDistance;
            block.farthestEntry = begin;
            mBlocks.push_back(block);
        }
    }
}

template <bool kMark>
void FarthestSearch::LowerBlocks(const double* q,
                                 unsigned char seed,
                                 unsigned char* owner,
                                 bool visitAll,
                                 bool* anyPositive,
                                 int firstBlock,
                                 int lastBlock) {
    for (int b = firstBlock; b < lastBlock; ++b) {
        Block& block = mBlocks[b];
        if (!visitAll) {
            const double gx = Gap(q[0], block.lower[0], block.upper[0]);
            const double gy = Gap(q[1], block.lower[1], block.upper[1]);
            const double gz = Gap(q[2], block.lower[2], block.upper[2]);
            if (gx * gx + gy * gy + gz * gz >= block.farthest) continue;
        }
        double farthest = kTaken;
        int farthestEntry = -1;
        for (int e = block.begin; e < block.end; ++e) {
            double& distance = mDistance[e];
            if (distance < 0.0) continue;
            const double d = SquaredDistance(mXyz.data() + 3 * static_cast<size_t>(e), q);
            if (d < distance) {
                distance = d;
                if (kMark) owner[mPosition[e]] = seed;
            }
            if (kMark && anyPositive && d > 0.0) *anyPositive = true;
            if (distance > farthest) {
                farthest = distance;
                farthestEntry = e;
            }
        }
        block.farthest = farthest;
        block.farthestEntry = farthestEntry;
    }
}

void FarthestSearch::Lower(const double* q) {
    LowerBlocks<false>(q, 0, nullptr, false, nullptr, 0, static_cast<int>(mBlocks.size()));
}

int FarthestSearch::LowerAndMark(const double* q,
                                 unsigned char seed,
                                 unsigned char* owner,
                                 bool visitAll,
                                 bool* anyPositive,
                                 int taskCount) {
    const int blockCount = static_cast<int>(mBlocks.size());
    if (taskCount <= 1) {
        LowerBlocks<true>(q, seed, owner, visitAll, anyPositive, 0, blockCount);
        return RESULT_OK;
    }
    // Workers take disjoint runs of blocks; they write disjoint entries and owners.
    std::vector<char> positive(taskCount, 0);
    const auto body = [&](int t, int n) {
        bool any = false;
        LowerBlocks<true>(q, seed, owner, visitAll, anyPositive ? &any : nullptr,
                          SliceBegin(blockCount, t, n), SliceBegin(blockCount, t + 1, n));
        positive[t] = any;
    };
    const int status = ParallelFor(
        taskCount, body,
        {"UniformSampleSubpart", "UniformSampleSubpart: ThreadPool InsertTask FunctionMT Failed"});
    if (anyPositive && std::find(positive.begin(), positive.end(), 1) != positive.end()) {
        *anyPositive = true;
    }
    return status;
}

int FarthestSearch::Farthest() {
    double best = kTaken;
    int bestBlock = -1;
    for (int b = 0; b < static_cast<int>(mBlocks.size()); ++b) {
        const Block& block = mBlocks[b];
        if (block.farthest > best ||
            (block.farthest == best && bestBlock >= 0 &&
             mPosition[block.farthestEntry] < mPosition[mBlocks[bestBlock].farthestEntry])) {
            best = block.farthest;
            bestBlock = b;
        }
    }
    mLastBlock = bestBlock;
    mLastEntry = bestBlock < 0 ? -1 : mBlocks[bestBlock].farthestEntry;
    return mLastEntry < 0 ? -1 : mPosition[mLastEntry];
}

void FarthestSearch::Take(int position) {
    int entry = mLastEntry;
    int block = mLastBlock;
    if (entry < 0 || mPosition[entry] != position) {
        entry = static_cast<int>(std::find(mPosition.begin(), mPosition.end(), position) -
                                 mPosition.begin());
        block =
            static_cast<int>(std::upper_bound(mBlocks.begin(), mBlocks.end(), entry,
                                              [](int e, const Block& b) { return e < b.begin; }) -
                             mBlocks.begin() - 1);
    }
    mDistance[entry] = kTaken;
    Refresh(mBlocks[block]);
    mLastEntry = -1;
    mLastBlock = -1;
}

void FarthestSearch::Refresh(Block& block) {
    block.farthest = kTaken;
    block.farthestEntry = -1;
    for (int e = block.begin; e < block.end; ++e) {
        if (mDistance[e] > block.farthest) {
            block.farthest = mDistance[e];
            block.farthestEntry = e;
        }
    }
}

}  // namespace ZOL
