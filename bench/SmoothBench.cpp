// Normal estimation and smoothing throughput on a scanned-looking surface (a jittered
// wavy height field in scan order): normals of 100k points from 10 neighbours, plane
// projection of 100k points, bilateral smoothing, and the normal-smoothing solve on 1M
// points with its peak memory. Arg: threads (point count for the 1M case).
#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>

#include <zol/core/PointCloud.h>
#include <zol/pointcloud/ConsolidatePointCloud.h>
#include <zol/runtime/PointCloudInfo.h>
#include <zol/runtime/ThreadCount.h>

namespace {

using CPC = ZOL::ConsolidatePointCloud;

constexpr int kNeighbors = 10;

/// \p count points of a wavy height field, row by row, with noise along z; normals
/// (when asked) are the true surface normals turned by a little noise.
ZOL::PointCloud Surface(int count, bool withNormals) {
    const int side = static_cast<int>(std::lround(std::sqrt(count)));
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> jitter(-0.3, 0.3);
    std::normal_distribution<double> noise(0.0, 0.05);
    ZOL::PointCloud cloud(withNormals, false, false);
    cloud.ReservePoint(side * side);
    for (int r = 0; r < side; ++r) {
        for (int c = 0; c < side; ++c) {
            const double x = c + jitter(rng), y = r + jitter(rng);
            const double z = 20.0 * std::sin(x * 0.01) * std::cos(y * 0.013) + noise(rng);
            ZOL::Vector3 n(-0.2 * std::cos(x * 0.01) * std::cos(y * 0.013) + noise(rng),
                           0.26 * std::sin(x * 0.01) * std::sin(y * 0.013) + noise(rng), 1.0);
            n.Normalise();
            cloud.InsertPoint(ZOL::Vector3(x, y, z), n);
        }
    }
    return cloud;
}

/// CPU seconds of the whole process (all threads) so far: on a loaded machine the
/// difference across a run shows the work done, where wall time shows the waiting too.
double ProcessCpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
           1e-6 * (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

/// Reports the process CPU seconds per iteration since \p start as "cpu_all_s".
void SetCpuCounter(benchmark::State& state, double start) {
    state.counters["cpu_all_s"] = (ProcessCpuSeconds() - start) /
                                  static_cast<double>(std::max<int64_t>(state.iterations(), 1));
}

double PeakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024.0;
}

/// Plane-fit normals of 100k points, oriented towards a known camera direction.
void BM_CalculateNormal(benchmark::State& state) {
    ZOL::PointCloud cloud = Surface(100000, false);
    const ZOL::Vector3 camera(0, 0, -1);
    ZOL::SetThreadCount(static_cast<int>(state.range(0)));
    const double start = ProcessCpuSeconds();
    for (auto _ : state) {
        benchmark::DoNotOptimize(CPC::CalculatePointCloudNormal(&cloud, kNeighbors, &camera));
    }
    SetCpuCounter(state, start);
    ZOL::SetThreadCount(0);
}

/// The same without a known side: orientation along a spanning tree of the graph.
void BM_CalculateNormalPropagated(benchmark::State& state) {
    ZOL::PointCloud cloud = Surface(100000, false);
    ZOL::SetThreadCount(static_cast<int>(state.range(0)));
    const double start = ProcessCpuSeconds();
    for (auto _ : state) {
        benchmark::DoNotOptimize(CPC::CalculatePointCloudNormal(&cloud, kNeighbors));
    }
    SetCpuCounter(state, start);
    ZOL::SetThreadCount(0);
}

/// One pass of plane-projection (quality 0) or bilateral (quality 1) smoothing of 100k
/// points. Args: threads, quality.
void BM_SmoothGeometry(benchmark::State& state) {
    const ZOL::PointCloud original = Surface(100000, false);
    const auto quality = static_cast<CPC::SmoothQuality>(state.range(1));
    ZOL::SetThreadCount(static_cast<int>(state.range(0)));
    double cpu = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        ZOL::PointCloud cloud(original);
        const double start = ProcessCpuSeconds();
        state.ResumeTiming();
        ZOL::PointCloudInfo info;
        benchmark::DoNotOptimize(
            CPC::_SmoothGeometry(&cloud, info, kNeighbors, 1, nullptr, quality));
        state.PauseTiming();
        cpu += ProcessCpuSeconds() - start;
        state.ResumeTiming();
    }
    state.counters["cpu_all_s"] =
        cpu / static_cast<double>(std::max<int64_t>(state.iterations(), 1));
    ZOL::SetThreadCount(0);
}

/// The normal-smoothing solve; reports the process's peak resident memory after it.
void BM_SmoothNormal(benchmark::State& state) {
    const ZOL::PointCloud original = Surface(static_cast<int>(state.range(0)), true);
    ZOL::SetThreadCount(2);
    int status = 0;
    double cpu = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        ZOL::PointCloud cloud(original);
        const double start = ProcessCpuSeconds();
        state.ResumeTiming();
        status = CPC::SmoothNormal(&cloud, 1.0, kNeighbors, nullptr);
        cpu += ProcessCpuSeconds() - start;
    }
    state.counters["cpu_all_s"] = cpu;
    ZOL::SetThreadCount(0);
    state.counters["status"] = status;
    state.counters["peak_MB"] = PeakMegabytes();
}

}  // namespace

BENCHMARK(BM_CalculateNormal)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_CalculateNormalPropagated)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SmoothGeometry)
    ->Args({1, 0})
    ->Args({2, 0})
    ->Args({2, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_SmoothNormal)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->UseRealTime();

BENCHMARK_MAIN();
