// Tangent-face selection: the smooth component of the seed in breadth-first order against
// an independent walk on a real mesh, non-manifold edges and flipped normals stopping the
// growth, and every argument failure with its line.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <set>

#include <zol/core/TriMeshInfo.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/shape/DetectShape.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {
const double kDegree = 3.14159265358979323846 / 180.0;
std::set<int> AsSet(const std::vector<int>& ids) { return std::set<int>(ids.begin(), ids.end()); }
}  // namespace

TEST(DetectShapeTangentFace, SelectionIsTheSmoothComponentOfTheSeedInBreadthFirstOrder) {
    // The oracle walks breadth first over the edges of exactly two triangles whose normals
    // agree within the tolerance; the selection must be what it reaches, level by level.
    std::unique_ptr<TriMesh> knight =
        zoltest::ImportMesh(zoltest::DataPath("meshes/decimated-knight.off"));
    ASSERT_NE(knight, nullptr);
    knight->UpdateNormal();
    const int n = knight->GetTriangleCount();
    std::map<std::pair<int, int>, std::vector<int>> edges;
    for (int t = 0; t < n; ++t) {
        const std::vector<int> ids = zoltest::Corners(*knight, t);
        for (int c = 0; c < 3; ++c) edges[std::minmax(ids[c], ids[(c + 1) % 3])].push_back(t);
    }
    for (double degrees : {5.0, 20.0, 45.0, 180.0}) {
        std::vector<std::vector<int>> smooth(n);
        for (const auto& [ends, tris] : edges) {
            if (tris.size() != 2 ||
                knight->GetTriangleNormal(tris[0]) * knight->GetTriangleNormal(tris[1]) <
                    std::cos(degrees * kDegree))
                continue;
            smooth[tris[0]].push_back(tris[1]);
            smooth[tris[1]].push_back(tris[0]);
        }
        for (int seed : {0, n / 2, n - 1}) {
            std::vector<int> level(n, -1), reached{seed};
            level[seed] = 0;
            for (size_t i = 0; i < reached.size(); ++i) {
                for (int g : smooth[reached[i]]) {
                    if (level[g] >= 0) continue;
                    level[g] = level[reached[i]] + 1;
                    reached.push_back(g);
                }
            }
            std::vector<int> selected;
            const double tolerance = degrees * kDegree;
            ASSERT_EQ(DetectShape::SelectTangentFace(knight.get(), seed, tolerance, &selected),
                      RESULT_OK);
            ASSERT_EQ(selected.size(), reached.size()) << degrees << " degrees, seed " << seed;
            EXPECT_EQ(AsSet(selected), AsSet(reached));
            EXPECT_EQ(selected.front(), seed);
            for (size_t i = 1; i < selected.size(); ++i) {
                EXPECT_LE(level[selected[i - 1]], level[selected[i]]);
            }
            TriMeshInfo info;  // a caller's cache is built on the way and gives the same
            std::vector<int> again;
            ASSERT_EQ(DetectShape::_SelectTangentFace(knight.get(), info, seed, tolerance, &again),
                      RESULT_OK);
            EXPECT_EQ(again, selected);
            EXPECT_EQ(info.GetEdgeCount(), static_cast<int>(edges.size()));
        }
    }
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

TEST(DetectShapeTangentFace, BadArgumentsAreLoggedResetProgressAndLeaveTheResult) {
    TriMesh cube = zoltest::MakeUnitCube();
    TriMesh twoVertices = zoltest::MakeMesh({{0, 0, 0}, {1, 0, 0}}, {{0, 1, 1}});
    TriMesh noTriangles = zoltest::MakeMesh({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {});
    TriMesh badCorner = zoltest::MakeMesh({{0, 0, 0}, {1, 1, 0}, {2, 4, 0}}, {{0, 1, 7}});
    std::vector<int> result{-9};
    TriMeshInfo info;
    const std::string null = "SelectTangentFace: triMesh == NULL || indexRes == NULL";
    const struct {
        const ITriMesh* mesh;
        int seed;
        std::vector<int>* out;
        std::string line;  // the last line; a broken corner is reported by the cache first
    } cases[] = {
        {&cube, 0, nullptr, null},
        {&twoVertices, 0, &result, "SelectTangentFace: invalid triMesh, vertexCount=2 faceCount=1"},
        {&noTriangles, 0, &result, "SelectTangentFace: invalid triMesh, vertexCount=3 faceCount=0"},
        {&cube, -1, &result, "SelectTangentFace: invalid selectFaceId -1 / 12"},
        {&cube, 12, &result, "SelectTangentFace: invalid selectFaceId 12 / 12"},
        {&badCorner, 0, &result, "SelectTangentFace: CacheDataForEdgeInfos failed -2"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> lines{c.line};
        if (c.mesh == &badCorner) {
            lines.insert(lines.begin(),
                         "TriMeshInfo::CacheDataForEdgeInfos: invalid vertex id 7 in triangle 0");
        }
        for (bool ownCache : {false, true}) {
            zoltest::LogCapture log;
            SetProgress(0.5);
            EXPECT_EQ(ownCache ? DetectShape::_SelectTangentFace(c.mesh, info, c.seed, 0.1, c.out)
                               : DetectShape::SelectTangentFace(c.mesh, c.seed, 0.1, c.out),
                      RESULT_INVALID_INPUT);
            EXPECT_EQ(GetApiProgress(), 0.0);
            EXPECT_EQ(log.Lines(), lines);
        }
    }
    EXPECT_EQ(result, std::vector<int>{-9});
}
