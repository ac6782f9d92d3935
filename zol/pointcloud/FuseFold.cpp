// The passes of a fusion update. Mapping divides and hashes every point once, in slices
// on the workers; folding then reads the mapped cells, so a worker spends nothing on the
// points of other workers' shards beyond one look at their code byte.
#include <zol/pointcloud/FuseFoldInternal.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

namespace {

// Below this many points the workers cost more than they save.
const int kThreadedMinimum = 1 << 15;
// The first cell index that no longer fits an int.
const double kIndexLimit = 2147483648.0;
// How many runs a folding worker looks up at once: their slots, then their cells, are
// asked for together so that many misses are under way at a time, and the batch's lines
// still sit in the first-level cache when it is folded.
const int kBatch = 128;

const ParallelLines kFuseLines = {
    "FusePointCloud::UpdateFuseFunction",
    "FusePointCloud::UpdateFuseFunction: ThreadPool InsertTask FuseCellsMT Failed"};

// Runs body(t, n) over n slices: inline for one, else on the workers.
template <typename Body>
int RunSlices(int taskCount, const Body& body) {
    if (taskCount == 1) {
        body(0, 1);
        return RESULT_OK;
    }
    return ParallelFor(taskCount, body, kFuseLines);
}

bool IsFinite(const Vector3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

// The first refused point of one slice and the slice's runs of one cell per shard.
struct SliceMap {
    int badCoord = -1;
    int badNormal = -1;
    std::size_t shardRuns[FuseTree::kShardCount] = {};
};

// Maps points [first, last) and stops at the first one refused. A run starts at the
// slice's first point, so that slices need not see each other's points.
void MapSlice(const FuseSource& src,
              int first,
              int last,
              std::uint8_t* codes,
              FusePointCell* out,
              SliceMap& slice) {
    FuseCellKey previous{-1, -1, -1};
    for (int i = first; i < last; ++i) {
        const Vector3 p = src.Point(i);
        if (!IsFinite(p)) {
            slice.badCoord = i;
            return;
        }
        if (src.normals && !IsFinite(src.Normal(i))) {
            slice.badNormal = i;
            return;
        }
        // The one-sided range rule: below bboxMin, or past the int range, is dropped.
        double q[3];
        bool inside = true;
        for (int a = 0; a < 3; ++a) {
            q[a] = (p[a] - src.origin[a]) / src.h[a];
            inside = inside && q[a] >= 0.0 && q[a] < kIndexLimit;
        }
        if (!inside) {
            codes[i] = kFuseDropped;
            previous = FuseCellKey{-1, -1, -1};
            continue;
        }
        const FuseCellKey key{static_cast<int>(q[0]), static_cast<int>(q[1]),
                              static_cast<int>(q[2])};
        if (key == previous) {
            codes[i] = kFuseSameCell;
            continue;
        }
        const std::uint64_t hash = FuseTree::Hash(key);
        const int shard = FuseTree::ShardOf(hash);
        codes[i] = static_cast<std::uint8_t>(shard);
        out[i] = FusePointCell{key, static_cast<std::uint32_t>(hash)};
        ++slice.shardRuns[shard];
        previous = key;
    }
}

// A run of points [begin, end) in one cell of the worker's shards, and the cell that the
// slots suggest for it (-1: none yet).
struct FoldRun {
    int begin;
    int end;
    int shard;
    int id;
};

// Folds points [begin, end) into \p cell (and its attribute \p values); \p inserted
// when the cell is new, so that its first point sets it.
void FoldRunPoints(const FuseSource& src,
                   int m,
                   FuseCell* cell,
                   double* values,
                   bool inserted,
                   int begin,
                   int end) {
    const bool fuseNormal = src.normals != nullptr;
    if (inserted) {
        cell->position = src.Point(begin);
        if (fuseNormal) FuseCellStore::NormalOf(cell) = src.Normal(begin);
        cell->weight = 1;
        for (int k = 0; k < m; ++k)
            values[k] = src.attributes[static_cast<std::size_t>(begin) * m + k];
        ++begin;
    }
    for (int i = begin; i < end; ++i) {
        const double w = static_cast<double>(cell->weight);
        const double W = w + 1.0;
        cell->position = (cell->position * w + src.Point(i)) / W;
        for (int k = 0; k < m; ++k)
            values[k] = (w * values[k] + src.attributes[static_cast<std::size_t>(i) * m + k]) / W;
        ++cell->weight;
        if (fuseNormal) {
            // Weighted by the weight after the increment; an opposite normal is flipped
            // before it is added.
            const Vector3 nu = src.Normal(i);
            Vector3& normal = FuseCellStore::NormalOf(cell);
            normal = normal * nu < 0.0 ? normal * W - nu : normal * W + nu;
            normal.Normalise();
        }
    }
}

// Folds the points whose cells lie in shards [first, last), in point order, a batch of
// runs at a time: gather the runs and ask for their slots, read the slots and ask for the
// cells they suggest, then fold each run into its (checked) cell.
void FoldShards(const FuseSource& src,
                const std::uint8_t* codes,
                const FusePointCell* at,
                int pointCount,
                FuseTree& tree,
                int first,
                int last) {
    const int m = tree.AttributeCount();
    FoldRun runs[kBatch];
    int i = 0;
    while (i < pointCount) {
        int n = 0;
        while (i < pointCount && n < kBatch) {
            const int code = codes[i];
            if (code < first || code >= last) {
                ++i;
                continue;
            }
            int end = i + 1;
            while (end < pointCount && codes[end] == kFuseSameCell) ++end;
            runs[n++] = FoldRun{i, end, code, -1};
            tree.shards[code].PrefetchSlot(at[i].hash);
            i = end;
        }
        for (int k = 0; k < n; ++k) {
            const FuseShard& shard = tree.shards[runs[k].shard];
            runs[k].id = shard.Candidate(at[runs[k].begin].hash);
#if defined(__GNUC__)
            if (runs[k].id >= 0) __builtin_prefetch(shard.cells.At(runs[k].id));
#endif
        }
        for (int k = 0; k < n; ++k) {
            const FoldRun& run = runs[k];
            const FusePointCell& here = at[run.begin];
            FuseShard& shard = tree.shards[run.shard];
            int id = run.id;
            bool inserted = false;
            // A matching tag with another key, or a cell inserted earlier in this batch,
            // takes the full lookup.
            if (id < 0 || !(shard.cells.At(id)->key == here.key))
                id = shard.FindOrInsert(here.key, here.hash, inserted);
            FoldRunPoints(src, m, shard.cells.At(id), m > 0 ? shard.attributes.At(id) : nullptr,
                          inserted, run.begin, run.end);
        }
    }
}

}  // namespace

FuseMapResult MapFusePoints(const FuseSource& src, int pointCount, FuseTree& tree) {
    FuseMapResult result;
    const int taskCount = pointCount < kThreadedMinimum ? 1 : ParallelTaskCount(pointCount);
    std::uint8_t* codes = tree.pointCodes.Get(static_cast<std::size_t>(pointCount));
    FusePointCell* out = tree.pointCells.Get(static_cast<std::size_t>(pointCount));
    std::vector<SliceMap> slices(taskCount);
    result.status = RunSlices(taskCount, [&](int t, int n) {
        MapSlice(src, SliceBegin(pointCount, t, n), SliceBegin(pointCount, t + 1, n), codes, out,
                 slices[t]);
    });
    if (result.status != RESULT_OK) return result;
    result.shardRuns.assign(FuseTree::kShardCount, 0);
    for (const SliceMap& slice : slices) {
        if (slice.badCoord >= 0 || slice.badNormal >= 0) {
            result.badCoord = slice.badCoord;
            result.badNormal = slice.badNormal;
            return result;
        }
        for (int s = 0; s < FuseTree::kShardCount; ++s) result.shardRuns[s] += slice.shardRuns[s];
    }
    return result;
}

int FoldFusePoints(const FuseSource& src,
                   int pointCount,
                   const FuseMapResult& map,
                   FuseTree& tree) {
    const int taskCount = pointCount < kThreadedMinimum ? 1 : ParallelTaskCount(pointCount);
    const std::uint8_t* codes = tree.pointCodes.Data();
    const FusePointCell* at = tree.pointCells.Data();
    return RunSlices(std::min(taskCount, FuseTree::kShardCount), [&](int t, int n) {
        const int first = SliceBegin(FuseTree::kShardCount, t, n);
        const int last = SliceBegin(FuseTree::kShardCount, t + 1, n);
        for (int s = first; s < last; ++s) {
            tree.shards[s].Reserve(tree.shards[s].cells.size() + map.shardRuns[s]);
        }
        FoldShards(src, codes, at, pointCount, tree, first, last);
    });
}

void LogDroppedPoints(const FuseTree& tree, int pointCount) {
    const std::uint8_t* codes = tree.pointCodes.Data();
    for (int i = 0; i < pointCount; ++i) {
        if (codes[i] == kFuseDropped)
            LogLine("FusePointCloud::UpdateFuseFunction: point is out of range");
    }
}

}  // namespace ZOL
