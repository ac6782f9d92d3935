// Nearest-neighbour index throughput: building the index (time and memory, one tree
// per thread) and asking the 10 nearest neighbours of every point of 1M points of a
// scanned-looking surface, in scan (spatially coherent) order and shuffled, on 1 and 2
// threads. The same search straight on the kd-tree library, on one thread, is the
// baseline.
#include <benchmark/benchmark.h>

#include <ANN/ANN.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <map>
#include <random>
#include <vector>

#include <zol/core/IPointList.h>
#include <zol/core/PointCloud.h>
#include <zol/runtime/Ann.h>
#include <zol/runtime/PointCloudInfo.h>
#include <zol/runtime/ThreadCount.h>

namespace {

constexpr int kNeighbors = 10;

/// A wavy height field sampled row by row like a range scan (coherent order), or the
/// same points shuffled.
const std::vector<double>& SurfacePoints(int count, bool shuffled) {
    static std::map<std::pair<int, bool>, std::vector<double>> cache;
    std::vector<double>& xyz = cache[{count, shuffled}];
    if (!xyz.empty()) return xyz;
    const int side = static_cast<int>(std::lround(std::sqrt(count)));
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> jitter(-0.3, 0.3);
    std::vector<std::array<double, 3>> points;
    points.reserve(static_cast<size_t>(side) * side);
    for (int r = 0; r < side; ++r) {
        for (int c = 0; c < side; ++c) {
            const double x = c + jitter(rng), y = r + jitter(rng);
            points.push_back({x, y, 20.0 * std::sin(x * 0.01) * std::cos(y * 0.013)});
        }
    }
    if (shuffled) std::shuffle(points.begin(), points.end(), rng);
    for (const auto& p : points) xyz.insert(xyz.end(), p.begin(), p.end());
    return xyz;
}

ZOL::PointCloud MakeCloud(const std::vector<double>& xyz) {
    ZOL::PointCloud cloud;
    cloud.ReservePoint(static_cast<int>(xyz.size() / 3));
    for (size_t i = 0; i < xyz.size(); i += 3) {
        cloud.InsertPoint(ZOL::Vector3(xyz[i], xyz[i + 1], xyz[i + 2]));
    }
    return cloud;
}

void SetQueryRate(benchmark::State& state, int count) {
    state.counters["queries/s"] = benchmark::Counter(
        static_cast<double>(count) * state.iterations(), benchmark::Counter::kIsRate);
}

/// Resident memory of the process in MB, after handing freed heap back to the system
/// so that a following allocation shows up.
double ResidentMegabytes() {
    malloc_trim(0);
    long pages = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return static_cast<double>(resident) * sysconf(_SC_PAGESIZE) / (1024.0 * 1024.0);
}

/// The first index built for two threads in the process, which loads a second copy of
/// the kd-tree library: the time and memory of that load (the index is tiny).
void BM_AnnFirstTwoThreadIndex(benchmark::State& state) {
    std::vector<double> xyz(3 * 1000);
    for (size_t i = 0; i < xyz.size(); ++i) xyz[i] = static_cast<double>(i % 97);
    ZOL::SetThreadCount(2);
    for (auto _ : state) {
        const double before = ResidentMegabytes();
        ZOL::Ann ann;
        benchmark::DoNotOptimize(ann.Init(xyz.data(), 1000, 3));
        state.counters["MB"] = ResidentMegabytes() - before;
    }
    ZOL::SetThreadCount(0);
}

/// Index build from a cloud with one tree per thread; "MB" is the memory the index
/// holds (points, rows, trees). Args: point count, threads.
void BM_AnnBuild(benchmark::State& state) {
    const std::vector<double>& xyz = SurfacePoints(static_cast<int>(state.range(0)), false);
    ZOL::PointCloud cloud = MakeCloud(xyz);
    ZOL::PointCloudPointList list(&cloud);
    ZOL::SetThreadCount(static_cast<int>(state.range(1)));
    for (auto _ : state) {
        state.PauseTiming();
        const double before = ResidentMegabytes();
        state.ResumeTiming();
        ZOL::Ann ann;
        benchmark::DoNotOptimize(ann.Init(&list, nullptr));
        state.PauseTiming();
        state.counters["MB"] = ResidentMegabytes() - before;
        state.ResumeTiming();
    }
    ZOL::SetThreadCount(0);
}

/// 10 nearest of every point through Ann's parallel list query.
/// Args: point count, shuffled (0/1), threads.
void BM_AnnListQuery(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const std::vector<double>& xyz = SurfacePoints(count, state.range(1) != 0);
    ZOL::PointCloud cloud = MakeCloud(xyz);
    ZOL::PointCloudPointList list(&cloud);
    ZOL::SetThreadCount(static_cast<int>(state.range(2)));
    ZOL::Ann ann;
    ann.Init(&list, nullptr);
    std::vector<int> ids(static_cast<size_t>(count) * kNeighbors);
    std::vector<double> dists(ids.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            ann.FindNearestNeighbors(&list, kNeighbors, ids.data(), dists.data()));
    }
    ZOL::SetThreadCount(0);
    SetQueryRate(state, count);
}

/// The same through PointCloudInfo, which also keeps the neighbour cache.
void BM_PointCloudInfoNeighbors(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    ZOL::PointCloud cloud = MakeCloud(SurfacePoints(count, state.range(1) != 0));
    ZOL::SetThreadCount(static_cast<int>(state.range(2)));
    ZOL::PointCloudInfo info;
    info.InitAnn(&cloud, kNeighbors);
    for (auto _ : state) {
        benchmark::DoNotOptimize(info.FindNearestNeighbors(kNeighbors, &cloud, nullptr));
    }
    ZOL::SetThreadCount(0);
    SetQueryRate(state, count);
}

/// Baseline: the kd-tree library alone, one thread, no lock, results into one row.
void BM_BareKdTree(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    std::vector<double> xyz = SurfacePoints(count, state.range(1) != 0);
    std::vector<ANNpoint> rows(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) rows[i] = &xyz[3 * static_cast<size_t>(i)];
    ANNkd_tree tree(rows.data(), count, 3, 16, ANN_KD_SUGGEST);
    std::vector<int> ids(static_cast<size_t>(count) * kNeighbors);
    std::vector<double> dists(ids.size());
    for (auto _ : state) {
        for (int i = 0; i < count; ++i) {
            const size_t row = static_cast<size_t>(i) * kNeighbors;
            tree.annkSearch(rows[i], kNeighbors, &ids[row], &dists[row], 0.0);
        }
        benchmark::ClobberMemory();
    }
    SetQueryRate(state, count);
}

void BuildArgs(benchmark::internal::Benchmark* b) {
    for (int count : {100000, 1000000}) {
        for (int threads : {1, 2}) b->Args({count, threads});
    }
}

void QueryArgs(benchmark::internal::Benchmark* b) {
    for (int shuffled : {0, 1}) {
        for (int threads : {1, 2}) b->Args({1000000, shuffled, threads});
    }
}

void BaselineArgs(benchmark::internal::Benchmark* b) {
    for (int shuffled : {0, 1}) b->Args({1000000, shuffled});
}

}  // namespace

BENCHMARK(BM_AnnFirstTwoThreadIndex)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();
BENCHMARK(BM_AnnBuild)
    ->Apply(BuildArgs)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(BM_BareKdTree)
    ->Apply(BaselineArgs)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->UseRealTime();
// CPU is the whole process's, workers included: on a loaded machine it shows the
// per-query overhead against the baseline better than the wall time does.
BENCHMARK(BM_AnnListQuery)
    ->Apply(QueryArgs)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(BM_PointCloudInfoNeighbors)
    ->Apply(QueryArgs)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

BENCHMARK_MAIN();
