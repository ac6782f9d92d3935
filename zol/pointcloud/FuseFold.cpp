// The passes of a fusion update. Mapping divides and hashes every point once, in slices
// on the workers; folding then reads the mapped cells, so a worker spends nothing on the
// points of other workers' shards beyond one look at their record.
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
// How far ahead of its use a point's slot is asked for; its cell is asked for half-way.
const int kAhead = 16;

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

// Maps points [first, last) and stops at the first one refused.
void MapSlice(const FuseSource& src, int first, int last, FusePointCell* out, SliceMap& slice) {
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
        FusePointCell& cell = out[i];
        if (!inside) {
            cell.key = FuseCellKey{-1, -1, -1};
            cell.hash = 0;
            continue;
        }
        cell.key =
            FuseCellKey{static_cast<int>(q[0]), static_cast<int>(q[1]), static_cast<int>(q[2])};
        cell.hash = FuseTree::Hash(cell.key);
        if (i == first || !(out[i - 1].key == cell.key))
            ++slice.shardRuns[FuseTree::ShardOf(cell.hash)];
    }
}

// Folds the points whose cells lie in shards [first, last), in point order.
void FoldShards(const FuseSource& src,
                const FusePointCell* at,
                int pointCount,
                FuseTree& tree,
                int first,
                int last) {
    const int m = tree.AttributeCount();
    const bool fuseNormal = src.normals != nullptr;
    auto ownerOf = [first, last](const FusePointCell& c) {
        const int s = FuseTree::ShardOf(c.hash);
        return c.key.ix >= 0 && s >= first && s < last ? s : -1;
    };
    // Consecutive points of a scan mostly share a cell: the last cell is kept at hand,
    // and a point in the same cell as its predecessor is not looked up ahead either.
    FuseCellKey lastKey{-1, -1, -1};
    FuseCell* cell = nullptr;
    double* values = nullptr;
    for (int i = 0; i < pointCount; ++i) {
        if (i + kAhead < pointCount && at[i + kAhead].hash != at[i + kAhead - 1].hash) {
            const int s = ownerOf(at[i + kAhead]);
            if (s >= 0) tree.shards[s].PrefetchSlot(at[i + kAhead].hash);
        }
        const int half = i + kAhead / 2;
        if (half < pointCount && at[half].hash != at[half - 1].hash) {
            const int s = ownerOf(at[half]);
            if (s >= 0) tree.shards[s].PrefetchCell(at[half].hash);
        }
        const FusePointCell& here = at[i];
        if (here.key.ix < 0) continue;
        bool inserted = false;
        if (!(here.key == lastKey)) {
            const int s = ownerOf(here);
            if (s < 0) continue;
            FuseShard& shard = tree.shards[s];
            const int id = shard.FindOrInsert(here.key, here.hash, inserted);
            cell = shard.cells.At(id);
            values = m > 0 ? shard.attributes.At(id) : nullptr;
            lastKey = here.key;
        }
        const Vector3 p = src.Point(i);
        const Vector3 nu = fuseNormal ? src.Normal(i) : Vector3(0.0, 0.0, 0.0);
        const double* a = m > 0 ? src.attributes + static_cast<std::size_t>(i) * m : nullptr;
        if (inserted) {
            cell->position = p;
            if (fuseNormal) FuseCellStore::NormalOf(cell) = nu;
            cell->weight = 1;
            for (int k = 0; k < m; ++k) values[k] = a[k];
            continue;
        }
        const double w = static_cast<double>(cell->weight);
        const double W = w + 1.0;
        cell->position = (cell->position * w + p) / W;
        for (int k = 0; k < m; ++k) values[k] = (w * values[k] + a[k]) / W;
        ++cell->weight;
        if (fuseNormal) {
            // Weighted by the weight after the increment; an opposite normal is flipped
            // before it is added.
            Vector3& normal = FuseCellStore::NormalOf(cell);
            normal = normal * nu < 0.0 ? normal * W - nu : normal * W + nu;
            normal.Normalise();
        }
    }
}

}  // namespace

FuseMapResult MapFusePoints(const FuseSource& src, int pointCount, FuseTree& tree) {
    FuseMapResult result;
    const int taskCount = pointCount < kThreadedMinimum ? 1 : ParallelTaskCount(pointCount);
    FusePointCell* out = tree.pointCells.Get(static_cast<std::size_t>(pointCount));
    std::vector<SliceMap> slices(taskCount);
    result.status = RunSlices(taskCount, [&](int t, int n) {
        MapSlice(src, SliceBegin(pointCount, t, n), SliceBegin(pointCount, t + 1, n), out,
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
    const FusePointCell* at = tree.pointCells.Data();
    return RunSlices(std::min(taskCount, FuseTree::kShardCount), [&](int t, int n) {
        const int first = SliceBegin(FuseTree::kShardCount, t, n);
        const int last = SliceBegin(FuseTree::kShardCount, t + 1, n);
        for (int s = first; s < last; ++s) {
            tree.shards[s].Reserve(tree.shards[s].cells.size() + map.shardRuns[s]);
        }
        FoldShards(src, at, pointCount, tree, first, last);
    });
}

void LogDroppedPoints(const FuseTree& tree, int pointCount) {
    const FusePointCell* at = tree.pointCells.Data();
    for (int i = 0; i < pointCount; ++i) {
        if (at[i].key.ix < 0) LogLine("FusePointCloud::UpdateFuseFunction: point is out of range");
    }
}

}  // namespace ZOL
