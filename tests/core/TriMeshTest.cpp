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
using zoltest::Corners;
using Ids = std::vector<int>;

TEST(TriMesh, BuildsATriangleAndComputesItsNormal) {
    TriMesh mesh = zoltest::MakeMesh({{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}, {{0, 1, 2}});
    EXPECT_EQ(mesh.GetTriangleNormal(0), Vector3());
    mesh.UpdateNormal();
    EXPECT_EQ(mesh.GetTriangleNormal(0), Vector3(0, 0, 1));
    EXPECT_EQ(mesh.GetVertexNormal(2), Vector3(0, 0, 1));
    EXPECT_EQ(mesh.GetDefaultColor(), Vector3(0.86, 0.86, 0.86));
    EXPECT_EQ(mesh.GetMeshType(), MESH_TYPE_UNKNOWN);
}

TEST(TriMesh, RecordsMoveWithTheirAttributesAndCopiesAreDeep) {
    TriMesh mesh = zoltest::MakeUnitCube();
    mesh.SetHasVertexColor(true);
    mesh.SetHasTriangleColor(true);  // switched on late: three zero entries per triangle
    EXPECT_EQ(mesh.GetTriangleColor(11, 2), Vector3());
    for (int i = 0; i < 8; ++i) mesh.SetVertexColor(i, Vector3(i / 10.0, 0, 0));
    for (int t = 0; t < 12; ++t) mesh.SetTriangleColor(t, 2, Vector3(t, 0, 0));
    mesh.SetDefaultColor(Vector3(1, 0, 0));
    mesh.SetMeshType(MESH_TYPE_SCAN);
    const Vector3 normal7 = mesh.GetVertexNormal(7);
    TriMesh copy(mesh), assigned = zoltest::MakeSphere(8, 4, 1.0), moved(mesh);
    assigned = mesh;
    TriMesh target = zoltest::MakeSphere(6, 3, 1.0);
    target = std::move(moved);
    moved.Clear();  // the moved-from mesh stays usable
    EXPECT_EQ(moved.InsertVertex(Vector3(1, 2, 3)), 0);
    assigned = assigned;  // self-assignment keeps the data
    // Swaps move every attribute with the record; corners are not renumbered.
    mesh.SwapVertex(0, 7);
    mesh.SwapVertex(3, 3);
    mesh.SwapTriangles(0, 11);
    mesh.PopbackVertices(-4);
    EXPECT_EQ(mesh.GetVertexCoord(0), Vector3(1, 1, 1));
    EXPECT_EQ(mesh.GetVertexNormal(0), normal7);
    EXPECT_EQ(mesh.GetVertexColor(0), Vector3(0.7, 0, 0));
    EXPECT_EQ(mesh.GetVertexColor(3), Vector3(0.3, 0, 0));
    EXPECT_EQ(Corners(mesh, 0), (Ids{3, 7, 5}));
    EXPECT_EQ(Corners(mesh, 11), (Ids{0, 2, 1}));
    EXPECT_EQ(mesh.GetTriangleColor(0, 2), Vector3(11, 0, 0));
    // Re-inserted records get fresh (black) attributes, not the popped ones.
    mesh.PopbackVertices(2);
    mesh.PopbackTriangles(3);
    EXPECT_EQ(mesh.InsertVertex(Vector3(5, 5, 5)), 6);
    EXPECT_EQ(mesh.GetVertexColor(6), Vector3());
    EXPECT_EQ(mesh.GetVertexNormal(6), Vector3());
    EXPECT_EQ(mesh.InsertTriangle(0, 1, 2), 9);
    EXPECT_EQ(mesh.GetTriangleColor(9, 2), Vector3());
    EXPECT_EQ(mesh.GetTriangleNormal(9), Vector3());
    // Switched off, colours are kept; vertices added meanwhile get zero entries on return.
    mesh.SetHasVertexColor(false);
    mesh.InsertVertex(Vector3(3, 3, 3));
    mesh.SetHasVertexColor(true);
    EXPECT_EQ(mesh.GetVertexColor(1), Vector3(0.1, 0, 0));
    EXPECT_EQ(mesh.GetVertexColor(7), Vector3());
    // Popping more than there is empties the mesh; Clear keeps the flags.
    mesh.PopbackTriangles(100);
    mesh.PopbackVertices(100);
    EXPECT_EQ(mesh.GetTriangleCount(), 0);
    mesh.Clear();
    EXPECT_TRUE(mesh.HasVertexColor());
    EXPECT_EQ(mesh.InsertVertex(Vector3(1, 0, 0)), 0);
    // The copies kept everything.
    for (TriMesh* c : {&copy, &assigned, &target}) {
        EXPECT_EQ(c->GetVertexCoord(0), Vector3());
        EXPECT_EQ(c->GetVertexColor(7), Vector3(0.7, 0, 0));
        EXPECT_EQ(c->GetTriangleColor(11, 2), Vector3(11, 0, 0));
        EXPECT_EQ(Corners(*c, 0), (Ids{0, 2, 1}));
        EXPECT_EQ(c->GetDefaultColor(), Vector3(1, 0, 0));
        EXPECT_EQ(c->GetMeshType(), MESH_TYPE_SCAN);
    }
}

TEST(TriMesh, UpdateNormalGivesOutwardNormalsOnClosedShapes) {
    // Corner normals are area-weighted, so they lean towards the faces split at that
    // corner but always point out of the corner's octant.
    TriMesh cube = zoltest::MakeUnitCube();
    for (int i = 0; i < 8; ++i) {
        const Vector3 corner = cube.GetVertexCoord(i), normal = cube.GetVertexNormal(i);
        EXPECT_NEAR(normal.Length(), 1.0, 1e-12);
        for (int k = 0; k < 3; ++k) EXPECT_GT(normal[k] * (corner[k] - 0.5), 0.0);
    }
    TriMesh sphere = zoltest::MakeSphere(24, 12, 2.0);
    for (int i = 0; i < sphere.GetVertexCount(); ++i) {
        EXPECT_GT(sphere.GetVertexCoord(i) * sphere.GetVertexNormal(i) / 2.0, 0.99);
    }
}

TEST(TriMesh, UpdateNormalRepairsFromTheLastValidCornerOverSeveralPasses) {
    TriMesh mesh = zoltest::MakeUnitCube();
    const TriMesh reference(mesh);
    // A vertex on the edge 0-1 used only by a degenerate triangle takes the normal of
    // that triangle's last valid corner.
    const struct {
        int corners[3];  // -1 marks the new vertex
        int donor;
    } cases[] = {{{0, 1, -1}, 1}, {{1, 0, -1}, 0}, {{-1, 0, 1}, 1}, {{0, -1, 1}, 1}};
    Ids onEdge;
    for (const auto& c : cases) {
        onEdge.push_back(mesh.InsertVertex(Vector3(0.5, 0, 0)));
        int ids[3];
        for (int k = 0; k < 3; ++k) ids[k] = c.corners[k] < 0 ? onEdge.back() : c.corners[k];
        mesh.InsertTriangle(ids[0], ids[1], ids[2]);
    }
    // This degenerate triangle has no valid corner until a later triangle repairs u1.
    const int u1 = mesh.InsertVertex(Vector3(-1, 0, 0));
    const int u2 = mesh.InsertVertex(Vector3(-2, 0, 0));
    const int u3 = mesh.InsertVertex(Vector3(-3, 0, 0));
    mesh.InsertTriangle(u2, u1, u3);
    mesh.InsertTriangle(0, 1, u1);
    // A component of degenerate triangles keeps zero normals, as does an isolated vertex
    // whatever normal it was given; triangles naming a missing vertex are skipped.
    const int w0 = mesh.InsertVertex(Vector3(7, 0, 0));
    mesh.InsertVertex(Vector3(8, 0, 0));
    mesh.InsertVertex(Vector3(9, 0, 0));
    mesh.InsertTriangle(w0, w0 + 1, w0 + 2);
    const int isolated = mesh.InsertVertex(Vector3(5, 5, 5), Vector3(1, 0, 0));
    mesh.InsertTriangle(0, 99, 1);
    mesh.InsertTriangle(-1, 2, 3);
    mesh.UpdateNormal();
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(mesh.GetVertexNormal(onEdge[i]), mesh.GetVertexNormal(cases[i].donor)) << i;
        EXPECT_EQ(mesh.GetTriangleNormal(12 + i), Vector3());
    }
    for (int u : {u1, u2, u3}) EXPECT_EQ(mesh.GetVertexNormal(u), mesh.GetVertexNormal(1));
    for (int w : {w0, w0 + 1, w0 + 2, isolated}) EXPECT_EQ(mesh.GetVertexNormal(w), Vector3());
    for (int v = 0; v < 8; ++v) EXPECT_EQ(mesh.GetVertexNormal(v), reference.GetVertexNormalRef(v));
    EXPECT_EQ(mesh.GetTriangleNormal(19), Vector3());
    EXPECT_EQ(mesh.GetTriangleNormal(20), Vector3());

    // Where a vertex's two triangles are opposite, their normals cancel: it takes a corner's.
    TriMesh fold = zoltest::MakeMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5, -1, 0}},
                                     {{0, 1, 2}, {0, 2, 3}, {4, 1, 0}, {4, 0, 1}});
    fold.UpdateNormal();
    EXPECT_EQ(fold.GetVertexNormal(4), Vector3(0, 0, 1));
    EXPECT_EQ(fold.GetTriangleNormal(2), Vector3(0, 0, 1));
    EXPECT_EQ(fold.GetTriangleNormal(3), Vector3(0, 0, -1));
}

TEST(TriMesh, UnifyCoordsCentresAndScalesTheBoundingBox) {
    TriMesh mesh = zoltest::MakeUnitCube();
    mesh.SetVertexCoord(7, Vector3(1, 3, 1));  // box [0,1] x [0,3] x [0,1]
    TriMesh other(mesh);
    double scale = 0;
    Vector3 center;
    mesh.UnifyCoords(1.5, &scale, &center);
    EXPECT_DOUBLE_EQ(scale, 1.0);
    EXPECT_EQ(center, Vector3(0.5, 1.5, 0.5));
    EXPECT_EQ(mesh.GetVertexCoord(7), Vector3(0.5, 1.5, 0.5));
    EXPECT_EQ(mesh.GetVertexCoord(0), Vector3(-0.5, -1.5, -0.5));
    other.UnifyCoords(scale, center);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(other.GetVertexCoord(i), mesh.GetVertexCoord(i));
    mesh.UnifyCoords(3.0, nullptr, nullptr);
    EXPECT_EQ(mesh.GetVertexCoord(7), Vector3(1, 3, 1));
    TriMesh point;
    point.InsertVertex(Vector3(2, 2, 2));
    point.UnifyCoords(1.0, &scale, &center);
    EXPECT_DOUBLE_EQ(scale, 1.0);
    EXPECT_EQ(point.GetVertexCoord(0), Vector3());
}

TEST(TriMesh, FuseVertexDropsCollapsedTrianglesKeepsAttributesAndEveryNaNVertex) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // (-0, 0, 0) welds with (0, 0, 0); triangle 1 collapses; 9 and 10 carry a NaN and stay
    // apart, also from their bit-identical twins 11 and 12.
    TriMesh mesh = zoltest::MakeMesh({{0, 0, 0},
                                      {1, 0, 0},
                                      {0, 1, 0},
                                      {1, 0, 0},
                                      {-0.0, 0, 0},
                                      {0, 1, 0},
                                      {1, 1, 0},
                                      {0, 1, 0},
                                      {1, 0, 0},
                                      {nan, 0, 0},
                                      {1, nan, 0},
                                      {nan, 0, 0},
                                      {1, nan, 0}},
                                     {{0, 1, 2}, {3, 4, 8}, {8, 6, 7}, {0, 9, 10}, {3, 11, 12}});
    mesh.SetHasVertexColor(true);
    mesh.SetHasTriangleColor(true);
    for (int i = 0; i < 13; ++i) mesh.SetVertexColor(i, Vector3(i, 0, 0.5));
    for (int t = 0; t < 5; ++t) {
        for (int k = 0; k < 3; ++k) mesh.SetTriangleColor(t, k, Vector3(t, k, 1));
    }
    EXPECT_EQ(mesh.FuseVertex(), RESULT_OK);
    EXPECT_EQ(mesh.GetVertexCount(), 8);
    ASSERT_EQ(mesh.GetTriangleCount(), 4);
    const Ids expected[] = {{0, 1, 2}, {1, 3, 2}, {0, 4, 5}, {1, 6, 7}};
    for (int t = 0; t < 4; ++t) EXPECT_EQ(Corners(mesh, t), expected[t]);
    const int survivors[] = {0, 1, 2, 6, 9, 10, 11, 12};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(mesh.GetVertexColor(i).x, survivors[i]);
    EXPECT_TRUE(std::isnan(mesh.GetVertexCoord(6).x));
    for (int k = 0; k < 3; ++k) EXPECT_EQ(mesh.GetTriangleColor(1, k), Vector3(2, k, 1));
}

TEST(TriMesh, FuseVertexRefusesBadMeshesAndChangesNothing) {
    TriMesh pair = zoltest::MakeMesh({{0, 0, 0}, {0, 0, 0}}, {});
    TriMesh past = zoltest::MakeUnitCubeSoup(), negative = zoltest::MakeUnitCubeSoup();
    past.SetTriangleVertexIds(4, 12, 36, 14);
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
        EXPECT_EQ(c.mesh->FuseVertex(), RESULT_INVALID_INPUT);
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
        EXPECT_EQ(c.mesh->GetVertexCount(), before.GetVertexCount());
        ASSERT_EQ(c.mesh->GetTriangleCount(), before.GetTriangleCount());
        for (int t = 0; t < before.GetTriangleCount(); ++t) {
            EXPECT_EQ(Corners(*c.mesh, t), Corners(before, t));
        }
    }
}

TEST(TriMesh, FuseVertexOfALargeSoupMatchesTheGridItCameFromInFirstOccurrenceOrder) {
    // Big enough to span many record chunks: every interior grid point is shared by six
    // triangles and must come out once, with -0 and +0 treated alike, numbered in the
    // order of first use.
    const TriMesh grid = zoltest::MakeGrid(40, 30, 0.25);
    TriMesh soup;
    for (int t = 0; t < grid.GetTriangleCount(); ++t) {
        int corner[3];
        for (int k = 0; k < 3; ++k) {
            Vector3 p = grid.GetVertexCoordRef(grid.GetTriangleVertexIdsRef(t)[k]);
            if (t % 2 == 1 && p.x == 0) p.x = -0.0;
            corner[k] = soup.InsertVertex(p);
        }
        soup.InsertTriangle(corner[0], corner[1], corner[2]);
    }
    ASSERT_EQ(soup.FuseVertex(), RESULT_OK);
    ASSERT_EQ(soup.GetVertexCount(), grid.GetVertexCount());
    ASSERT_EQ(soup.GetTriangleCount(), grid.GetTriangleCount());
    for (int t = 0; t < grid.GetTriangleCount(); ++t) {
        for (int k = 0; k < 3; ++k) {
            const Vector3& a = soup.GetVertexCoordRef(soup.GetTriangleVertexIdsRef(t)[k]);
            const Vector3& b = grid.GetVertexCoordRef(grid.GetTriangleVertexIdsRef(t)[k]);
            ASSERT_TRUE(a.x == b.x && a.y == b.y && a.z == b.z) << t << " " << k;
        }
    }
    EXPECT_EQ(Corners(soup, 0), (Ids{0, 1, 2}));
    EXPECT_EQ(Corners(soup, 1), (Ids{0, 2, 3}));
    // The welded mesh stays editable.
    EXPECT_EQ(soup.InsertVertex(Vector3(2, 2, 2)), grid.GetVertexCount());
    EXPECT_EQ(soup.InsertTriangle(7, 8, 6), grid.GetTriangleCount());
    EXPECT_EQ(Corners(soup, grid.GetTriangleCount()), (Ids{7, 8, 6}));
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
