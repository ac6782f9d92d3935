// Tangent-face selection: smooth surfaces taken whole, creases and non-manifold edges
// stopping the growth, breadth-first order, and every argument failure with its line.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <set>

#include <zol/core/TriMeshInfo.h>
#include <zol/io/Parser.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/shape/DetectShape.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/MeshHelpers.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

const double kDegree = 3.14159265358979323846 / 180.0;

std::set<int> AsSet(const std::vector<int>& ids) { return std::set<int>(ids.begin(), ids.end()); }

}  // namespace

TEST(DetectShapeTangentFace, CubeFaceIsSelectedFromItsFirstTriangle) {
    TriMesh cube = zoltest::MakeUnitCube();
    std::vector<int> selected;
    ASSERT_EQ(DetectShape::SelectTangentFace(&cube, 0, 10 * kDegree, &selected), RESULT_OK);
    EXPECT_EQ(selected, (std::vector<int>{0, 1}));
}

TEST(DetectShapeTangentFace, SelectionOrderIsBreadthFirst) {
    TriMesh sphere = zoltest::MakeSphere(16, 8, 1.0);
    TriMeshInfo info;
    std::vector<int> selected;
    ASSERT_EQ(DetectShape::_SelectTangentFace(&sphere, info, 40, 3.2, &selected), RESULT_OK);
    ASSERT_EQ(selected.size(), size_t(sphere.GetTriangleCount()));
    ASSERT_TRUE(info.HasEdgeInfos());
    // Dual-graph distance from the seed never decreases along the list.
    std::vector<int> level(sphere.GetTriangleCount(), -1);
    level[40] = 0;
    std::vector<int> front{40};
    while (!front.empty()) {
        std::vector<int> next;
        for (int f : front)
            for (int c = 0; c < 3; ++c) {
                const int e = info.GetTriangleEdgeId(f, c);
                for (int g : info.GetEdgeTriangles(e))
                    if (level[g] < 0) {
                        level[g] = level[f] + 1;
                        next.push_back(g);
                    }
            }
        front.swap(next);
    }
    for (size_t i = 1; i < selected.size(); ++i)
        EXPECT_LE(level[selected[i - 1]], level[selected[i]]);
}

TEST(DetectShapeTangentFace, GrowthStopsAtNonManifoldEdgesAndFlippedNormals) {
    // Three coplanar triangles on edge (0, 1), plus one manifold neighbour of the first.
    TriMesh fan = zoltest::MakeMesh(
        {{0, 0, 0}, {1, 0, 0}, {0.5, 1, 0}, {0.5, -1, 0}, {0.5, 0.2, 0}, {1.5, 1, 0}},
        {{0, 1, 2}, {1, 0, 3}, {0, 1, 4}, {1, 5, 2}});
    for (int t = 0; t < 4; ++t) fan.SetTriangleNormal(t, Vector3(0, 0, 1));
    std::vector<int> selected;
    ASSERT_EQ(DetectShape::SelectTangentFace(&fan, 0, 4.0, &selected), RESULT_OK);
    EXPECT_EQ(selected, (std::vector<int>{0, 3}));
    ASSERT_EQ(DetectShape::SelectTangentFace(&fan, 1, 4.0, &selected), RESULT_OK);
    EXPECT_EQ(selected, std::vector<int>{1});
    // A triangle whose stored normal is flipped is skipped; growth goes around it.
    TriMesh grid = zoltest::MakeGrid(4, 4);
    grid.SetTriangleNormal(12, Vector3(0, 0, -1));
    ASSERT_EQ(DetectShape::SelectTangentFace(&grid, 0, 90 * kDegree, &selected), RESULT_OK);
    EXPECT_EQ(selected.size(), 31u);
    EXPECT_EQ(AsSet(selected).count(12), 0u);
}

TEST(DetectShapeTangentFace, SelectionIsTheSmoothComponentOfTheSeedOnARealMesh) {
    // The neighbour test is symmetric, so whatever the order of growth the selection is
    // the seed's component in the graph of two-sided edges whose normals agree within
    // the tolerance; a union-find over vertex-pair edges is the oracle.
    std::unique_ptr<TriMesh> knight =
        zoltest::ImportMesh(zoltest::DataPath("meshes/decimated-knight.off"));
    ASSERT_NE(knight, nullptr);
    knight->UpdateNormal();
    zoltest::ForwardingMesh host(*knight);  // the host-interface path must agree
    const int n = knight->GetTriangleCount();
    std::map<std::pair<int, int>, std::vector<int>> edges;
    for (int t = 0; t < n; ++t) {
        int ids[3];
        knight->GetTriangleVertexIds(t, ids);
        for (int c = 0; c < 3; ++c) edges[std::minmax(ids[c], ids[(c + 1) % 3])].push_back(t);
    }
    for (double degrees : {5.0, 20.0, 45.0, 180.0}) {
        std::vector<int> parent(n);
        for (int t = 0; t < n; ++t) parent[t] = t;
        std::function<int(int)> find = [&](int t) {
            return parent[t] == t ? t : parent[t] = find(parent[t]);
        };
        for (const auto& edge : edges) {
            const std::vector<int>& tris = edge.second;
            if (tris.size() != 2) continue;
            if (knight->GetTriangleNormal(tris[0]) * knight->GetTriangleNormal(tris[1]) <
                std::cos(degrees * kDegree))
                continue;
            parent[find(tris[0])] = find(tris[1]);
        }
        for (int seed : {0, n / 2, n - 1}) {
            std::vector<int> selected, viaHost;
            ASSERT_EQ(
                DetectShape::SelectTangentFace(knight.get(), seed, degrees * kDegree, &selected),
                RESULT_OK);
            ASSERT_EQ(DetectShape::SelectTangentFace(&host, seed, degrees * kDegree, &viaHost),
                      RESULT_OK);
            EXPECT_EQ(viaHost, selected);
            std::set<int> expected;
            for (int t = 0; t < n; ++t)
                if (find(t) == find(seed)) expected.insert(t);
            EXPECT_EQ(selected.front(), seed);
            EXPECT_EQ(AsSet(selected).size(), selected.size());
            EXPECT_EQ(AsSet(selected), expected) << degrees << " degrees, seed " << seed;
        }
    }
}

TEST(DetectShapeTangentFace, BadArgumentsAreLoggedAndLeaveTheResult) {
    TriMesh cube = zoltest::MakeUnitCube();
    TriMesh twoVertices = zoltest::MakeMesh({{0, 0, 0}, {1, 0, 0}}, {{0, 1, 1}});
    TriMesh noTriangles = zoltest::MakeMesh({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {});
    TriMesh badCorner = zoltest::MakeMesh({{0, 0, 0}, {1, 1, 0}, {2, 4, 0}}, {{0, 1, 7}});

    zoltest::LogCapture log;
    std::vector<int> result{-9};
    SetProgress(0.5);
    EXPECT_EQ(DetectShape::SelectTangentFace(nullptr, 0, 0.1, &result), RESULT_INVALID_INPUT);
    EXPECT_EQ(GetApiProgress(), 0.0);
    EXPECT_EQ(DetectShape::SelectTangentFace(&cube, 0, 0.1, nullptr), RESULT_INVALID_INPUT);
    EXPECT_EQ(DetectShape::SelectTangentFace(&twoVertices, 0, 0.1, &result), RESULT_INVALID_INPUT);
    EXPECT_EQ(DetectShape::SelectTangentFace(&noTriangles, 0, 0.1, &result), RESULT_INVALID_INPUT);
    EXPECT_EQ(DetectShape::SelectTangentFace(&cube, -1, 0.1, &result), RESULT_INVALID_INPUT);
    EXPECT_EQ(DetectShape::SelectTangentFace(&cube, 12, 0.1, &result), RESULT_INVALID_INPUT);
    EXPECT_EQ(DetectShape::SelectTangentFace(&badCorner, 0, 0.1, &result), RESULT_INVALID_INPUT);
    TriMeshInfo info;
    SetProgress(0.5);
    EXPECT_EQ(DetectShape::_SelectTangentFace(&cube, info, 12, 0.1, &result), RESULT_INVALID_INPUT);
    EXPECT_EQ(GetApiProgress(), 0.0);
    EXPECT_EQ(result, std::vector<int>{-9});
    EXPECT_EQ(log.Lines(),
              (std::vector<std::string>{
                  "SelectTangentFace: triMesh == NULL || indexRes == NULL",
                  "SelectTangentFace: triMesh == NULL || indexRes == NULL",
                  "SelectTangentFace: invalid triMesh, vertexCount=2 faceCount=1",
                  "SelectTangentFace: invalid triMesh, vertexCount=3 faceCount=0",
                  "SelectTangentFace: invalid selectFaceId -1 / 12",
                  "SelectTangentFace: invalid selectFaceId 12 / 12",
                  "TriMeshInfo::CacheDataForEdgeInfos: invalid vertex id 7 in triangle 0",
                  "SelectTangentFace: CacheDataForEdgeInfos failed -2",
                  "SelectTangentFace: invalid selectFaceId 12 / 12"}));
}
