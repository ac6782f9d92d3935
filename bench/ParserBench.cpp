// Mesh file throughput: writing and reading a one-million-triangle mesh (about 500k
// vertices) in every format, reported as MB/s of file and triangles per second.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include <zol/core/TriMesh.h>
#include <zol/io/Parser.h>

namespace {

// A wavy grid of 707 x 707 cells: 501264 vertices, 999698 triangles, with coordinates
// that need all six significant digits.
const ZOL::TriMesh& BenchMesh() {
    static const ZOL::TriMesh mesh = [] {
        const int n = 707;
        ZOL::TriMesh m;
        m.Reserve((n + 1) * (n + 1), 2 * n * n);
        for (int j = 0; j <= n; ++j) {
            for (int i = 0; i <= n; ++i) {
                const double x = i * 0.0123456789 - 4.2;
                const double y = j * 0.0098765432 + 1.7;
                m.InsertVertex(ZOL::Vector3(x, y, 0.3 * std::sin(3 * x) * std::cos(2 * y)));
            }
        }
        for (int j = 0; j < n; ++j) {
            for (int i = 0; i < n; ++i) {
                const int a = j * (n + 1) + i;
                m.InsertTriangle(a, a + 1, a + n + 2);
                m.InsertTriangle(a, a + n + 2, a + n + 1);
            }
        }
        m.UpdateNormal();
        return m;
    }();
    return mesh;
}

std::string BenchFile(const char* extension) {
    return (std::filesystem::temp_directory_path() / ("zol_parser_bench." + std::string(extension)))
        .string();
}

void Report(benchmark::State& state, const std::string& file, int triangles) {
    const double bytes = static_cast<double>(std::filesystem::file_size(file));
    state.counters["MB/s"] =
        benchmark::Counter(bytes * state.iterations() / 1e6, benchmark::Counter::kIsRate);
    state.counters["triangles/s"] =
        benchmark::Counter(double(triangles) * state.iterations(), benchmark::Counter::kIsRate);
    state.counters["file_MB"] = bytes / 1e6;
}

void BM_Write(benchmark::State& state, const char* extension) {
    const ZOL::TriMesh& mesh = BenchMesh();
    const std::string file = BenchFile(extension);
    for (auto _ : state) {
        if (ZOL::Parser::ExportTriMesh(file, &mesh) != 0) state.SkipWithError("export failed");
    }
    Report(state, file, mesh.GetTriangleCount());
}

void BM_Read(benchmark::State& state, const char* extension) {
    const ZOL::TriMesh& mesh = BenchMesh();
    const std::string file = BenchFile(extension);
    if (!std::filesystem::exists(file)) ZOL::Parser::ExportTriMesh(file, &mesh);
    int triangles = 0;
    for (auto _ : state) {
        std::unique_ptr<ZOL::TriMesh> read(ZOL::Parser::ImportTriMesh(file));
        if (!read) {
            state.SkipWithError("import failed");
            break;
        }
        triangles = read->GetTriangleCount();
    }
    Report(state, file, triangles);
}

}  // namespace

#define ZOL_PARSER_BENCH(ext)              \
    BENCHMARK_CAPTURE(BM_Write, ext, #ext) \
        ->Unit(benchmark::kMillisecond)    \
        ->MinTime(0.5)                     \
        ->UseRealTime();                   \
    BENCHMARK_CAPTURE(BM_Read, ext, #ext)  \
        ->Unit(benchmark::kMillisecond)    \
        ->MinTime(0.5)                     \
        ->UseRealTime();

ZOL_PARSER_BENCH(ply)
ZOL_PARSER_BENCH(off)
ZOL_PARSER_BENCH(obj)
ZOL_PARSER_BENCH(stl)
ZOL_PARSER_BENCH(zpt)

BENCHMARK_MAIN();
