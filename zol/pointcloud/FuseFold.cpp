// The folding pass of a fusion update: it reads the runs that mapping wrote, so a worker
// spends nothing on other workers' shards beyond one look at a record.
#include <zol/pointcloud/FuseFoldInternal.h>

#include <algorithm>
#include <cstdint>

namespace ZOL {

namespace {

// How many runs a folding worker looks up at once: their slots, then their cells, are
// asked for together so that many misses are under way at a time, and the batch's lines
// still sit in the first-level cache when it is folded.
const int kBatch = 128;

// A run of the worker's shards and the cell that the slots suggest for it (-1: none yet).
struct FoldRun {
    const FuseRun* run;
    int id;
};

// Two runs are folded side by side (see FoldBatch); their steps must be inlined for the
// processor to overlap them.
#if defined(_MSC_VER)
#define ZOL_FOLD_INLINE __forceinline
#elif defined(__GNUC__)
#define ZOL_FOLD_INLINE __attribute__((always_inline)) inline
#else
#define ZOL_FOLD_INLINE inline
#endif

// One run being folded: its cell, and the cell's running means held in locals, so that
// no store into the cell sits on the chain from one point to the next.
struct RunFold {
    FuseCell* cell;
    double* values;
    Vector3 position, normal;
    std::uint32_t weight;
    int i, end;
};

// Starts folding \p run into \p cell; a new cell takes the run's first point as it is.
ZOL_FOLD_INLINE void BeginRun(const FuseSource& src,
                              int m,
                              FuseCell* cell,
                              double* values,
                              bool inserted,
                              const FuseRun& run,
                              RunFold& f) {
    f.cell = cell;
    f.values = values;
    f.i = run.begin;
    f.end = run.End();
    if (inserted) {
        f.position = src.Point(f.i);
        if (src.normals) f.normal = src.Normal(f.i);
        f.weight = 1;
        for (int k = 0; k < m; ++k)
            values[k] = src.attributes[static_cast<std::size_t>(f.i) * m + k];
        ++f.i;
    } else {
        f.position = cell->position;
        if (src.normals) f.normal = FuseCellStore::NormalOf(cell);
        f.weight = cell->weight;
    }
}

// Folds the run's next point.
ZOL_FOLD_INLINE void StepRun(const FuseSource& src, int m, RunFold& f) {
    const double w = static_cast<double>(f.weight);
    const double W = w + 1.0;
    f.position = (f.position * w + src.Point(f.i)) / W;
    for (int k = 0; k < m; ++k)
        f.values[k] = (w * f.values[k] + src.attributes[static_cast<std::size_t>(f.i) * m + k]) / W;
    ++f.weight;
    if (src.normals) {
        // Weighted by the weight after the increment; an opposite normal is flipped
        // before it is added.
        const Vector3 nu = src.Normal(f.i);
        f.normal = f.normal * nu < 0.0 ? f.normal * W - nu : f.normal * W + nu;
        f.normal.Normalise();
    }
    ++f.i;
}

// Writes the run's running means back into its cell.
ZOL_FOLD_INLINE void EndRun(const FuseSource& src, RunFold& f) {
    f.cell->position = f.position;
    f.cell->weight = f.weight;
    if (src.normals) FuseCellStore::NormalOf(f.cell) = f.normal;
}

// Folds a batch of runs: asks for their slots, reads the slots and asks for the cells
// they suggest, checks each cell (or inserts it), then folds the runs. Every point costs
// a chain of divisions and a square root that the next point of its cell waits for, so
// two runs of different cells are folded side by side: their chains overlap. Each cell
// still sees its points in order, so the result does not change.
void FoldBatch(const FuseSource& src, FuseTree& tree, FoldRun* batch, int n) {
    const int m = tree.AttributeCount();
    for (int k = 0; k < n; ++k) tree.shards[batch[k].run->Shard()].PrefetchSlot(batch[k].run->hash);
    for (int k = 0; k < n; ++k) {
        const FuseShard& shard = tree.shards[batch[k].run->Shard()];
        batch[k].id = shard.Candidate(batch[k].run->hash);
#if defined(__GNUC__)
        if (batch[k].id >= 0) __builtin_prefetch(shard.cells.At(batch[k].id));
#endif
    }
    FuseCell* cells[kBatch];
    bool fresh[kBatch];
    for (int k = 0; k < n; ++k) {
        const FuseRun& run = *batch[k].run;
        FuseShard& shard = tree.shards[run.Shard()];
        int id = batch[k].id;
        bool inserted = false;
        // A matching tag with another key, or a cell inserted earlier in this batch,
        // takes the full lookup.
        if (id < 0 || !(shard.cells.At(id)->key == run.key))
            id = shard.FindOrInsert(run.key, run.hash, inserted);
        batch[k].id = id;
        cells[k] = shard.cells.At(id);
        fresh[k] = inserted;
    }
    for (int k = 0; k < n;) {
        const FuseRun& ra = *batch[k].run;
        double* va = m > 0 ? tree.shards[ra.Shard()].attributes.At(batch[k].id) : nullptr;
        RunFold a, b;
        BeginRun(src, m, cells[k], va, fresh[k], ra, a);
        if (k + 1 < n && cells[k + 1] != cells[k]) {
            const FuseRun& rb = *batch[k + 1].run;
            double* vb = m > 0 ? tree.shards[rb.Shard()].attributes.At(batch[k + 1].id) : nullptr;
            BeginRun(src, m, cells[k + 1], vb, fresh[k + 1], rb, b);
            while (a.i < a.end && b.i < b.end) {
                StepRun(src, m, a);
                StepRun(src, m, b);
            }
            while (b.i < b.end) StepRun(src, m, b);
            EndRun(src, b);
            k += 2;
        } else {
            k += 1;
        }
        while (a.i < a.end) StepRun(src, m, a);
        EndRun(src, a);
    }
}

// Folds the runs whose cells lie in shards [first, last), in point order, kBatch runs at
// a time. Every worker reads all runs; picking its own takes no branch.
void FoldShards(
    const FuseSource& src, const FuseMapResult& map, FuseTree& tree, int first, int last) {
    const FuseRun* runs = tree.runs.Data();
    const unsigned span = static_cast<unsigned>(last - first);
    FoldRun batch[kBatch];
    int n = 0;
    for (std::size_t t = 0; t < map.sliceFirst.size(); ++t) {
        const FuseRun* end = runs + map.sliceFirst[t] + map.sliceRuns[t];
        for (const FuseRun* run = runs + map.sliceFirst[t]; run < end; ++run) {
            batch[n].run = run;
            n += static_cast<unsigned>(run->Shard() - first) < span;
            if (n == kBatch) {
                FoldBatch(src, tree, batch, n);
                n = 0;
            }
        }
    }
    FoldBatch(src, tree, batch, n);
}

}  // namespace

int FoldFusePoints(const FuseSource& src,
                   int pointCount,
                   const FuseMapResult& map,
                   FuseTree& tree) {
    const int taskCount = FuseTaskCount(pointCount);
    return RunFuseSlices(std::min(taskCount, FuseTree::kShardCount), [&](int t, int n) {
        const int first = SliceBegin(FuseTree::kShardCount, t, n);
        const int last = SliceBegin(FuseTree::kShardCount, t + 1, n);
        for (int s = first; s < last; ++s) {
            tree.shards[s].Reserve(tree.shards[s].cells.size() + map.shardRuns[s]);
        }
        FoldShards(src, map, tree, first, last);
    });
}

}  // namespace ZOL
