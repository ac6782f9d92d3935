// Mesh file throughput: writing and reading a one-million-triangle mesh (about 500k
// vertices) in every format, reported as bytes per second of file and triangles per
// second; and reading a PLY of the same mesh whose numbers carry all 17 digits.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
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
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
    state.counters["triangles/s"] =
        benchmark::Counter(double(triangles) * state.iterations(), benchmark::Counter::kIsRate);
    state.counters["file_MB"] = bytes / 1e6;
}

// Our PLY layout with every coordinate as the shortest text that reads back exactly:
// 15 to 17 significant digits, where our writer puts 6.
void WriteLongNumberPly(const std::string& file) {
    const ZOL::TriMesh& mesh = BenchMesh();
    std::string text = "ply\nformat ascii 1.0\nelement vertex " +
                       std::to_string(mesh.GetVertexCount()) +
                       "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
                       std::to_string(mesh.GetTriangleCount()) +
                       "\nproperty list uchar int vertex_indices\nend_header\n";
    char number[32];
    for (int i = 0; i < mesh.GetVertexCount(); ++i) {
        const ZOL::Vector3& p = mesh.GetVertexCoordRef(i);
        for (int k = 0; k < 3; ++k) {
            text.append(number, std::to_chars(number, number + sizeof number, p[k] + 1e-9).ptr);
            text.push_back(k < 2 ? ' ' : '\n');
        }
    }
    for (int t = 0; t < mesh.GetTriangleCount(); ++t) {
        const int* ids = mesh.GetTriangleVertexIdsRef(t);
        text += "3 " + std::to_string(ids[0]) + " " + std::to_string(ids[1]) + " " +
                std::to_string(ids[2]) + "\n";
    }
    std::ofstream(file, std::ios::binary) << text;
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

void BM_ReadLongNumbers(benchmark::State& state) {
    const std::string file = BenchFile("long.ply");
    if (!std::filesystem::exists(file)) WriteLongNumberPly(file);
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
BENCHMARK(BM_ReadLongNumbers)->Unit(benchmark::kMillisecond)->MinTime(0.5)->UseRealTime();

BENCHMARK_MAIN();
