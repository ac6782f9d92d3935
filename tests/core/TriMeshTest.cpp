// TriMesh: building, attribute arrays, swap/pop, deep copies, normals with their
// repair passes, coordinate normalisation and vertex welding.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <zol/core/RecordPool.h>
#include <zol/core/TriMesh.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

void ExpectVec(const Vector3& actual, const Vector3& expected) {
    EXPECT_DOUBLE_EQ(actual.x, expected.x);
    EXPECT_DOUBLE_EQ(actual.y, expected.y);
    EXPECT_DOUBLE_EQ(actual.z, expected.z);
}

std::vector<int> Corners(const TriMesh& mesh, int triangle) {
    int ids[3];
    mesh.GetTriangleVertexIds(triangle, ids);
    return {ids[0], ids[1], ids[2]};
}

}  // namespace

TEST(TriMesh, BuildsATriangleAndComputesItsNormal) {
    TriMesh mesh;
    mesh.InsertVertex(Vector3(0, 0, 0));
    mesh.InsertVertex(Vector3(2, 0, 0));
    EXPECT_EQ(mesh.InsertVertex(Vector3(0, 2, 0)), 2);
    EXPECT_EQ(mesh.InsertTriangle(0, 1, 2), 0);
    ExpectVec(mesh.GetTriangleNormal(0), Vector3());
    mesh.UpdateNormal();
    ExpectVec(mesh.GetTriangleNormal(0), Vector3(0, 0, 1));
    for (int i = 0; i < 3; ++i) ExpectVec(mesh.GetVertexNormal(i), Vector3(0, 0, 1));
    ExpectVec(mesh.GetDefaultColor(), Vector3(0.86, 0.86, 0.86));
    EXPECT_EQ(mesh.GetMeshType(), MESH_TYPE_UNKNOWN);
}

TEST(TriMesh, AttributeArraysGrowInStepWithBlackForNewVertices) {
    TriMesh mesh(true, true, true);
    EXPECT_FALSE(mesh.HasTriangleColor());
    mesh.InsertVertex(Vector3(1, 1, 1));
    mesh.SetVertexColor(0, Vector3(1, 0.5, 0.25));
    mesh.InsertVertex(Vector3(2, 2, 2), Vector3(0, 1, 0));
    ExpectVec(mesh.GetVertexNormal(1), Vector3(0, 1, 0));
    ExpectVec(mesh.GetVertexColor(1), Vector3(0, 0, 0));
    ExpectVec(mesh.GetVertexTexcoord(1), Vector3(0, 0, 0));
    mesh.InsertTriangle(0, 1, 1);
    mesh.SetTriangleTexcoord(0, 2, Vector3(0.5, 0.75, 0));
    ExpectVec(mesh.GetTriangleTexcoord(0, 2), Vector3(0.5, 0.75, 0));

    // Switching triangle colour on later fills three zero entries per existing triangle.
    mesh.SetHasTriangleColor(true);
    for (int k = 0; k < 3; ++k) ExpectVec(mesh.GetTriangleColor(0, k), Vector3());
    mesh.SetTriangleColor(0, 1, Vector3(0, 1, 0));
    EXPECT_EQ(mesh.InsertTriangle(1, 0, 0), 1);
    ExpectVec(mesh.GetTriangleColor(0, 1), Vector3(0, 1, 0));
    ExpectVec(mesh.GetTriangleColor(1, 1), Vector3());

    // Switching off keeps the values; vertices added meanwhile get zero entries on return.
    mesh.SetHasVertexColor(false);
    mesh.InsertVertex(Vector3(3, 3, 3));
    mesh.SetHasVertexColor(true);
    ExpectVec(mesh.GetVertexColor(0), Vector3(1, 0.5, 0.25));
    ExpectVec(mesh.GetVertexColor(2), Vector3());

    // Clear keeps the flags; rebuilt vertices start black.
    mesh.Clear();
    EXPECT_EQ(mesh.GetVertexCount(), 0);
    EXPECT_TRUE(mesh.HasVertexColor());
    mesh.InsertVertex(Vector3(4, 5, 6));
    ExpectVec(mesh.GetVertexColor(0), Vector3());
}

TEST(TriMesh, SwapAndPopMoveRecordsWithTheirAttributes) {
    TriMesh mesh = zoltest::MakeUnitCube();
    mesh.SetHasVertexColor(true);
    mesh.SetHasTriangleColor(true);
    for (int i = 0; i < 8; ++i) mesh.SetVertexColor(i, Vector3(i / 10.0, 0, 0));
    for (int t = 0; t < 12; ++t) {
        for (int k = 0; k < 3; ++k) mesh.SetTriangleColor(t, k, Vector3(t, k, 0));
    }
    const Vector3 normal7 = mesh.GetVertexNormal(7);
    mesh.SwapVertex(0, 7);
    mesh.SwapVertex(3, 3);
    mesh.SwapTriangles(5, 5);
    mesh.PopbackVertices(-4);
    ExpectVec(mesh.GetVertexCoord(0), Vector3(1, 1, 1));
    ExpectVec(mesh.GetVertexNormal(0), normal7);
    ExpectVec(mesh.GetVertexColor(0), Vector3(0.7, 0, 0));
    ExpectVec(mesh.GetVertexColor(7), Vector3(0, 0, 0));
    ExpectVec(mesh.GetVertexColor(3), Vector3(0.3, 0, 0));
    // Corners are not renumbered by the container.
    EXPECT_EQ(Corners(mesh, 0), (std::vector<int>{0, 2, 1}));

    mesh.SwapTriangles(0, 11);
    EXPECT_EQ(Corners(mesh, 0), (std::vector<int>{3, 7, 5}));
    ExpectVec(mesh.GetTriangleColor(0, 2), Vector3(11, 2, 0));
    ExpectVec(mesh.GetTriangleColor(11, 1), Vector3(0, 1, 0));

    mesh.PopbackVertices(2);
    mesh.PopbackTriangles(3);
    // Re-inserted elements get fresh (black) attributes, not the popped ones.
    EXPECT_EQ(mesh.InsertVertex(Vector3(5, 5, 5)), 6);
    ExpectVec(mesh.GetVertexColor(6), Vector3());
    ExpectVec(mesh.GetVertexNormal(6), Vector3());
    EXPECT_EQ(mesh.InsertTriangle(0, 1, 2), 9);
    ExpectVec(mesh.GetTriangleColor(9, 0), Vector3());
    ExpectVec(mesh.GetTriangleNormal(9), Vector3());

    // Popping more than there is empties the mesh; the mesh is reusable afterwards.
    mesh.PopbackTriangles(100);
    mesh.PopbackVertices(100);
    EXPECT_EQ(mesh.GetTriangleCount(), 0);
    EXPECT_EQ(mesh.InsertVertex(Vector3(1, 0, 0)), 0);
}

TEST(TriMesh, CopiesAreDeepAndCarryFlagsColourAndType) {
    TriMesh original = zoltest::MakeUnitCube();
    original.SetHasVertexColor(true);
    original.SetVertexColor(3, Vector3(0.1, 0.2, 0.3));
    original.SetDefaultColor(Vector3(1, 0, 0));
    original.SetMeshType(MESH_TYPE_SCAN);

    TriMesh copy(original);
    TriMesh assigned = zoltest::MakeSphere(8, 4, 1.0);
    assigned = original;
    TriMesh moveSource(original);
    TriMesh moved = zoltest::MakeSphere(6, 3, 1.0);
    moved = std::move(moveSource);
    for (TriMesh* mesh : {&copy, &assigned, &moved}) {
        EXPECT_EQ(mesh->GetVertexCount(), 8);
        ExpectVec(mesh->GetVertexColor(3), Vector3(0.1, 0.2, 0.3));
        ExpectVec(mesh->GetDefaultColor(), Vector3(1, 0, 0));
        EXPECT_EQ(mesh->GetMeshType(), MESH_TYPE_SCAN);
        for (int t = 0; t < 12; ++t) EXPECT_EQ(Corners(*mesh, t), Corners(original, t));
        mesh->SetVertexCoord(0, Vector3(9, 9, 9));
        mesh->SetTriangleVertexIds(0, 7, 7, 7);
        mesh->SetVertexColor(3, Vector3(1, 1, 1));
        mesh->Clear();
    }
    original = original;  // self-assignment keeps the data
    ExpectVec(original.GetVertexCoord(0), Vector3(0, 0, 0));
    EXPECT_EQ(Corners(original, 0), (std::vector<int>{0, 2, 1}));
    ExpectVec(original.GetVertexColor(3), Vector3(0.1, 0.2, 0.3));
    // The moved-from mesh stays usable.
    moveSource.Clear();
    EXPECT_EQ(moveSource.InsertVertex(Vector3(1, 2, 3)), 0);
}

TEST(TriMesh, UpdateNormalGivesOutwardNormalsOnClosedShapes) {
    TriMesh cube = zoltest::MakeUnitCube();
    // Corner normals are area-weighted over the corner's triangles, so they lean towards
    // the faces split at that corner but always point out of the corner's octant.
    for (int i = 0; i < 8; ++i) {
        const Vector3 corner = cube.GetVertexCoord(i);
        const Vector3 normal = cube.GetVertexNormal(i);
        EXPECT_NEAR(normal.Length(), 1.0, 1e-12);
        for (int k = 0; k < 3; ++k) EXPECT_GT(normal[k] * (corner[k] - 0.5), 0.0);
    }
    TriMesh sphere = zoltest::MakeSphere(24, 12, 2.0);
    for (int i = 0; i < sphere.GetVertexCount(); ++i) {
        EXPECT_GT(sphere.GetVertexCoord(i) * sphere.GetVertexNormal(i) / 2.0, 0.99);
    }
}

TEST(TriMesh, UpdateNormalRepairsFromTheLastValidCorner) {
    // A vertex on the cube edge 0-1 used only by a degenerate triangle takes the normal of
    // that triangle's last valid corner.
    struct Case {
        int corners[3];  // -1 marks the new vertex
        int donor;
    };
    const Case cases[] = {{{0, 1, -1}, 1}, {{1, 0, -1}, 0}, {{-1, 0, 1}, 1}, {{0, -1, 1}, 1}};
    for (const Case& c : cases) {
        TriMesh mesh = zoltest::MakeUnitCube();
        const int v = mesh.InsertVertex(Vector3(0.5, 0, 0));
        int ids[3];
        for (int k = 0; k < 3; ++k) ids[k] = c.corners[k] < 0 ? v : c.corners[k];
        mesh.InsertTriangle(ids[0], ids[1], ids[2]);
        mesh.UpdateNormal();
        ExpectVec(mesh.GetVertexNormal(v), mesh.GetVertexNormal(c.donor));
        ExpectVec(mesh.GetTriangleNormal(12), Vector3());
    }
}

TEST(TriMesh, UpdateNormalRepairsAcrossSeveralPassesAndSkipsBrokenTriangles) {
    TriMesh mesh = zoltest::MakeUnitCube();
    const TriMesh reference(mesh);
    // The first degenerate triangle has no valid corner until a later triangle repairs u1.
    const int u1 = mesh.InsertVertex(Vector3(-1, 0, 0));
    const int u2 = mesh.InsertVertex(Vector3(-2, 0, 0));
    const int u3 = mesh.InsertVertex(Vector3(-3, 0, 0));
    mesh.InsertTriangle(u2, u1, u3);
    mesh.InsertTriangle(0, 1, u1);
    // A component made only of degenerate triangles keeps zero normals, as does an
    // isolated vertex whatever normal it was given.
    const int w0 = mesh.InsertVertex(Vector3(7, 0, 0));
    const int w1 = mesh.InsertVertex(Vector3(8, 0, 0));
    const int w2 = mesh.InsertVertex(Vector3(9, 0, 0));
    mesh.InsertTriangle(w0, w1, w2);
    const int isolated = mesh.InsertVertex(Vector3(5, 5, 5), Vector3(1, 0, 0));
    // Triangles naming a missing vertex are skipped.
    mesh.InsertTriangle(0, 99, 1);
    mesh.InsertTriangle(-1, 2, 3);
    mesh.UpdateNormal();
    const Vector3 donor = mesh.GetVertexNormal(1);
    for (int u : {u1, u2, u3}) ExpectVec(mesh.GetVertexNormal(u), donor);
    for (int w : {w0, w1, w2, isolated}) ExpectVec(mesh.GetVertexNormal(w), Vector3());
    for (int v = 0; v < 8; ++v) ExpectVec(mesh.GetVertexNormal(v), reference.GetVertexNormalRef(v));
    ExpectVec(mesh.GetTriangleNormal(15), Vector3());
    ExpectVec(mesh.GetTriangleNormal(16), Vector3());
}

TEST(TriMesh, UpdateNormalRepairsVertexWhereOppositeTrianglesCancel) {
    TriMesh mesh;
    for (const Vector3& p : {Vector3(0, 0, 0), Vector3(1, 0, 0), Vector3(1, 1, 0), Vector3(0, 1, 0),
                             Vector3(0.5, -1, 0)}) {
        mesh.InsertVertex(p);
    }
    mesh.InsertTriangle(0, 1, 2);
    mesh.InsertTriangle(0, 2, 3);
    mesh.InsertTriangle(4, 1, 0);
    mesh.InsertTriangle(4, 0, 1);
    mesh.UpdateNormal();
    ExpectVec(mesh.GetVertexNormal(4), Vector3(0, 0, 1));
    ExpectVec(mesh.GetTriangleNormal(2), Vector3(0, 0, 1));
    ExpectVec(mesh.GetTriangleNormal(3), Vector3(0, 0, -1));
}

TEST(TriMesh, UnifyCoordsCentresAndScalesTheBoundingBox) {
    TriMesh mesh = zoltest::MakeUnitCube();
    mesh.SetVertexCoord(7, Vector3(1, 3, 1));  // box [0,1] x [0,3] x [0,1]
    TriMesh other(mesh);
    double scale = 0;
    Vector3 center;
    mesh.UnifyCoords(1.5, &scale, &center);
    EXPECT_DOUBLE_EQ(scale, 1.0);
    ExpectVec(center, Vector3(0.5, 1.5, 0.5));
    ExpectVec(mesh.GetVertexCoord(7), Vector3(0.5, 1.5, 0.5));
    ExpectVec(mesh.GetVertexCoord(0), Vector3(-0.5, -1.5, -0.5));

    other.UnifyCoords(scale, center);
    for (int i = 0; i < 8; ++i) ExpectVec(other.GetVertexCoord(i), mesh.GetVertexCoord(i));
    mesh.UnifyCoords(3.0, nullptr, nullptr);
    ExpectVec(mesh.GetVertexCoord(7), Vector3(1, 3, 1));

    TriMesh point;
    point.InsertVertex(Vector3(2, 2, 2));
    point.UnifyCoords(1.0, &scale, &center);
    EXPECT_DOUBLE_EQ(scale, 1.0);
    ExpectVec(point.GetVertexCoord(0), Vector3());
}

TEST(TriMesh, FuseVertexWeldsACubeSoup) {
    TriMesh soup = zoltest::MakeUnitCubeSoup();
    EXPECT_EQ(soup.FuseVertex(), 0);
    EXPECT_EQ(soup.GetVertexCount(), 8);
    EXPECT_EQ(soup.GetTriangleCount(), 12);
    // Survivors are the first occurrences in their original order: triangle 0 is 0, 2, 1.
    EXPECT_EQ(Corners(soup, 0), (std::vector<int>{0, 1, 2}));
    // The welded mesh stays editable.
    EXPECT_EQ(soup.InsertVertex(Vector3(2, 2, 2)), 8);
    EXPECT_EQ(soup.InsertTriangle(7, 8, 6), 12);
    EXPECT_EQ(Corners(soup, 12), (std::vector<int>{7, 8, 6}));
}

TEST(TriMesh, FuseVertexDropsTrianglesThatCollapseAndKeepsAttributes) {
    TriMesh mesh(true, false, false);
    mesh.SetHasTriangleColor(true);
    const Vector3 points[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 0, 0}, {-0.0, 0, 0},
                              {0, 1, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, 0}};
    for (const Vector3& p : points) {
        mesh.SetVertexColor(mesh.InsertVertex(p), Vector3(p.x, p.y, 0.5));
    }
    mesh.InsertTriangle(0, 1, 2);
    mesh.InsertTriangle(3, 4, 8);  // (1,0,0), (0,0,0), (1,0,0): collapses
    mesh.InsertTriangle(8, 6, 7);
    for (int t = 0; t < 3; ++t) {
        for (int k = 0; k < 3; ++k) mesh.SetTriangleColor(t, k, Vector3(t, k, 1));
    }
    EXPECT_EQ(mesh.FuseVertex(), 0);
    EXPECT_EQ(mesh.GetVertexCount(), 4);
    ASSERT_EQ(mesh.GetTriangleCount(), 2);
    EXPECT_EQ(Corners(mesh, 0), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(Corners(mesh, 1), (std::vector<int>{1, 3, 2}));
    for (int i = 0; i < 4; ++i) {
        const Vector3 p = mesh.GetVertexCoord(i);
        ExpectVec(mesh.GetVertexColor(i), Vector3(p.x, p.y, 0.5));
    }
    for (int k = 0; k < 3; ++k) ExpectVec(mesh.GetTriangleColor(1, k), Vector3(2, k, 1));
}

TEST(TriMesh, FuseVertexRefusesBadMeshesAndChangesNothing) {
    TriMesh pair;
    pair.InsertVertex(Vector3(0, 0, 0));
    pair.InsertVertex(Vector3(0, 0, 0));
    TriMesh past = zoltest::MakeUnitCubeSoup();
    past.SetTriangleVertexIds(4, 12, 36, 14);
    TriMesh negative = zoltest::MakeUnitCubeSoup();
    negative.SetTriangleVertexIds(4, 12, -1, 14);
    const struct {
        TriMesh* mesh;
        const char* line;
    } cases[] = {{&pair, "TriMesh::FuseVertex: vertexCount < 3"},
                 {&past, "TriMesh::FuseVertex: invalid vertex id 36 in triangle 4"},
                 {&negative, "TriMesh::FuseVertex: invalid vertex id -1 in triangle 4"}};
    for (const auto& c : cases) {
        const TriMesh before(*c.mesh);
        zoltest::LogCapture log;
        EXPECT_EQ(c.mesh->FuseVertex(), -2);
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
        EXPECT_EQ(c.mesh->GetVertexCount(), before.GetVertexCount());
        ASSERT_EQ(c.mesh->GetTriangleCount(), before.GetTriangleCount());
        for (int t = 0; t < before.GetTriangleCount(); ++t) {
            EXPECT_EQ(Corners(*c.mesh, t), Corners(before, t));
        }
    }
}

TEST(TriMesh, FuseVertexKeepsEveryVertexWithANaNCoordinate) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    TriMesh mesh;
    // 0 and 3 weld; 1, 2, 4, 5 carry a NaN (bit-identical pairs included) and all stay.
    for (const Vector3& p : {Vector3(0, 0, 0), Vector3(nan, 0, 0), Vector3(1, nan, 0),
                             Vector3(0, 0, 0), Vector3(nan, 0, 0), Vector3(1, nan, 0)}) {
        mesh.InsertVertex(p);
    }
    mesh.InsertTriangle(0, 1, 2);
    mesh.InsertTriangle(3, 4, 5);
    EXPECT_EQ(mesh.FuseVertex(), 0);
    EXPECT_EQ(mesh.GetVertexCount(), 5);
    EXPECT_EQ(Corners(mesh, 0), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(Corners(mesh, 1), (std::vector<int>{0, 3, 4}));
    EXPECT_TRUE(std::isnan(mesh.GetVertexCoord(3).x));
}

TEST(TriMesh, FuseVertexOfALargeSoupMatchesABruteForceWeld) {
    // A grid soup big enough to span many record chunks: every interior grid point is
    // shared by six triangles and must come out once, with -0 and +0 treated alike.
    const TriMesh grid = zoltest::MakeGrid(40, 30, 0.25);
    TriMesh soup;
    for (int t = 0; t < grid.GetTriangleCount(); ++t) {
        const int* ids = grid.GetTriangleVertexIdsRef(t);
        int corner[3];
        for (int k = 0; k < 3; ++k) {
            Vector3 p = grid.GetVertexCoordRef(ids[k]);
            if (t % 2 == 1 && p.x == 0) p.x = -0.0;
            corner[k] = soup.InsertVertex(p);
        }
        soup.InsertTriangle(corner[0], corner[1], corner[2]);
    }
    ASSERT_EQ(soup.FuseVertex(), 0);
    ASSERT_EQ(soup.GetVertexCount(), grid.GetVertexCount());
    ASSERT_EQ(soup.GetTriangleCount(), grid.GetTriangleCount());
    for (int t = 0; t < grid.GetTriangleCount(); ++t) {
        for (int k = 0; k < 3; ++k) {
            const Vector3& a = soup.GetVertexCoordRef(soup.GetTriangleVertexIdsRef(t)[k]);
            const Vector3& b = grid.GetVertexCoordRef(grid.GetTriangleVertexIdsRef(t)[k]);
            ASSERT_TRUE(a.x == b.x && a.y == b.y && a.z == b.z) << t << " " << k;
        }
    }
}

TEST(RecordPool, RecordsStayDistinctAcrossGrowingChunksAndFreedOnesAreReused) {
    RecordPool<Vector3> pool;
    std::vector<Vector3*> records;
    for (int i = 0; i < 10000; ++i) {
        records.push_back(pool.Allocate());
        EXPECT_EQ(records.back()->x, 0.0);  // fresh slots start value-initialised
        records.back()->x = i;
    }
    for (int i = 0; i < 10000; ++i) ASSERT_EQ(records[i]->x, i);
    pool.Free(records[17]);
    pool.Free(records[4000]);
    EXPECT_EQ(pool.Allocate(), records[4000]);
    EXPECT_EQ(pool.Allocate(), records[17]);
    pool.Release();
    EXPECT_EQ(pool.Allocate()->x, 0.0);
}
