// Area and volume: known answers, orientation, open meshes and bad meshes. Host meshes
// and thread counts are covered by the operation table (tests/common/OperationTable).
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include <zol/io/Parser.h>
#include <zol/mesh/MeasureMesh.h>
#include <zol/runtime/ApiProgress.h>

#include "tests/common/HostContainers.h"
#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

TriMesh Moved(TriMesh mesh, const Vector3& by) {
    for (int v = 0; v < mesh.GetVertexCount(); ++v)
        mesh.SetVertexCoord(v, mesh.GetVertexCoord(v) + by);
    return mesh;
}

}  // namespace

TEST(MeasureMesh, KnownAnswersOfReorientedOpenAndDegenerateMeshes) {
    TriMesh reversed = zoltest::MakeUnitCube();
    for (int t = 0; t < reversed.GetTriangleCount(); ++t) {
        int ids[3];
        reversed.GetTriangleVertexIds(t, ids);
        reversed.SetTriangleVertexIds(t, ids[0], ids[2], ids[1]);
    }
    const TriMesh flat =
        zoltest::MakeMesh({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}, {{0, 1, 2}, {0, 0, 1}});
    const struct {
        const char* name;
        TriMesh mesh;
        double area, volume;
    } cases[] = {
        {"unit cube", zoltest::MakeUnitCube(), 6.0, 1.0},
        {"unwelded soup", zoltest::MakeUnitCubeSoup(), 6.0, 1.0},
        {"reversed: orientation is not used", reversed, 6.0, 1.0},
        {"moved: the sum is translation invariant", Moved(zoltest::MakeUnitCube(), {-5, 2, 7}), 6.0,
         1.0},
        // Open meshes are not closed first: the sum is the cone to the origin, A h / 3.
        {"open 2 x 2 grid at z = 3", Moved(zoltest::MakeGrid(2, 2), {0, 0, 3}), 4.0, 4.0},
        {"empty", TriMesh(), 0.0, 0.0},
        {"collinear and repeated corners", flat, 0.0, 0.0},
    };
    for (const auto& c : cases) {
        double area = -1.0, volume = -1.0;
        ASSERT_EQ(MeasureMesh::ComputeArea(&c.mesh, area), RESULT_OK) << c.name;
        ASSERT_EQ(MeasureMesh::ComputeVolume(&c.mesh, volume), RESULT_OK) << c.name;
        EXPECT_NEAR(area, c.area, 1e-13) << c.name;
        EXPECT_NEAR(volume, c.volume, 1e-13) << c.name;
    }
}

TEST(MeasureMesh, BadMeshesAreLoggedAndLeaveTheResult) {
    TriMesh cube = zoltest::MakeUnitCube();
    cube.InsertTriangle(0, 1, 8);
    cube.InsertTriangle(0, -1, 2);
    zoltest::HostMesh host(cube);
    const struct {
        const ITriMesh* mesh;
        bool volume;
        const char* line;
    } cases[] = {
        {nullptr, false, "MeasureMesh::ComputeArea input triMesh is NULL"},
        {nullptr, true, "MeasureMesh::ComputeVolume input triMesh is NULL"},
        {&cube, false, "MeasureMesh::ComputeArea: invalid vertex id in triangle 12"},
        {&host, true, "MeasureMesh::ComputeVolume: invalid vertex id in triangle 12"},
    };
    for (const auto& c : cases) {
        zoltest::LogCapture log;
        SetProgress(0.7);
        double result = 5.0;
        EXPECT_EQ(c.volume ? MeasureMesh::ComputeVolume(c.mesh, result)
                           : MeasureMesh::ComputeArea(c.mesh, result),
                  RESULT_INVALID_INPUT);
        EXPECT_EQ(result, 5.0);
        EXPECT_EQ(GetApiProgress(), 0.0);
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
    }
}

TEST(MeasureMesh, BunnyAreaMatchesAnIndependentSum) {
    std::unique_ptr<TriMesh> mesh = zoltest::ImportMesh(zoltest::DataPath("meshes/bunny.off"));
    ASSERT_NE(mesh, nullptr);
    ASSERT_EQ(mesh->GetTriangleCount(), 6966);
    // Heron's formula per triangle as the oracle.
    long double expected = 0.0;
    for (int t = 0; t < mesh->GetTriangleCount(); ++t) {
        int ids[3];
        mesh->GetTriangleVertexIds(t, ids);
        const Vector3 a = mesh->GetVertexCoord(ids[0]), b = mesh->GetVertexCoord(ids[1]),
                      c = mesh->GetVertexCoord(ids[2]);
        const long double x = a.Distance(b), y = b.Distance(c), z = c.Distance(a);
        const long double s = (x + y + z) / 2, h = s * (s - x) * (s - y) * (s - z);
        expected += h > 0 ? std::sqrt(h) : 0.0L;
    }
    double area = 0.0;
    ASSERT_EQ(MeasureMesh::ComputeArea(mesh.get(), area), RESULT_OK);
    EXPECT_NEAR(area, static_cast<double>(expected), 1e-9 * area);
}
