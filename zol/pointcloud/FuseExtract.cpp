// Reading the fused cells out in grid order. The cells are visited far from their storage
// order, so each one is a cache miss: for the library's own cloud the output is laid out
// first and the workers then fetch the cells of their slices in parallel.
#include <zol/pointcloud/FuseTreeInternal.h>

#include <typeinfo>

#include <zol/core/IPointCloud.h>
#include <zol/core/PointCloud.h>
#include <zol/runtime/BulkMemoryInternal.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

namespace {

// Below this many cells one pass on this thread is quicker.
const std::size_t kThreadedMinimum = 1 << 16;
// How many cells ahead of its use a cell is asked for.
const std::size_t kAhead = 16;

const ParallelLines kExtractLines = {
    "FusePointCloud::ExtractPointCloud",
    "FusePointCloud::ExtractPointCloud: ThreadPool InsertTask ExtractCellsMT Failed"};

struct Reader {
    const FuseTree& tree;
    const FuseCellOrder& order;
    const FuseCell* Cell(std::size_t i) const {
        const FuseCellRef r = FuseTree::RefOf(order[i]);
        return tree.shards[r.shard].cells.At(r.cell);
    }
    const double* Values(std::size_t i) const {
        const FuseCellRef r = FuseTree::RefOf(order[i]);
        return tree.shards[r.shard].attributes.At(r.cell);
    }
    void Prefetch(std::size_t i) const {
#if defined(__GNUC__)
        if (i + kAhead < order.size()) __builtin_prefetch(Cell(i + kAhead));
#else
        (void)i;
#endif
    }
};

// Fills the laid-out points [first, last) of \p cloud and their attribute values.
void FillSlice(const Reader& in,
               std::size_t first,
               std::size_t last,
               PointCloud& cloud,
               bool fuseNormal,
               double* values,
               int m) {
    for (std::size_t i = first; i < last; ++i) {
        in.Prefetch(i);
        const FuseCell& cell = *in.Cell(i);
        const int id = static_cast<int>(i);
        cloud.PointCloud::SetPointCoord(id, cell.position);
        if (fuseNormal) cloud.PointCloud::SetPointNormal(id, FuseCellStore::NormalOf(&cell));
        if (m > 0) {
            const double* v = in.Values(i);
            std::copy(v, v + m, values + i * m);
        }
    }
}

}  // namespace

void ReadOutCells(const FuseTree& tree,
                  IPointCloud* pointCloud,
                  bool fuseNormal,
                  std::vector<double>* pointAttributes) {
    const FuseCellOrder order = tree.SortedCells();
    const Reader in{tree, order};
    const std::size_t count = order.size();
    const int m = pointAttributes ? tree.AttributeCount() : 0;
    pointCloud->SetHasNormal(fuseNormal);
    // The library's own cloud is filled without a virtual call per point.
    PointCloud* plain =
        typeid(*pointCloud) == typeid(PointCloud) ? static_cast<PointCloud*>(pointCloud) : nullptr;
    if (plain) plain->ReservePoint(static_cast<int>(count));
    const int taskCount = count < kThreadedMinimum ? 1 : ParallelTaskCount();
    if (plain && taskCount > 1) {
        // The output is laid out at once, its pages first faulted in on the workers: in a
        // virtual machine the first touch of fresh memory is most of an extraction, and
        // two threads fault about 1.7x as fast as one.
        const std::size_t bytes = count * sizeof(Vector3);
        auto prefault = [&](int t, int n) {
            const std::size_t first = bytes * t / n, last = bytes * (t + 1) / n;
            const char* coords = reinterpret_cast<const char*>(plain->GetPointCoordData());
            PrefaultPages(coords + first, last - first);
            if (const Vector3* normals = plain->GetPointNormalData())
                PrefaultPages(reinterpret_cast<const char*>(normals) + first, last - first);
        };
        const bool workers = ParallelFor(taskCount, prefault, kExtractLines) == RESULT_OK;
        plain->ResizePoint(static_cast<int>(count));
        const std::size_t base = pointAttributes ? pointAttributes->size() : 0;
        if (m > 0) pointAttributes->resize(base + count * m);
        double* values = m > 0 ? pointAttributes->data() + base : nullptr;
        std::vector<char> done(static_cast<std::size_t>(taskCount), 0);
        auto body = [&](int t, int n) {
            FillSlice(in, count * t / n, count * (t + 1) / n, *plain, fuseNormal, values, m);
            done[static_cast<std::size_t>(t)] = 1;
        };
        // Slices the workers could not take (their failure is logged, once) are filled here.
        if (workers && ParallelFor(taskCount, body, kExtractLines) == RESULT_OK) return;
        for (int t = 0; t < taskCount; ++t) {
            if (!done[static_cast<std::size_t>(t)]) body(t, taskCount);
        }
        return;
    }
    if (m > 0) pointAttributes->reserve(pointAttributes->size() + count * m);
    for (std::size_t i = 0; i < count; ++i) {
        in.Prefetch(i);
        const FuseCell& cell = *in.Cell(i);
        if (plain) {
            plain->PointCloud::InsertPoint(cell.position,
                                           fuseNormal ? FuseCellStore::NormalOf(&cell) : Vector3());
        } else if (fuseNormal) {
            pointCloud->InsertPoint(cell.position, FuseCellStore::NormalOf(&cell));
        } else {
            pointCloud->InsertPoint(cell.position);
        }
        if (m > 0) {
            const double* v = in.Values(i);
            pointAttributes->insert(pointAttributes->end(), v, v + m);
        }
    }
}

}  // namespace ZOL
