// Free mesh utilities: copy, deletion of vertices and triangles with renumbering,
// isolated vertices, bounding box, average edge length, the 2D triangle overlap test,
// and their failures.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <zol/core/MeshUtility.h>
#include <zol/core/SubTriMesh.h>
#include <zol/core/TriMesh.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

using Triple = std::array<double, 9>;

// Triangles (but those in \p skip) as coordinate triples, each rotated to start at its
// smallest corner (keeps orientation), sorted: equal for meshes that differ only in numbering.
std::vector<Triple> Geometry(const TriMesh& mesh, const std::vector<int>& skip = {}) {
    std::vector<Triple> result;
    for (int t = 0; t < mesh.GetTriangleCount(); ++t) {
        if (std::find(skip.begin(), skip.end(), t) != skip.end()) continue;
        const int* ids = mesh.GetTriangleVertexIdsRef(t);
        std::array<Vector3, 3> p = {mesh.GetVertexCoordRef(ids[0]), mesh.GetVertexCoordRef(ids[1]),
                                    mesh.GetVertexCoordRef(ids[2])};
        const auto lexLess = [](const Vector3& a, const Vector3& b) {
            return std::tie(a.x, a.y, a.z) < std::tie(b.x, b.y, b.z);
        };
        std::rotate(p.begin(), std::min_element(p.begin(), p.end(), lexLess), p.end());
        result.push_back({p[0].x, p[0].y, p[0].z, p[1].x, p[1].y, p[1].z, p[2].x, p[2].y, p[2].z});
    }
    std::sort(result.begin(), result.end());
    return result;
}

}  // namespace

TEST(MeshUtility, CopyTriMeshMakesAnIndependentCopyOfAnyITriMesh) {
    TriMesh cube = zoltest::MakeUnitCube();
    cube.SetHasVertexColor(true);
    cube.SetVertexColor(2, Vector3(0, 1, 0));
    TriMesh copy = zoltest::MakeSphere(6, 3, 1.0);
    ASSERT_EQ(CopyTriMesh(&cube, &copy), RESULT_OK);
    EXPECT_EQ(Geometry(copy), Geometry(cube));
    EXPECT_EQ(copy.GetVertexColor(2).y, 1.0);
    copy.SetVertexCoord(0, Vector3(5, 5, 5));
    EXPECT_EQ(cube.GetVertexCoord(0).x, 0.0);
    EXPECT_EQ(CopyTriMesh(&cube, &cube), RESULT_OK);
    EXPECT_EQ(cube.GetVertexCount(), 8);

    SubTriMesh top(&cube, std::vector<int>{2, 3}, BUILD_SUBTRIMESH_BY_TRIANGLE);
    ASSERT_EQ(CopyTriMesh(&top, &copy), RESULT_OK);
    ASSERT_EQ(copy.GetVertexCount(), 4);
    for (int v = 0; v < 4; ++v) {
        EXPECT_EQ(copy.GetVertexNormal(v).x, cube.GetVertexNormal(v + 4).x);
    }
    EXPECT_EQ(copy.GetTriangleNormal(1).z, 1.0);
    EXPECT_EQ(Geometry(copy), Geometry(cube, {0, 1, 4, 5, 6, 7, 8, 9, 10, 11}));
}

TEST(MeshUtility, DeleteVerticesRemovesTheirTrianglesAndRenumbersCorners) {
    TriMesh cube = zoltest::MakeUnitCube();
    cube.InsertVertex(Vector3(3, 3, 3));  // isolated vertex 8
    cube.SetHasVertexColor(true);
    for (int v = 0; v < 9; ++v) cube.SetVertexColor(v, cube.GetVertexCoord(v) * 0.25);
    const TriMesh original(cube);

    ASSERT_EQ(DeleteTriMeshVertices(&cube, {0, 6, 0, -3, 42}), RESULT_OK);
    EXPECT_EQ(cube.GetVertexCount(), 7);
    // Vertex 0 is in triangles 0, 4, 8; vertex 6 in 2, 3, 6, 7, 9.
    EXPECT_EQ(Geometry(cube), Geometry(original, {0, 2, 3, 4, 6, 7, 8, 9}));
    for (int v = 0; v < cube.GetVertexCount(); ++v) {
        const Vector3 p = cube.GetVertexCoord(v);
        EXPECT_FALSE(p.x == 0 && p.y == 0 && p.z == 0);
        EXPECT_FALSE(p.x == 0 && p.y == 1 && p.z == 1);
        EXPECT_EQ(cube.GetVertexColor(v).x, p.x * 0.25);
        EXPECT_EQ(cube.GetVertexColor(v).z, p.z * 0.25);
    }

    ASSERT_EQ(DeleteTriMeshVertices(&cube, {}), RESULT_OK);
    EXPECT_EQ(cube.GetVertexCount(), 7);
    ASSERT_EQ(DeleteTriMeshVertices(&cube, {0, 1, 2, 3, 4, 5, 6}), RESULT_OK);
    EXPECT_EQ(cube.GetVertexCount(), 0);
    EXPECT_EQ(cube.GetTriangleCount(), 0);
}

TEST(MeshUtility, DeleteTrianglesKeepsTheOthersAndEveryVertexWhichMayBecomeIsolated) {
    TriMesh sphere = zoltest::MakeSphere(10, 6, 1.0);
    const TriMesh original(sphere);
    const std::vector<int> doomed = {0, 5, 99, 5, 98, 1, 97, -1, 1000};
    ASSERT_EQ(DeleteTriMeshTriangles(&sphere, doomed), RESULT_OK);
    EXPECT_EQ(sphere.GetTriangleCount(), 100 - 6);
    EXPECT_EQ(sphere.GetVertexCount(), original.GetVertexCount());
    EXPECT_EQ(Geometry(sphere), Geometry(original, doomed));

    TriMesh cube = zoltest::MakeUnitCube();
    cube.InsertVertex(Vector3(4, 4, 4));
    std::vector<int> isolated = {77};
    ASSERT_EQ(FindIsolatedVertices(&cube, &isolated), RESULT_OK);
    EXPECT_EQ(isolated, std::vector<int>{8});
    // Only the z = 0 face stays: 4-7 lose all their triangles.
    ASSERT_EQ(DeleteTriMeshTriangles(&cube, {2, 3, 4, 5, 6, 7, 8, 9, 10, 11}), RESULT_OK);
    ASSERT_EQ(FindIsolatedVertices(&cube, &isolated), RESULT_OK);
    EXPECT_EQ(isolated, (std::vector<int>{4, 5, 6, 7, 8}));
}

TEST(MeshUtility, BoundingBoxAndAverageEdgeLengthOfKnownShapes) {
    TriMesh cube = zoltest::MakeUnitCube();
    cube.SetVertexCoord(7, Vector3(2, 3, 4));
    Vector3 lo, hi;
    ASSERT_EQ(CalculateTriMeshBoundingBox(&cube, &lo, &hi), RESULT_OK);
    EXPECT_EQ(std::vector<double>({lo.x, lo.y, lo.z, hi.x, hi.y, hi.z}),
              std::vector<double>({0, 0, 0, 2, 3, 4}));

    TriMesh unit = zoltest::MakeUnitCube();
    double average = 0;
    ASSERT_EQ(CalculateTriMeshAverageEdgeLength(&unit, &average), RESULT_OK);
    EXPECT_DOUBLE_EQ(average, (2.0 + std::sqrt(2.0)) / 3.0);
    TriMesh grid = zoltest::MakeGrid(4, 3, 0.5);
    ASSERT_EQ(CalculateTriMeshAverageEdgeLength(&grid, &average), RESULT_OK);
    EXPECT_DOUBLE_EQ(average, 0.5 * (2.0 + std::sqrt(2.0)) / 3.0);
}

TEST(MeshUtility, BadArgumentsLogOneLineAndAreInvalidInput) {
    TriMesh cube = zoltest::MakeUnitCube();
    TriMesh empty;
    TriMesh broken = zoltest::MakeUnitCube();
    broken.SetTriangleVertexIds(7, 2, 3, 8);
    Vector3 v;
    double d = -1;
    zoltest::LogCapture log;
    const struct {
        int status;
        std::string line;
    } cases[] = {
        {CopyTriMesh(&cube, nullptr), "CopyTriMesh: fromMesh == NULL || toMesh == NULL"},
        {DeleteTriMeshVertices(nullptr, {0}), "DeleteTriMeshVertices: triMesh == NULL"},
        {DeleteTriMeshTriangles(nullptr, {0}), "DeleteTriMeshTriangles: triMesh == NULL"},
        {FindIsolatedVertices(&cube, nullptr),
         "FindIsolatedVertices: triMesh == NULL || isolatedIds == NULL"},
        {CalculateTriMeshBoundingBox(nullptr, &v, &v),
         "CalculateTriMeshBoundingBox: triMesh == NULL"},
        {CalculateTriMeshBoundingBox(&cube, &v, nullptr),
         "CalculateTriMeshBoundingBox: bboxMin == NULL || bboxMax == NULL"},
        {CalculateTriMeshBoundingBox(&empty, &v, &v),
         "CalculateTriMeshBoundingBox: vertexCount < 1"},
        {CalculateTriMeshAverageEdgeLength(nullptr, &d),
         "CalculateTriMeshAverageEdgeLength: triMesh == NULL"},
        {CalculateTriMeshAverageEdgeLength(&cube, nullptr),
         "CalculateTriMeshAverageEdgeLength: averageLength == NULL"},
        {CalculateTriMeshAverageEdgeLength(&empty, &d),
         "CalculateTriMeshAverageEdgeLength: triangleCount < 1"},
        {CalculateTriMeshAverageEdgeLength(&broken, &d),
         "CalculateTriMeshAverageEdgeLength: invalid vertex id 8 in triangle 7"},
    };
    std::vector<std::string> expected;
    for (const auto& c : cases) {
        EXPECT_EQ(c.status, RESULT_INVALID_INPUT) << c.line;
        expected.push_back(c.line);
    }
    EXPECT_EQ(log.Lines(), expected);
    EXPECT_EQ(cube.GetVertexCount(), 8);
    EXPECT_EQ(cube.GetTriangleCount(), 12);
    EXPECT_EQ(d, -1);
}

TEST(MeshUtility, TriangleOverlap2DCountsSharedAreaNotTouching) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Vector2 unit[3] = {{0, 0}, {1, 0}, {0, 1}};
    const struct {
        Vector2 other[3];
        bool overlap;
        const char* what;
    } cases[] = {
        {{{0.2, 0.2}, {0.4, 0.2}, {0.2, 0.4}}, true, "inside"},
        {{{-1, -1}, {3, -1}, {-1, 3}}, true, "containing"},
        {{{0.5, -0.5}, {0.5, 2}, {-1, 0.5}}, true, "crossing sides, no corner inside"},
        {{{0, 1}, {1, 0}, {1, 1}}, false, "neighbour across the hypotenuse"},
        {{{0.25, 0.75}, {0.75, 0.25}, {1, 1}}, false, "touching along part of a side"},
        {{{1, 0}, {2, 0}, {2, 1}}, false, "touching at a corner"},
        {{{2, 2}, {3, 2}, {2, 3}}, false, "far apart"},
        {{{0.6, 0.6}, {2, 0.6}, {0.6, 2}}, false, "apart along the hypotenuse normal only"},
        {{{0.1, 0.1}, {0.2, 0.2}, {0.3, 0.3}}, false, "degenerate, no area"},
        {{{0.2, 0.2}, {0.2, 0.2}, {0.2, 0.2}}, false, "a point"},
        {{{0.2, 0.2}, {nan, 0.2}, {0.2, 0.4}}, false, "NaN corner"},
        {{{0, 0}, {1, 0}, {0, 1}}, true, "identical"},
        {{{0, 0}, {0, 1}, {1, 0}}, true, "identical, other orientation"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(IsTriangleOverlap2D(unit, c.other), c.overlap) << c.what;
        EXPECT_EQ(IsTriangleOverlap2D(c.other, unit), c.overlap) << c.what << " (swapped)";
    }
    // Sides shared exactly are touching at any position and scale, not overlapping.
    const Vector2 a[3] = {{0.1, 0.7}, {123.456, -7.25}, {3.3, 9.1}};
    const Vector2 b[3] = {{123.456, -7.25}, {0.1, 0.7}, {-5.5, -4.4}};
    EXPECT_FALSE(IsTriangleOverlap2D(a, b));
    // The tolerance: 0.1 deep needs a tolerance below 0.1; a gap of 0.1 closes below -0.1.
    const Vector2 deep[3] = {{0.9, 0}, {2, 0}, {0.9, 1}};
    const Vector2 gap[3] = {{1.1, 0}, {2, 0}, {1.1, 1}};
    const Vector2 square[3] = {{0, 0}, {1, 0}, {1, 1}};
    EXPECT_TRUE(IsTriangleOverlap2D(square, deep, 0.05));
    EXPECT_FALSE(IsTriangleOverlap2D(square, deep, 0.15));
    EXPECT_FALSE(IsTriangleOverlap2D(square, gap, -0.05));
    EXPECT_TRUE(IsTriangleOverlap2D(square, gap, -0.15));
}
