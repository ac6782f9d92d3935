// Area and volume: known answers, orientation, open meshes, the interface path against
// the TriMesh fast path, and independence from the thread count.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include <zol/io/Parser.h>
#include <zol/mesh/MeasureMesh.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/ThreadCount.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/MeshHelpers.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

void ReverseAllTriangles(TriMesh& mesh) {
    for (int t = 0; t < mesh.GetTriangleCount(); ++t) {
        int ids[3];
        mesh.GetTriangleVertexIds(t, ids);
        mesh.SetTriangleVertexIds(t, ids[0], ids[2], ids[1]);
    }
}

}  // namespace

TEST(MeasureMesh, UnitCubeHasAreaSixAndVolumeOne) {
    TriMesh cube = zoltest::MakeUnitCube();
    double area = 0.0, volume = 0.0;
    ASSERT_EQ(MeasureMesh::ComputeArea(&cube, area), 0);
    ASSERT_EQ(MeasureMesh::ComputeVolume(&cube, volume), 0);
    EXPECT_NEAR(area, 6.0, 1e-14);
    EXPECT_NEAR(volume, 1.0, 1e-14);
}

TEST(MeasureMesh, OrientationAndWeldingDoNotChangeTheAnswers) {
    TriMesh soup = zoltest::MakeUnitCubeSoup();
    TriMesh reversed = zoltest::MakeUnitCube();
    ReverseAllTriangles(reversed);
    TriMesh shifted = zoltest::MakeUnitCube();  // the sum is translation invariant
    for (int v = 0; v < shifted.GetVertexCount(); ++v)
        shifted.SetVertexCoord(v, shifted.GetVertexCoord(v) + Vector3(-5, 2, 7));
    for (TriMesh* mesh : {&soup, &reversed, &shifted}) {
        double area = 0.0, volume = 0.0;
        ASSERT_EQ(MeasureMesh::ComputeArea(mesh, area), 0);
        ASSERT_EQ(MeasureMesh::ComputeVolume(mesh, volume), 0);
        EXPECT_NEAR(area, 6.0, 1e-13);
        EXPECT_NEAR(volume, 1.0, 1e-13);
    }
}

TEST(MeasureMesh, OpenMeshGivesTheConeToTheOrigin) {
    // A 2 x 2 grid lifted to z = 3: no closedness test, the sum is the cone volume A h / 3.
    TriMesh grid = zoltest::MakeGrid(2, 2);
    for (int v = 0; v < grid.GetVertexCount(); ++v)
        grid.SetVertexCoord(v, grid.GetVertexCoord(v) + Vector3(0, 0, 3));
    double area = 0.0, volume = 0.0;
    ASSERT_EQ(MeasureMesh::ComputeArea(&grid, area), 0);
    ASSERT_EQ(MeasureMesh::ComputeVolume(&grid, volume), 0);
    EXPECT_NEAR(area, 4.0, 1e-14);
    EXPECT_NEAR(volume, 4.0, 1e-14);
}

TEST(MeasureMesh, EmptyAndDegenerateMeshesGiveZero) {
    TriMesh empty;
    double area = 5.0, volume = 5.0;
    EXPECT_EQ(MeasureMesh::ComputeArea(&empty, area), 0);
    EXPECT_EQ(MeasureMesh::ComputeVolume(&empty, volume), 0);
    EXPECT_EQ(area, 0.0);
    EXPECT_EQ(volume, 0.0);

    TriMesh flat;
    flat.InsertVertex(Vector3(0, 0, 0));
    flat.InsertVertex(Vector3(1, 1, 1));
    flat.InsertVertex(Vector3(2, 2, 2));
    flat.InsertTriangle(0, 1, 2);
    flat.InsertTriangle(0, 0, 1);
    EXPECT_EQ(MeasureMesh::ComputeArea(&flat, area), 0);
    EXPECT_EQ(area, 0.0);
}

TEST(MeasureMesh, NullMeshIsLoggedAndLeavesTheResult) {
    zoltest::LogCapture log;
    SetProgress(0.7);
    double area = 5.0, volume = 6.0;
    EXPECT_EQ(MeasureMesh::ComputeArea(nullptr, area), -2);
    EXPECT_EQ(GetApiProgress(), 0.0);
    EXPECT_EQ(MeasureMesh::ComputeVolume(nullptr, volume), -2);
    EXPECT_EQ(area, 5.0);
    EXPECT_EQ(volume, 6.0);
    EXPECT_EQ(log.Lines(),
              (std::vector<std::string>{"MeasureMesh::ComputeArea input triMesh is NULL",
                                        "MeasureMesh::ComputeVolume input triMesh is NULL"}));
}

TEST(MeasureMesh, CornerOutOfRangeIsRefusedWithoutTouchingTheResult) {
    TriMesh cube = zoltest::MakeUnitCube();
    cube.InsertTriangle(0, 1, 8);
    cube.InsertTriangle(0, -1, 2);
    zoltest::ForwardingMesh host(cube);
    zoltest::LogCapture log;
    double area = 5.0, volume = 6.0;
    EXPECT_EQ(MeasureMesh::ComputeArea(&cube, area), -2);
    EXPECT_EQ(MeasureMesh::ComputeVolume(&host, volume), -2);
    EXPECT_EQ(area, 5.0);
    EXPECT_EQ(volume, 6.0);
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{
                               "MeasureMesh::ComputeArea: invalid vertex id in triangle 12",
                               "MeasureMesh::ComputeVolume: invalid vertex id in triangle 12"}));
}

TEST(MeasureMesh, SphereApproachesItsAnalyticMeasures) {
    const double r = 2.0, pi = 3.14159265358979323846;
    TriMesh sphere = zoltest::MakeSphere(256, 128, r);
    double area = 0.0, volume = 0.0;
    ASSERT_EQ(MeasureMesh::ComputeArea(&sphere, area), 0);
    ASSERT_EQ(MeasureMesh::ComputeVolume(&sphere, volume), 0);
    // Inscribed polyhedron: slightly below, within the chord error.
    EXPECT_LT(area, 4 * pi * r * r);
    EXPECT_GT(area, 4 * pi * r * r * 0.999);
    EXPECT_LT(volume, 4.0 / 3.0 * pi * r * r * r);
    EXPECT_GT(volume, 4.0 / 3.0 * pi * r * r * r * 0.999);
}

TEST(MeasureMesh, HostMeshAndThreadCountGiveBitIdenticalSums) {
    // Large enough for the two-thread split; the sums must not depend on it.
    TriMesh grid = zoltest::MakeGrid(380, 380, 0.01);
    for (int v = 0; v < grid.GetVertexCount(); ++v) {
        Vector3 p = grid.GetVertexCoord(v);
        p.z = std::sin(3 * p.x) * std::cos(2 * p.y) + 1.0;
        grid.SetVertexCoord(v, p);
    }
    zoltest::ForwardingMesh host(grid);
    const int saved = GetThreadCount();
    // 1 thread on the TriMesh, the host mesh, then 2, 3 (uneven shares) and 8 threads.
    const int threadCounts[] = {1, 1, 2, 3, 8};
    double results[5][2];
    for (int i = 0; i < 5; ++i) {
        SetThreadCount(threadCounts[i]);
        const ITriMesh* mesh = (i == 1) ? static_cast<const ITriMesh*>(&host) : &grid;
        ASSERT_EQ(MeasureMesh::ComputeArea(mesh, results[i][0]), 0);
        ASSERT_EQ(MeasureMesh::ComputeVolume(mesh, results[i][1]), 0);
    }
    SetThreadCount(saved);
    for (int i = 1; i < 5; ++i) {
        EXPECT_EQ(results[i][0], results[0][0]) << threadCounts[i];
        EXPECT_EQ(results[i][1], results[0][1]) << threadCounts[i];
    }
}

TEST(MeasureMesh, BunnyAreaMatchesAnIndependentSum) {
    std::unique_ptr<TriMesh> mesh(Parser::ImportTriMesh(zoltest::DataPath("meshes/bunny.off")));
    ASSERT_NE(mesh, nullptr);
    TriMesh& bunny = *mesh;
    ASSERT_EQ(bunny.GetTriangleCount(), 6966);
    // Heron's formula per triangle as the oracle.
    long double expected = 0.0;
    for (int t = 0; t < bunny.GetTriangleCount(); ++t) {
        int ids[3];
        bunny.GetTriangleVertexIds(t, ids);
        const Vector3 a = bunny.GetVertexCoord(ids[0]), b = bunny.GetVertexCoord(ids[1]),
                      c = bunny.GetVertexCoord(ids[2]);
        const long double x = a.Distance(b), y = b.Distance(c), z = c.Distance(a);
        const long double s = (x + y + z) / 2;
        const long double h = s * (s - x) * (s - y) * (s - z);
        expected += h > 0 ? std::sqrt(h) : 0.0L;
    }
    double area = 0.0;
    ASSERT_EQ(MeasureMesh::ComputeArea(&bunny, area), 0);
    EXPECT_NEAR(area, static_cast<double>(expected), 1e-9 * area);
}
