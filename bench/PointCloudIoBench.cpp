// Point-cloud file throughput: writing and reading one million points with normals and
// colours in every format.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <string>

#include <zol/core/PointCloud.h>
#include <zol/io/Parser.h>

namespace {
const char* const kExtensions[] = {"asc", "casc", "obj", "ply", "zpc", "zbp"};
constexpr int kPoints = 1000000;

const ZOL::PointCloud& Cloud() {
    static const ZOL::PointCloud cloud = [] {
        std::mt19937 rng(3);
        std::uniform_real_distribution<double> u(-1.0, 1.0);
        ZOL::PointCloud c(true, true, false);
        c.ReservePoint(kPoints);
        for (int i = 0; i < kPoints; ++i) {
            ZOL::Vector3 n(u(rng), u(rng), u(rng));
            n.Normalise();
            const int id = c.InsertPoint(ZOL::Vector3(u(rng), u(rng), u(rng)), n);
            c.SetPointColor(
                id, ZOL::Vector3(u(rng), u(rng), u(rng)) * 0.5 + ZOL::Vector3(0.5, 0.5, 0.5));
        }
        return c;
    }();
    return cloud;
}

std::string PathFor(const char* extension) {
    return (std::filesystem::temp_directory_path() / (std::string("zol_bench_cloud.") + extension))
        .string();
}

void BM_ExportPointCloud(benchmark::State& state) {
    const char* extension = kExtensions[state.range(0)];
    state.SetLabel(extension);
    const std::string path = PathFor(extension);
    for (auto _ : state) {
        benchmark::DoNotOptimize(ZOL::Parser::ExportPointCloud(path, &Cloud()));
    }
    state.SetItemsProcessed(state.iterations() * kPoints);
}

void BM_ImportPointCloud(benchmark::State& state) {
    const char* extension = kExtensions[state.range(0)];
    state.SetLabel(extension);
    const std::string path = PathFor(extension);
    ZOL::Parser::ExportPointCloud(path, &Cloud());
    for (auto _ : state) {
        std::unique_ptr<ZOL::PointCloud> cloud(ZOL::Parser::ImportPointCloud(path));
        benchmark::DoNotOptimize(cloud.get());
    }
    state.SetItemsProcessed(state.iterations() * kPoints);
    std::remove(path.c_str());
}
}  // namespace

BENCHMARK(BM_ExportPointCloud)->DenseRange(0, 5)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_ImportPointCloud)->DenseRange(0, 5)->Unit(benchmark::kMillisecond)->Iterations(2);

BENCHMARK_MAIN();
