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

TEST(TriMeshInfo, EdgeRecordsMatchABruteForceScan) {
    // The last mesh has an edge (0, 1) of three triangles and a triangle with a collapsed
    // side 2-2, which makes no edge, so its other two sides share one edge.
    const TriMesh fan = zoltest::MakeMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}},
                                          {{0, 1, 2}, {1, 0, 3}, {4, 1, 0}, {2, 2, 4}});
    for (const TriMesh& mesh : {zoltest::MakeSphere(9, 5, 1.0), zoltest::MakeGrid(5, 3),
                                zoltest::MakeUnitCubeSoup(), fan}) {
        TriMeshInfo info;
        ASSERT_EQ(info.CacheDataForEdgeInfos(&mesh), RESULT_OK);
        EXPECT_TRUE(info.HasEdgeInfos());
        EXPECT_EQ(info.GetCachedVertexCount(), mesh.GetVertexCount());
        EXPECT_EQ(info.GetCachedTriangleCount(), mesh.GetTriangleCount());
        std::map<std::pair<int, int>, std::vector<int>> expected;
        for (int t = 0; t < mesh.GetTriangleCount(); ++t) {
            const int* ids = mesh.GetTriangleVertexIdsRef(t);
            for (int k = 0; k < 3; ++k) {
                if (ids[k] != ids[(k + 1) % 3])
                    expected[std::minmax(ids[k], ids[(k + 1) % 3])].push_back(t);
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
            const int* ids = mesh.GetTriangleVertexIdsRef(t);
            for (int k = 0; k < 3; ++k) {
                const int edge = info.GetTriangleEdgeId(t, k);
                if (ids[k] == ids[(k + 1) % 3]) {
                    EXPECT_EQ(edge, -1);
                    continue;
                }
                const int* ends = info.GetEdgeVertexIds(edge);
                EXPECT_EQ(std::minmax(ids[k], ids[(k + 1) % 3]), std::minmax(ends[0], ends[1]));
            }
        }
        for (int a = 0; a < mesh.GetVertexCount(); ++a) {
            for (int b = a; b <= mesh.GetVertexCount(); ++b) {
                if (!expected.count({a, b})) {
                    EXPECT_EQ(info.FindEdge(b, a), -1) << a << " " << b;
                }
            }
        }
    }
}

TEST(TriMeshInfo, RejectsMissingOrBrokenMeshesAndLeavesTheCacheEmpty) {
    TriMesh cube = zoltest::MakeUnitCube();
    TriMesh noTriangles = zoltest::MakeMesh({{0, 0, 0}}, {});
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
        ASSERT_EQ(info.CacheDataForEdgeInfos(&cube), RESULT_OK);
        EXPECT_EQ(info.CacheDataForEdgeInfos(c.mesh), RESULT_INVALID_INPUT);
        EXPECT_FALSE(info.HasEdgeInfos());
        EXPECT_EQ(info.GetEdgeCount(), 0);
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
    }
}
