// Area, volume and box-octree construction on a closed mesh of about one million
// triangles (a finely tessellated wavy sphere), with a flat-array area loop as baseline.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include <zol/core/TriMesh.h>
#include <zol/mesh/MeasureMesh.h>
#include <zol/mesh/MeshQueryTool.h>
#include <zol/runtime/ThreadCount.h>

namespace {

// UV sphere with 1000 slices and 501 stacks: 2 * 1000 * 500 = 1,000,000 triangles.
const ZOL::TriMesh& MillionTriangleMesh() {
    static const ZOL::TriMesh mesh = [] {
        const int slices = 1000, stacks = 501;
        const double pi = 3.14159265358979323846;
        ZOL::TriMesh m;
        m.Reserve(2 + slices * (stacks - 1), 2 * slices * (stacks - 1));
        const int north = m.InsertVertex(ZOL::Vector3(0, 0, 1));
        for (int i = 1; i < stacks; ++i) {
            const double theta = pi * i / stacks;
            for (int j = 0; j < slices; ++j) {
                const double phi = 2 * pi * j / slices;
                const double r = 1.0 + 0.05 * std::sin(7 * phi) * std::sin(5 * theta);
                m.InsertVertex(ZOL::Vector3(r * std::sin(theta) * std::cos(phi),
                                            r * std::sin(theta) * std::sin(phi),
                                            r * std::cos(theta)));
            }
        }
        const int south = m.InsertVertex(ZOL::Vector3(0, 0, -1));
        auto ring = [&](int i, int j) { return 1 + (i - 1) * slices + (j % slices); };
        for (int j = 0; j < slices; ++j) m.InsertTriangle(north, ring(1, j), ring(1, j + 1));
        for (int i = 1; i + 1 < stacks; ++i)
            for (int j = 0; j < slices; ++j) {
                m.InsertTriangle(ring(i, j), ring(i + 1, j), ring(i + 1, j + 1));
                m.InsertTriangle(ring(i, j), ring(i + 1, j + 1), ring(i, j + 1));
            }
        for (int j = 0; j < slices; ++j)
            m.InsertTriangle(south, ring(stacks - 1, j + 1), ring(stacks - 1, j));
        return m;
    }();
    return mesh;
}

void BM_ComputeArea(benchmark::State& state) {
    const ZOL::TriMesh& mesh = MillionTriangleMesh();
    const int saved = ZOL::GetThreadCount();
    ZOL::SetThreadCount(static_cast<int>(state.range(0)));
    double area = 0.0;
    for (auto _ : state) {
        ZOL::MeasureMesh::ComputeArea(&mesh, area);
        benchmark::DoNotOptimize(area);
    }
    ZOL::SetThreadCount(saved);
    state.SetItemsProcessed(state.iterations() * mesh.GetTriangleCount());
}
// Argument: thread count.
BENCHMARK(BM_ComputeArea)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ComputeVolume(benchmark::State& state) {
    const ZOL::TriMesh& mesh = MillionTriangleMesh();
    double volume = 0.0;
    for (auto _ : state) {
        ZOL::MeasureMesh::ComputeVolume(&mesh, volume);
        benchmark::DoNotOptimize(volume);
    }
    state.SetItemsProcessed(state.iterations() * mesh.GetTriangleCount());
}
BENCHMARK(BM_ComputeVolume)->Unit(benchmark::kMillisecond)->UseRealTime();

// What a library with flat coordinate and index arrays does: the reference point.
void BM_FlatArrayAreaBaseline(benchmark::State& state) {
    const ZOL::TriMesh& mesh = MillionTriangleMesh();
    std::vector<double> coords(3 * static_cast<size_t>(mesh.GetVertexCount()));
    std::vector<int> ids(3 * static_cast<size_t>(mesh.GetTriangleCount()));
    for (int v = 0; v < mesh.GetVertexCount(); ++v)
        for (int k = 0; k < 3; ++k) coords[3 * v + k] = mesh.GetVertexCoordRef(v)[k];
    for (int t = 0; t < mesh.GetTriangleCount(); ++t)
        for (int k = 0; k < 3; ++k) ids[3 * t + k] = mesh.GetTriangleVertexIdsRef(t)[k];
    for (auto _ : state) {
        double sum = 0.0;
        for (size_t t = 0; t < ids.size(); t += 3) {
            const double* a = &coords[3 * ids[t]];
            const double* b = &coords[3 * ids[t + 1]];
            const double* c = &coords[3 * ids[t + 2]];
            const double u[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
            const double v[3] = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
            const double x = u[1] * v[2] - u[2] * v[1], y = u[2] * v[0] - u[0] * v[2],
                         z = u[0] * v[1] - u[1] * v[0];
            sum += std::sqrt(x * x + y * y + z * z);
        }
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(BM_FlatArrayAreaBaseline)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_MeshQueryToolInit(benchmark::State& state) {
    const ZOL::TriMesh& mesh = MillionTriangleMesh();
    for (auto _ : state) {
        ZOL::MeshQueryTool tool;
        benchmark::DoNotOptimize(tool.Init(&mesh));
    }
}
BENCHMARK(BM_MeshQueryToolInit)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace

BENCHMARK_MAIN();
