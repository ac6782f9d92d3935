// Grid sampling: one point per cell. The result order is that of a table of 2560000
// hash buckets, each holding its cells in key order. Instead of building that table,
// one record per point (cell key, score, bucket) is distributed by the bucket's high
// bits into about 1250 groups, stably, and each group, small enough for the cache, is
// ordered by the low bits and then by key: the same order in linear time. Every pass is
// split into contiguous slices on the workers, and slices are joined in order.
#include <zol/pointcloud/SamplePointCloud.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/pointcloud/FlatCoordsInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

namespace {

const uint32_t kBucketCount = 2560000;
const int kLowBits = 11;
const uint32_t kLowCount = 1u << kLowBits;
const uint32_t kGroupCount = (kBucketCount >> kLowBits) + 1;
// Cell indices must stay well inside 64 bits before they are truncated.
const double kMaxCellIndex = 4.0e18;
// Below this many cells per axis a key packs into one 64-bit word (21 bits an axis).
const double kPackedLimit = static_cast<double>(1 << 21);
// Fewer points than this per worker are not worth a thread.
const int kPointsPerTask = 1 << 16;

const ParallelLines kLines = {"SamplePointCloud::_GridSample",
                              "SamplePointCloud::_GridSample: InsertTask FunctionMT Failed"};

// Runs body(t, taskCount) for every slice, on the calling thread when there is one.
template <typename Body>
int RunSlices(int taskCount, const Body& body) {
    if (taskCount == 1) {
        body(0, 1);
        return RESULT_OK;
    }
    return ParallelFor(taskCount, body, kLines);
}

// Cell key (ix, iy, iz) packed as ix << 42 | iy << 21 | iz: the numeric order is the
// lexicographic one while every index is below 2^21.
struct PackedKey {
    uint64_t bits;
    PackedKey() = default;
    PackedKey(long long ix, long long iy, long long iz)
        : bits(static_cast<uint64_t>(ix) << 42 | static_cast<uint64_t>(iy) << 21 |
               static_cast<uint64_t>(iz)) {}
    bool operator<(const PackedKey& o) const { return bits < o.bits; }
    bool operator!=(const PackedKey& o) const { return bits != o.bits; }
};

// Any cell key.
struct WideKey {
    long long ix, iy, iz;
    WideKey() = default;
    WideKey(long long x, long long y, long long z) : ix(x), iy(y), iz(z) {}
    bool operator<(const WideKey& o) const {
        if (ix != o.ix) return ix < o.ix;
        if (iy != o.iy) return iy < o.iy;
        return iz < o.iz;
    }
    bool operator!=(const WideKey& o) const { return ix != o.ix || iy != o.iy || iz != o.iz; }
};

template <typename Key>
struct CellRecord {
    Key key;
    double score;  ///< squared distance from the cell's lower corner, in cell units
    uint32_t bucket;
    int point;
};

template <typename Key>
CellRecord<Key> RecordOf(const double* p, const double* corner, double interval, int point) {
    const double ux = (p[0] - corner[0]) / interval;
    const double uy = (p[1] - corner[1]) / interval;
    const double uz = (p[2] - corner[2]) / interval;
    const long long ix = static_cast<long long>(ux);
    const long long iy = static_cast<long long>(uy);
    const long long iz = static_cast<long long>(uz);
    const double dx = ux - static_cast<double>(ix);
    const double dy = uy - static_cast<double>(iy);
    const double dz = uz - static_cast<double>(iz);
    // The products and their xor wrap in 32 bits.
    const uint32_t hash = (static_cast<uint32_t>(ix) * 73856093u) ^
                          (static_cast<uint32_t>(iy) * 19349669u) ^
                          (static_cast<uint32_t>(iz) * 83492791u);
    return {Key(ix, iy, iz), dx * dx + dy * dy + dz * dz, hash % kBucketCount, point};
}

// Appends the winner of every cell of one bucket, cells in key order. \p run points at
// the bucket's records in point order; within a cell the lowest score wins and the
// earlier point keeps a tie.
template <typename Key>
void EmitBucket(std::vector<const CellRecord<Key>*>& run, std::vector<int>& out) {
    const auto byKey = [](const CellRecord<Key>* a, const CellRecord<Key>* b) {
        return a->key < b->key;
    };
    // A bucket nearly always holds a single cell; then it is in order already.
    if (!std::is_sorted(run.begin(), run.end(), byKey)) {
        std::stable_sort(run.begin(), run.end(), byKey);
    }
    for (size_t first = 0; first < run.size();) {
        const CellRecord<Key>* best = run[first];
        size_t next = first + 1;
        for (; next < run.size() && !(run[next]->key != run[first]->key); ++next) {
            if (run[next]->score < best->score) best = run[next];
        }
        out.push_back(best->point);
        first = next;
    }
}

// Orders the records of one group (stable counting sort by the bucket's low bits) and
// emits its buckets in ascending order. \p records are in point order.
template <typename Key>
void EmitGroup(const CellRecord<Key>* records,
               int count,
               std::vector<uint32_t>& counts,
               std::vector<const CellRecord<Key>*>& ordered,
               std::vector<const CellRecord<Key>*>& run,
               std::vector<int>& out) {
    counts.assign(kLowCount + 1, 0);
    for (int r = 0; r < count; ++r) ++counts[(records[r].bucket & (kLowCount - 1)) + 1];
    for (uint32_t d = 0; d < kLowCount; ++d) counts[d + 1] += counts[d];
    ordered.resize(count);
    for (int r = 0; r < count; ++r) {
        ordered[counts[records[r].bucket & (kLowCount - 1)]++] = &records[r];
    }
    for (int first = 0; first < count;) {
        int next = first + 1;
        while (next < count && ordered[next]->bucket == ordered[first]->bucket) ++next;
        if (next - first == 1) {
            out.push_back(ordered[first]->point);
        } else {
            run.assign(ordered.begin() + first, ordered.begin() + next);
            EmitBucket(run, out);
        }
        first = next;
    }
}

template <typename Key>
int CollectWinners(const double* xyz,
                   int pointCount,
                   const double* corner,
                   double interval,
                   int taskCount,
                   std::vector<int>& sampleIndex) {
    // Buckets in point order, and per slice the size of every group. Scratch memory is
    // kept to 8 bytes a point: fresh pages are costly, and records are cheap to redo.
    // One block for both arrays: buckets first, then the points grouped.
    std::unique_ptr<uint32_t[]> scratch(new uint32_t[2 * static_cast<size_t>(pointCount)]);
    uint32_t* buckets = scratch.get();
    uint32_t* grouped = scratch.get() + pointCount;
    std::vector<std::vector<uint32_t>> groupSizes(taskCount);
    int status = RunSlices(taskCount, [&](int t, int n) {
        std::vector<uint32_t>& sizes = groupSizes[t];
        sizes.assign(kGroupCount, 0);
        const int end = SliceBegin(pointCount, t + 1, n);
        for (int i = SliceBegin(pointCount, t, n); i < end; ++i) {
            buckets[i] =
                RecordOf<Key>(xyz + 3 * static_cast<size_t>(i), corner, interval, i).bucket;
            ++sizes[buckets[i] >> kLowBits];
        }
    });
    if (status != RESULT_OK) return status;

    // Stable distribution of the points into groups: slice t writes after the earlier
    // slices, so each group lists its points in index order.
    std::vector<uint32_t> groupBegin(kGroupCount + 1, 0);
    for (uint32_t g = 0; g < kGroupCount; ++g) {
        uint32_t size = 0;
        for (int t = 0; t < taskCount; ++t) size += groupSizes[t][g];
        groupBegin[g + 1] = groupBegin[g] + size;
    }
    std::vector<std::vector<uint32_t>> next(taskCount);
    for (int t = 0; t < taskCount; ++t) {
        next[t].resize(kGroupCount);
        for (uint32_t g = 0; g < kGroupCount; ++g) {
            next[t][g] = t == 0 ? groupBegin[g] : next[t - 1][g] + groupSizes[t - 1][g];
        }
    }
    status = RunSlices(taskCount, [&](int t, int n) {
        std::vector<uint32_t>& slot = next[t];
        const int end = SliceBegin(pointCount, t + 1, n);
        for (int i = SliceBegin(pointCount, t, n); i < end; ++i) {
            grouped[slot[buckets[i] >> kLowBits]++] = static_cast<uint32_t>(i);
        }
    });
    if (status != RESULT_OK) return status;

    // Groups in slices of about equal point counts; each slice redoes the records of its
    // groups in a small buffer and emits its own winners.
    std::vector<uint32_t> firstGroup(taskCount + 1, kGroupCount);
    firstGroup[0] = 0;
    for (int t = 1; t < taskCount; ++t) {
        const uint32_t target = static_cast<uint32_t>(SliceBegin(pointCount, t, taskCount));
        firstGroup[t] =
            static_cast<uint32_t>(std::upper_bound(groupBegin.begin(), groupBegin.end(), target) -
                                  groupBegin.begin() - 1);
        firstGroup[t] = std::max(firstGroup[t], firstGroup[t - 1]);
    }
    std::vector<std::vector<int>> winners(taskCount);
    status = RunSlices(taskCount, [&](int t, int) {
        std::vector<CellRecord<Key>> records;
        std::vector<uint32_t> counts;
        std::vector<const CellRecord<Key>*> ordered, run;
        winners[t].reserve(groupBegin[firstGroup[t + 1]] - groupBegin[firstGroup[t]]);
        for (uint32_t g = firstGroup[t]; g < firstGroup[t + 1]; ++g) {
            const uint32_t* members = grouped + groupBegin[g];
            const int count = static_cast<int>(groupBegin[g + 1] - groupBegin[g]);
            records.resize(count);
            for (int r = 0; r < count; ++r) {
#if defined(__GNUC__)
                // The members are scattered over the cloud; ask for them ahead.
                if (r + 16 < count)
                    __builtin_prefetch(xyz + 3 * static_cast<size_t>(members[r + 16]));
#endif
                records[r] = RecordOf<Key>(xyz + 3 * static_cast<size_t>(members[r]), corner,
                                           interval, static_cast<int>(members[r]));
            }
            EmitGroup(records.data(), count, counts, ordered, run, winners[t]);
        }
    });
    if (status != RESULT_OK) return status;
    size_t total = 0;
    for (const std::vector<int>& w : winners) total += w.size();
    sampleIndex.reserve(total);
    for (const std::vector<int>& w : winners) {
        sampleIndex.insert(sampleIndex.end(), w.begin(), w.end());
    }
    return RESULT_OK;
}

}  // namespace

int SamplePointCloud::GridSample(const IPointCloud* pointCloud,
                                 double interval,
                                 std::vector<int>& sampleIndex) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudSamplingGrid>(pointCloud, interval);  // dump hook
    if (!pointCloud) {
        return LogFailure(RESULT_INVALID_INPUT, "SamplePointCloud::GridSample: pointCloud == NULL");
    }
    if (interval < REAL_TOL) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::GridSample: interval < REAL_TOL");
    }
    // An infinite interval is one cell holding every point; only NaN has no cells.
    if (std::isnan(interval)) {
        return LogFailure(RESULT_INVALID_INPUT, "SamplePointCloud::GridSample: interval is NaN");
    }
    const PointCloudPointList pointList(pointCloud);
    return _GridSample(&pointList, interval, sampleIndex);
}

int SamplePointCloud::_GridSample(const IPointList* pointList,
                                  double interval,
                                  std::vector<int>& sampleIndex) {
    if (!pointList) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::_GridSample input pointList is NULL");
    }
    sampleIndex.clear();
    const int pointCount = pointList->GetPointCount();
    if (pointCount < 1) {
        LogLine("SamplePointCloud::_GridSample: pointCount is 0");
        return RESULT_OK;
    }
    if (!(interval >= REAL_TOL)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::_GridSample: interval < REAL_TOL || interval is NaN");
    }
    const FlatCoords coords(pointList);
    const double* xyz = coords.Data();
    const int taskCount = ParallelTaskCount(std::max(1, pointCount / kPointsPerTask));

    // Bounds per slice, and the first point with a non-finite coordinate.
    struct Bounds {
        double lower[3], upper[3];
        int firstBad = -1;
    };
    std::vector<Bounds> bounds(taskCount);
    int status = RunSlices(taskCount, [&](int t, int n) {
        Bounds& b = bounds[t];
        const int begin = SliceBegin(pointCount, t, n), end = SliceBegin(pointCount, t + 1, n);
        std::copy(xyz + 3 * static_cast<size_t>(begin), xyz + 3 * static_cast<size_t>(begin) + 3,
                  b.lower);
        std::copy(b.lower, b.lower + 3, b.upper);
        for (int i = begin; i < end; ++i) {
            const double* p = xyz + 3 * static_cast<size_t>(i);
            if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2])) {
                b.firstBad = i;
                return;
            }
            for (int a = 0; a < 3; ++a) {
                b.lower[a] = std::min(b.lower[a], p[a]);
                b.upper[a] = std::max(b.upper[a], p[a]);
            }
        }
    });
    if (status != RESULT_OK) return status;
    Bounds all = bounds[0];
    for (const Bounds& b : bounds) {
        if (b.firstBad >= 0) {
            return LogFailure(RESULT_INVALID_INPUT, "SamplePointCloud::_GridSample: point ",
                              b.firstBad, " has a non-finite coordinate");
        }
        for (int a = 0; a < 3; ++a) {
            all.lower[a] = std::min(all.lower[a], b.lower[a]);
            all.upper[a] = std::max(all.upper[a], b.upper[a]);
        }
    }
    bool packed = true;
    for (int a = 0; a < 3; ++a) {
        all.lower[a] -= REAL_TOL;
        const double cells = (all.upper[a] - all.lower[a]) / interval;
        if (!(cells < kMaxCellIndex)) {
            return LogFailure(
                RESULT_INVALID_INPUT,
                "SamplePointCloud::_GridSample: interval too small for the extent of the points");
        }
        packed = packed && cells < kPackedLimit;
    }
    status = packed ? CollectWinners<PackedKey>(xyz, pointCount, all.lower, interval, taskCount,
                                                sampleIndex)
                    : CollectWinners<WideKey>(xyz, pointCount, all.lower, interval, taskCount,
                                              sampleIndex);
    if (status != RESULT_OK) sampleIndex.clear();
    return status;
}

}  // namespace ZOL
