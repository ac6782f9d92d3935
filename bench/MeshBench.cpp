// Triangle-mesh container throughput on one million triangles: normals, welding of a
// triangle soup, edge records, and a read pass through the inline accessors.
#include <benchmark/benchmark.h>

#include <zol/core/TriMesh.h>
#include <zol/core/TriMeshInfo.h>

using ZOL::TriMesh;
using ZOL::Vector3;

namespace {

// A gently curved height field of 2 n^2 triangles (n = 708 gives about one million).
TriMesh MakeSurface(int n) {
    TriMesh mesh;
    mesh.Reserve((n + 1) * (n + 1), 2 * n * n);
    for (int j = 0; j <= n; ++j) {
        for (int i = 0; i <= n; ++i) {
            const double x = i * 0.01;
            const double y = j * 0.01;
            mesh.InsertVertex(Vector3(x, y, 0.1 * x * x - 0.05 * y * y));
        }
    }
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            const int a = j * (n + 1) + i;
            mesh.InsertTriangle(a, a + 1, a + n + 2);
            mesh.InsertTriangle(a, a + n + 2, a + n + 1);
        }
    }
    return mesh;
}

// The same surface with three vertices of its own per triangle, as binary STL gives it.
TriMesh MakeSoup(int n) {
    TriMesh surface = MakeSurface(n);
    TriMesh soup;
    soup.Reserve(3 * surface.GetTriangleCount(), surface.GetTriangleCount());
    for (int t = 0; t < surface.GetTriangleCount(); ++t) {
        const int* ids = surface.GetTriangleVertexIdsRef(t);
        const int first = soup.InsertVertex(surface.GetVertexCoordRef(ids[0]));
        soup.InsertVertex(surface.GetVertexCoordRef(ids[1]));
        soup.InsertVertex(surface.GetVertexCoordRef(ids[2]));
        soup.InsertTriangle(first, first + 1, first + 2);
    }
    return soup;
}

const int kSide = 708;

void BM_UpdateNormal(benchmark::State& state) {
    TriMesh mesh = MakeSurface(kSide);
    for (auto _ : state) {
        mesh.UpdateNormal();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * mesh.GetTriangleCount());
}
BENCHMARK(BM_UpdateNormal)->Unit(benchmark::kMillisecond);

void BM_FuseVertexSoup(benchmark::State& state) {
    const TriMesh soup = MakeSoup(kSide);
    for (auto _ : state) {
        state.PauseTiming();
        TriMesh mesh(soup);
        state.ResumeTiming();
        benchmark::DoNotOptimize(mesh.FuseVertex());
    }
    state.SetItemsProcessed(state.iterations() * soup.GetVertexCount());
}
BENCHMARK(BM_FuseVertexSoup)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_CacheEdgeInfos(benchmark::State& state) {
    const TriMesh mesh = MakeSurface(kSide);
    ZOL::TriMeshInfo info;
    for (auto _ : state) benchmark::DoNotOptimize(info.CacheDataForEdgeInfos(&mesh));
    state.SetItemsProcessed(state.iterations() * mesh.GetTriangleCount());
}
BENCHMARK(BM_CacheEdgeInfos)->Unit(benchmark::kMillisecond);

// Surface area through the inline reference accessors: the pattern of measuring code.
void BM_AreaThroughAccessors(benchmark::State& state) {
    const TriMesh mesh = MakeSurface(kSide);
    for (auto _ : state) {
        double area = 0.0;
        const int count = mesh.GetTriangleCount();
        for (int t = 0; t < count; ++t) {
            const int* ids = mesh.GetTriangleVertexIdsRef(t);
            const Vector3& p0 = mesh.GetVertexCoordRef(ids[0]);
            area += (mesh.GetVertexCoordRef(ids[1]) - p0)
                        .CrossProduct(mesh.GetVertexCoordRef(ids[2]) - p0)
                        .Length();
        }
        benchmark::DoNotOptimize(area);
    }
    state.SetItemsProcessed(state.iterations() * mesh.GetTriangleCount());
}
BENCHMARK(BM_AreaThroughAccessors)->Unit(benchmark::kMillisecond);

void BM_CopyMesh(benchmark::State& state) {
    const TriMesh mesh = MakeSurface(kSide);
    for (auto _ : state) {
        TriMesh copy(mesh);
        benchmark::DoNotOptimize(copy.GetVertexCount());
    }
}
BENCHMARK(BM_CopyMesh)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
