// Volumetric fusion throughput: 10 clouds of 1M points each fused into a 512^3 grid and
// extracted, reported as fused points per second. "Scans" (data 0) are 10 rigidly moved
// views of a bumpy sphere with normals, in scan order (a few points per cell per view);
// "scatter" (1) is uniform noise, where nearly every point opens a cell of its own;
// "dense" (2) are the same views of a sphere a quarter the size, about 85 points per cell
// over the ten views, where the cells stay in cache and folding the points is the work.
// All with and without normals, whose cells are smaller. Each case runs for at least 2 s
// and reports the mean: the first fusion of a process also pays for memory the machine
// has not handed out before, which a single run would mistake for the fusion's own cost.
// Two baselines on one thread: a nested ordered map of cells, the layout the cells had
// before, and a plain flat hash.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <random>
#include <vector>

#include <zol/core/Matrix4x4.h>
#include <zol/core/PointCloud.h>
#include <zol/pointcloud/FusePointCloud.h>
#include <zol/runtime/ThreadCount.h>

namespace {

constexpr int kClouds = 10;
constexpr int kPoints = 1000000;
constexpr int kResolution = 512;

// One range-scan-like view: a cap of a bumpy sphere of radius 0.9 * scale sampled row by
// row.
ZOL::PointCloud MakeScan(double scale) {
    ZOL::PointCloud cloud(true, false, false);
    cloud.ReservePoint(kPoints);
    const int side = 1000;
    for (int r = 0; r < side; ++r) {
        for (int c = 0; c < side; ++c) {
            const double theta = 1.4 * r / side, phi = 2.0 * M_PI * c / side;
            ZOL::Vector3 n(std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi),
                           std::cos(theta));
            const double radius = 0.9 + 0.02 * std::sin(17 * theta) * std::cos(11 * phi);
            cloud.InsertPoint(n * (scale * radius), n);
        }
    }
    return cloud;
}

ZOL::PointCloud MakeScatter() {
    ZOL::PointCloud cloud(true, false, false);
    cloud.ReservePoint(kPoints);
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> u(-0.95, 0.95);
    for (int i = 0; i < kPoints; ++i) {
        cloud.InsertPoint(ZOL::Vector3(u(rng), u(rng), u(rng)), ZOL::Vector3(0, 0, 1));
    }
    return cloud;
}

// The data of a case: 0 scans, 1 scatter, 2 dense scans.
const ZOL::PointCloud& Cloud(std::int64_t kind) {
    static const ZOL::PointCloud scan = MakeScan(1.0), noise = MakeScatter(),
                                 dense = MakeScan(0.25);
    return kind == 0 ? scan : kind == 1 ? noise : dense;
}

// View v: a turn about the y axis by 36 degrees per view, and a slight tilt.
std::vector<ZOL::Matrix4x4> Views() {
    std::vector<ZOL::Matrix4x4> views(kClouds);
    for (int v = 0; v < kClouds; ++v) {
        const double a = v * 0.2 * M_PI, b = 0.05 * v;
        const double m[12] = {std::cos(a),
                              0,
                              std::sin(a),
                              0,
                              std::sin(a) * std::sin(b),
                              std::cos(b),
                              -std::cos(a) * std::sin(b),
                              0,
                              -std::sin(a) * std::cos(b),
                              std::sin(b),
                              std::cos(a) * std::cos(b),
                              0};
        views[v].InitIdentityTransform();
        for (int i = 0; i < 12; ++i) views[v].SetValue(i, m[i]);
    }
    return views;
}

void SetPointRate(benchmark::State& state) {
    state.counters["points/s"] = benchmark::Counter(
        static_cast<double>(kClouds) * kPoints * state.iterations(), benchmark::Counter::kIsRate);
}

// args: data (0 scans, 1 scatter, 2 dense), threads, normals fused (0/1).
void BM_Fuse(benchmark::State& state) {
    const ZOL::PointCloud& cloud = Cloud(state.range(0));
    ZOL::SetThreadCount(static_cast<int>(state.range(1)));
    const std::vector<ZOL::Matrix4x4> views = Views();
    for (auto _ : state) {
        ZOL::FusePointCloud fuse(kResolution, kResolution, kResolution, ZOL::Vector3(-1, -1, -1),
                                 ZOL::Vector3(1, 1, 1), state.range(2) != 0);
        for (const ZOL::Matrix4x4& view : views) fuse.UpdateFuseFunction(&cloud, &view, nullptr);
        ZOL::PointCloud fused;
        fuse.ExtractPointCloud(&fused, nullptr);
        state.counters["cells"] = fused.GetPointCount();
    }
    SetPointRate(state);
    ZOL::SetThreadCount(0);
}
BENCHMARK(BM_Fuse)
    ->ArgsProduct({{0, 1, 2}, {1, 2}, {1, 0}})
    ->ArgNames({"data", "threads", "normals"})
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0)
    ->UseRealTime();

// The layout the cells had before: x map of y maps of z maps, ordered at every level.
struct MapCell {
    ZOL::Vector3 position, normal;
    double weight = 0.0;
};

// Folds every point of every view into the cell that \p cellAt(ix, iy, iz) returns, with
// the running mean and the normal sign rule of the library; one thread, one virtual read
// per point, as a straightforward implementation would.
template <typename CellAt>
void FoldViews(ZOL::PointCloud& cloud,
               const std::vector<ZOL::Matrix4x4>& views,
               const CellAt& cellAt) {
    const double h = 2.0 / kResolution;
    for (const ZOL::Matrix4x4& view : views) {
        for (int i = 0; i < kPoints; ++i) {
            const ZOL::Vector3 p = view.TransformPoint(cloud.GetPointCoord(i));
            const ZOL::Vector3 nu = view.RotateVector(cloud.GetPointNormal(i));
            const int ix = int((p.x + 1) / h), iy = int((p.y + 1) / h), iz = int((p.z + 1) / h);
            if (ix < 0 || iy < 0 || iz < 0) continue;
            auto& c = cellAt(ix, iy, iz);
            const double W = c.weight + 1.0;
            c.position = (c.position * c.weight + p) / W;
            c.normal = c.normal * nu < 0 ? c.normal * W - nu : c.normal * W + nu;
            c.normal.Normalise();
            c.weight = W;
        }
    }
}

void BaselineArgs(benchmark::internal::Benchmark* b) {
    b->Arg(0)->Arg(1)->Arg(2)->ArgNames({"data"})->Unit(benchmark::kMillisecond)->UseRealTime();
    b->Iterations(1);
}

void BM_NestedMapBaseline(benchmark::State& state) {
    // The per-point reads of the interface are not const; the cloud is only read.
    ZOL::PointCloud& cloud = const_cast<ZOL::PointCloud&>(Cloud(state.range(0)));
    const std::vector<ZOL::Matrix4x4> views = Views();
    for (auto _ : state) {
        std::map<int, std::map<int, std::map<int, MapCell>>> tree;
        FoldViews(cloud, views,
                  [&tree](int ix, int iy, int iz) -> MapCell& { return tree[ix][iy][iz]; });
        ZOL::PointCloud fused(true, false, false);
        for (auto& x : tree)
            for (auto& y : x.second)
                for (auto& z : y.second) fused.InsertPoint(z.second.position, z.second.normal);
        state.counters["cells"] = fused.GetPointCount();
    }
    SetPointRate(state);
}
BENCHMARK(BM_NestedMapBaseline)->Apply(BaselineArgs);

// A plain flat hash on one thread: open addressing over cells stored in the table
// (linear probing, at most three quarters full, doubled when full), one sort of the
// occupied keys at extraction. What a straightforward flat layout reaches on this machine.
struct FlatCell {
    std::uint64_t key = kEmptyKey;
    ZOL::Vector3 position, normal;
    double weight = 0.0;
    static constexpr std::uint64_t kEmptyKey = ~std::uint64_t(0);
};

class FlatCells {
public:
    FlatCells() : mTable(1024) {}
    FlatCell& FindOrInsert(std::uint64_t key) {
        if (4 * (mSize + 1) > 3 * mTable.size()) Grow();
        FlatCell& cell = Probe(mTable, mShift, key);
        if (cell.key == FlatCell::kEmptyKey) {
            cell.key = key;
            ++mSize;
        }
        return cell;
    }
    const std::vector<FlatCell>& Table() const { return mTable; }
    std::size_t Size() const { return mSize; }

private:
    // Multiplicative hashing that keeps the top bits of the product, which depend on
    // every bit of the key; the middle bits would ignore ix once the table is large and
    // put every cell of one (iy, iz) column on one probe run.
    static FlatCell& Probe(std::vector<FlatCell>& table, int shift, std::uint64_t key) {
        const std::size_t mask = table.size() - 1;
        std::size_t slot = (key * 0x9E3779B97F4A7C15ull) >> shift;
        while (table[slot].key != key && table[slot].key != FlatCell::kEmptyKey)
            slot = (slot + 1) & mask;
        return table[slot];
    }
    void Grow() {
        std::vector<FlatCell> larger(2 * mTable.size());
        --mShift;
        for (const FlatCell& cell : mTable)
            if (cell.key != FlatCell::kEmptyKey) Probe(larger, mShift, cell.key) = cell;
        mTable.swap(larger);
    }
    std::vector<FlatCell> mTable;
    int mShift = 64 - 10;  ///< 64 - log2 of the table size
    std::size_t mSize = 0;
};

void BM_FlatHashBaseline(benchmark::State& state) {
    ZOL::PointCloud& cloud = const_cast<ZOL::PointCloud&>(Cloud(state.range(0)));
    const std::vector<ZOL::Matrix4x4> views = Views();
    for (auto _ : state) {
        FlatCells cells;
        FoldViews(cloud, views, [&cells](int ix, int iy, int iz) -> FlatCell& {
            return cells.FindOrInsert(std::uint64_t(ix) << 42 | std::uint64_t(iy) << 21 |
                                      std::uint64_t(iz));
        });
        std::vector<std::pair<std::uint64_t, std::size_t>> order;
        order.reserve(cells.Size());
        for (std::size_t s = 0; s < cells.Table().size(); ++s)
            if (cells.Table()[s].key != FlatCell::kEmptyKey)
                order.emplace_back(cells.Table()[s].key, s);
        std::sort(order.begin(), order.end());
        ZOL::PointCloud fused(true, false, false);
        fused.ReservePoint(static_cast<int>(order.size()));
        for (const auto& entry : order)
            fused.InsertPoint(cells.Table()[entry.second].position,
                              cells.Table()[entry.second].normal);
        state.counters["cells"] = fused.GetPointCount();
    }
    SetPointRate(state);
}
BENCHMARK(BM_FlatHashBaseline)->Apply(BaselineArgs);

}  // namespace

BENCHMARK_MAIN();
