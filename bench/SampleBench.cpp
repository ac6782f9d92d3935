// Sampling speed: farthest-point sampling of 1M points to 10k samples (both qualities),
// and grid sampling of 1M points at a fine and a coarse cell size, on 1 and 2 threads.
// Points are a wavy scanned-looking surface in scan order, or uniform in a cube in
// random order (the worst case for cell lookups).
#include <benchmark/benchmark.h>

#include <cmath>
#include <map>
#include <random>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/pointcloud/SamplePointCloud.h>
#include <zol/runtime/ThreadCount.h>

namespace {

constexpr int kPointCount = 1000000;

/// kind 0: a 1000 x 1000 jittered height field, row by row, unit spacing.
/// kind 1: uniform in [0, 1000]^3, random order.
const ZOL::PointCloud& Cloud(int kind) {
    static std::map<int, ZOL::PointCloud> cache;
    auto found = cache.find(kind);
    if (found != cache.end()) return found->second;
    ZOL::PointCloud& cloud = cache[kind];
    cloud.ReservePoint(kPointCount);
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int i = 0; i < kPointCount; ++i) {
        if (kind == 0) {
            const double x = i % 1000 + 0.6 * unit(rng) - 0.3;
            const double y = i / 1000 + 0.6 * unit(rng) - 0.3;
            cloud.InsertPoint(ZOL::Vector3(x, y, 20.0 * std::sin(x * 0.01) * std::cos(y * 0.013)));
        } else {
            cloud.InsertPoint(ZOL::Vector3(1000 * unit(rng), 1000 * unit(rng), 1000 * unit(rng)));
        }
    }
    return cloud;
}

/// Args: point kind, quality, threads.
void BM_FarthestPoint1MTo10k(benchmark::State& state) {
    const ZOL::PointCloud& cloud = Cloud(static_cast<int>(state.range(0)));
    const auto quality = static_cast<ZOL::SampleQuality>(state.range(1));
    std::vector<int> ids(10000);
    ZOL::SetThreadCount(static_cast<int>(state.range(2)));
    // One untimed call first: fresh pages are expensive on a virtual machine, and the
    // allocator serves later calls from memory it already holds.
    ZOL::SamplePointCloud::UniformSample(&cloud, 10000, ids.data(), 0, quality);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            ZOL::SamplePointCloud::UniformSample(&cloud, 10000, ids.data(), 0, quality));
    }
    ZOL::SetThreadCount(0);
}

/// Args: point kind, cell size (x1000), threads.
void BM_Grid1M(benchmark::State& state) {
    const ZOL::PointCloud& cloud = Cloud(static_cast<int>(state.range(0)));
    const double interval = static_cast<double>(state.range(1)) / 1000.0;
    std::vector<int> ids;
    ZOL::SetThreadCount(static_cast<int>(state.range(2)));
    ZOL::SamplePointCloud::GridSample(&cloud, interval, ids);  // untimed, as above
    for (auto _ : state) {
        benchmark::DoNotOptimize(ZOL::SamplePointCloud::GridSample(&cloud, interval, ids));
    }
    ZOL::SetThreadCount(0);
    state.counters["cells"] = static_cast<double>(ids.size());
}

void FarthestArgs(benchmark::internal::Benchmark* b) {
    for (int kind : {0, 1}) {
        for (int quality : {0, 1}) {
            for (int threads : {1, 2}) b->Args({kind, quality, threads});
        }
    }
}

void GridArgs(benchmark::internal::Benchmark* b) {
    // Surface: cells of 2 and 10 units; cube: cells of 10 and 50 units.
    for (int threads : {1, 2}) {
        b->Args({0, 2000, threads});
        b->Args({0, 10000, threads});
        b->Args({1, 10000, threads});
        b->Args({1, 50000, threads});
    }
}

}  // namespace

BENCHMARK(BM_FarthestPoint1MTo10k)
    ->Apply(FarthestArgs)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();
BENCHMARK(BM_Grid1M)->Apply(GridArgs)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

BENCHMARK_MAIN();
