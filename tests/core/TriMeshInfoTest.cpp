// TriMeshInfo edge records: counts on closed, open and non-manifold meshes, agreement
// with a brute-force scan, and the failures.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include <zol/core/TriMesh.h>
#include <zol/core/TriMeshInfo.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

TEST(TriMeshInfo, ClosedCubeHasEighteenEdgesOfTwoTriangles) {
    TriMesh cube = zoltest::MakeUnitCube();
    TriMeshInfo info;
    ASSERT_EQ(info.CacheDataForEdgeInfos(&cube), 0);
    EXPECT_TRUE(info.HasEdgeInfos());
    EXPECT_EQ(info.GetCachedVertexCount(), 8);
    EXPECT_EQ(info.GetCachedTriangleCount(), 12);
    ASSERT_EQ(info.GetEdgeCount(), 18);
    for (int e = 0; e < 18; ++e) EXPECT_EQ(info.GetEdgeTriangleCount(e), 2);
}

TEST(TriMeshInfo, NonManifoldEdgeListsAllThreeTriangles) {
    TriMesh mesh;
    for (const Vector3& p : {Vector3(0, 0, 0), Vector3(1, 0, 0), Vector3(0, 1, 0),
                             Vector3(0, -1, 0), Vector3(0, 0, 1)}) {
        mesh.InsertVertex(p);
    }
    mesh.InsertTriangle(0, 1, 2);
    mesh.InsertTriangle(1, 0, 3);
    mesh.InsertTriangle(4, 1, 0);
    mesh.InsertTriangle(2, 2, 4);  // collapsed side 2-2 makes no edge
    TriMeshInfo info;
    ASSERT_EQ(info.CacheDataForEdgeInfos(&mesh), 0);
    const int edge = info.FindEdge(1, 0);
    ASSERT_EQ(edge, 0);
    EXPECT_EQ(info.GetEdgeTriangles(edge), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(info.GetEdgeVertexIds(edge)[0], 0);
    EXPECT_EQ(info.GetEdgeVertexIds(edge)[1], 1);
    EXPECT_EQ(info.GetTriangleEdgeId(3, 0), -1);
    const int e24 = info.FindEdge(2, 4);
    ASSERT_GE(e24, 0);
    EXPECT_EQ(info.GetTriangleEdgeId(3, 1), e24);
    EXPECT_EQ(info.GetTriangleEdgeId(3, 2), e24);
    EXPECT_EQ(info.GetEdgeTriangles(e24), (std::vector<int>{3, 3}));
    EXPECT_EQ(info.FindEdge(2, 3), -1);
    EXPECT_EQ(info.FindEdge(9, 9), -1);
}

TEST(TriMeshInfo, EdgeRecordsMatchABruteForceScan) {
    for (const TriMesh& mesh : {zoltest::MakeSphere(9, 5, 1.0), zoltest::MakeCylinder(7, 3, 1, 2),
                                zoltest::MakeUnitCubeSoup()}) {
        TriMeshInfo info;
        ASSERT_EQ(info.CacheDataForEdgeInfos(&mesh), 0);
        std::map<std::pair<int, int>, std::vector<int>> expected;
        for (int t = 0; t < mesh.GetTriangleCount(); ++t) {
            const int* ids = mesh.GetTriangleVertexIdsRef(t);
            for (int k = 0; k < 3; ++k) {
                const int a = ids[k];
                const int b = ids[(k + 1) % 3];
                expected[{std::min(a, b), std::max(a, b)}].push_back(t);
            }
        }
        ASSERT_EQ(info.GetEdgeCount(), static_cast<int>(expected.size()));
        int e = 0;
        for (const auto& [vertices, triangles] : expected) {  // std::map order = edge order
            EXPECT_EQ(info.GetEdgeVertexIds(e)[0], vertices.first);
            EXPECT_EQ(info.GetEdgeVertexIds(e)[1], vertices.second);
            EXPECT_EQ(info.GetEdgeTriangles(e), triangles);
            EXPECT_EQ(info.FindEdge(vertices.second, vertices.first), e);
            ++e;
        }
        for (int t = 0; t < mesh.GetTriangleCount(); ++t) {
            for (int k = 0; k < 3; ++k) {
                const int* edge = info.GetEdgeVertexIds(info.GetTriangleEdgeId(t, k));
                const int* ids = mesh.GetTriangleVertexIdsRef(t);
                EXPECT_EQ(std::minmax(ids[k], ids[(k + 1) % 3]), std::minmax(edge[0], edge[1]));
            }
        }
    }
}

TEST(TriMeshInfo, RejectsMissingOrBrokenMeshesAndLeavesTheCacheEmpty) {
    TriMesh cube = zoltest::MakeUnitCube();
    TriMesh noTriangles;
    noTriangles.InsertVertex(Vector3());
    TriMesh badIndex = zoltest::MakeUnitCube();
    badIndex.SetTriangleVertexIds(5, 0, 8, 1);
    const struct {
        const ITriMesh* mesh;
        const char* line;
    } cases[] = {
        {nullptr, "TriMeshInfo::CacheDataForEdgeInfos: triMesh == NULL"},
        {&noTriangles, "TriMeshInfo::CacheDataForEdgeInfos: triangleCount < 1"},
        {&badIndex, "TriMeshInfo::CacheDataForEdgeInfos: invalid vertex id 8 in triangle 5"},
    };
    for (const auto& c : cases) {
        zoltest::LogCapture log;
        TriMeshInfo info;
        ASSERT_EQ(info.CacheDataForEdgeInfos(&cube), 0);
        EXPECT_EQ(info.CacheDataForEdgeInfos(c.mesh), -2);
        EXPECT_FALSE(info.HasEdgeInfos());
        EXPECT_EQ(info.GetEdgeCount(), 0);
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
    }
}
