// SubTriMesh views (both selections, both constructors), forwarding of reads and writes,
// the refusal log lines, and the read-only triangle-list adapters.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <zol/core/SubTriMesh.h>
#include <zol/core/TriMesh.h>
#include <zol/core/TriangleList.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;
using zoltest::Corners;
using Ids = std::vector<int>;

TEST(SubTriMesh, ViewsTheChosenTrianglesWithTheirVertices) {
    TriMesh cube = zoltest::MakeUnitCube();
    SubTriMesh view(&cube, Ids{11, 0}, BUILD_SUBTRIMESH_BY_TRIANGLE);
    EXPECT_EQ(view.GetParentTriangleIds(), (Ids{0, 11}));
    EXPECT_EQ(view.GetParentVertexIds(), (Ids{0, 1, 2, 3, 5, 7}));
    EXPECT_EQ(Corners(view, 1), (Ids{3, 5, 4}));  // parent 3, 7, 5
    EXPECT_EQ(view.GetViewVertexId(7), 5);
    EXPECT_EQ(view.GetViewVertexId(4), -1);
    EXPECT_EQ(view.GetVertexCoord(5), Vector3(1, 1, 1));
    EXPECT_EQ(view.GetVertexNormal(5), cube.GetVertexNormal(7));
    EXPECT_EQ(view.GetTriangleNormal(1), Vector3(1, 0, 0));
}

TEST(SubTriMesh, BothConstructorsBothSelectionsAndCopiesAgree) {
    TriMesh cube = zoltest::MakeUnitCube(), broken = zoltest::MakeUnitCube();
    broken.SetTriangleVertexIds(1, 0, 99, 3);  // triangles naming missing vertices stay out
    broken.SetTriangleVertexIds(2, -5, 1, 5);
    const struct {
        TriMesh* mesh;
        BuildSubTriMeshType type;
        Ids ids, vertices, triangles;
    } cases[] = {
        {&cube, BUILD_SUBTRIMESH_BY_TRIANGLE, {4, 5, 4, -1, 99}, {0, 1, 4, 5}, {4, 5}},
        {&cube, BUILD_SUBTRIMESH_BY_TRIANGLE, {}, {}, {}},
        // The z = 0 face; vertex 7 adds no triangle: each of its triangles lacks a corner.
        {&cube, BUILD_SUBTRIMESH_BY_VERTEX, {3, 2, 1, 0, 7}, {0, 1, 2, 3, 7}, {0, 1}},
        {&cube, BUILD_SUBTRIMESH_BY_VERTEX, {0, 1, 2, 3, 4}, {0, 1, 2, 3, 4}, {0, 1, 4, 8}},
        {&cube,
         BUILD_SUBTRIMESH_BY_VERTEX,
         {0, 1, 2, 3, 4, 5, 6, 7},
         {0, 1, 2, 3, 4, 5, 6, 7},
         {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}},
        {&broken, BUILD_SUBTRIMESH_BY_TRIANGLE, {0, 1, 2}, {0, 1, 2}, {0}},
        // The z = 0 face's triangle 1 is broken; the others lie on x = 0, x = 1 and y = 0.
        {&broken,
         BUILD_SUBTRIMESH_BY_VERTEX,
         {0, 1, 2, 3, 4, 5},
         {0, 1, 2, 3, 4, 5},
         {0, 4, 5, 8, 10}},
    };
    for (const auto& c : cases) {
        std::vector<bool> flags(c.type == BUILD_SUBTRIMESH_BY_TRIANGLE ? 12 : 8, false);
        for (int id : c.ids) {
            if (id >= 0 && id < int(flags.size())) flags[id] = true;
        }
        SubTriMesh byIds(c.mesh, c.ids, c.type), byFlags(c.mesh, flags, c.type);
        SubTriMesh copy(byIds);
        EXPECT_EQ(copy.GetParentMesh(), c.mesh);
        for (const SubTriMesh* view : {&byIds, &byFlags, &copy}) {
            EXPECT_EQ(view->GetParentVertexIds(), c.vertices);
            EXPECT_EQ(view->GetParentTriangleIds(), c.triangles);
            for (int t = 0; t < view->GetTriangleCount(); ++t) {
                const Ids corners = Corners(*view, t);
                const Ids parent = Corners(*c.mesh, view->GetParentTriangleId(t));
                for (int k = 0; k < 3; ++k)
                    EXPECT_EQ(view->GetParentVertexId(corners[k]), parent[k]);
            }
        }
    }
    // A short flag vector selects nothing beyond its end.
    SubTriMesh shortFlags(&cube, std::vector<bool>{true}, BUILD_SUBTRIMESH_BY_TRIANGLE);
    EXPECT_EQ(shortFlags.GetParentTriangleIds(), (Ids{0}));
}

TEST(SubTriMesh, WritesGoToTheParentAndSetVertexNormalWritesTheCoordinate) {
    TriMesh cube = zoltest::MakeUnitCube();
    SubTriMesh view(&cube, Ids{4, 5, 6, 7}, BUILD_SUBTRIMESH_BY_VERTEX);
    view.SetVertexCoord(1, Vector3(2, 0, 1));
    EXPECT_EQ(cube.GetVertexCoord(5), Vector3(2, 0, 1));
    const Vector3 normalBefore = cube.GetVertexNormal(6);
    view.SetVertexNormal(2, Vector3(0, 0, 1));
    EXPECT_EQ(cube.GetVertexCoord(6), Vector3(0, 0, 1));
    EXPECT_EQ(cube.GetVertexNormal(6), normalBefore);
    const TriMesh before(cube);  // indices outside the view are ignored
    view.SetVertexCoord(4, Vector3(9, 9, 9));
    view.SetVertexCoord(-1, Vector3(9, 9, 9));
    view.SetVertexNormal(4, Vector3(9, 9, 9));
    view.SetTriangleVertexIds(0, 0, 1, 4);
    view.SetTriangleNormal(2, Vector3(9, 9, 9));
    for (int i = 0; i < 8; ++i) EXPECT_EQ(cube.GetVertexCoord(i), before.GetVertexCoordRef(i));
    for (int t = 0; t < 12; ++t) EXPECT_EQ(Corners(cube, t), Corners(before, t));
    for (int t = 0; t < 12; ++t)
        EXPECT_EQ(cube.GetTriangleNormal(t), before.GetTriangleNormalRef(t));
    view.SetTriangleVertexIds(1, 3, 2, 0);  // view triangle 1 is parent triangle 3
    EXPECT_EQ(Corners(cube, 3), (Ids{7, 6, 4}));
    view.SetTriangleNormal(1, Vector3(0, 1, 0));
    EXPECT_EQ(cube.GetTriangleNormal(3), Vector3(0, 1, 0));
}

TEST(SubTriMesh, StructureChangesAndANullParentLogTheirLine) {
    const std::string tail =
        ": Please do not use SubTriMesh here. SubTriMesh is not compatiable with this API";
    TriMesh cube = zoltest::MakeUnitCube();
    SubTriMesh view(&cube, Ids{0, 1}, BUILD_SUBTRIMESH_BY_TRIANGLE);
    zoltest::LogCapture log;
    view.SwapVertex(0, 1);
    view.PopbackVertices(1);
    view.SwapTriangles(0, 1);
    view.PopbackTriangles(1);
    view.UpdateNormal();
    EXPECT_EQ(view.GetVertexCount(), 4);
    EXPECT_EQ(view.GetTriangleCount(), 2);
    EXPECT_EQ(Corners(view, 0), (Ids{0, 2, 1}));
    EXPECT_EQ(cube.GetVertexCount(), 8);
    EXPECT_EQ(cube.GetVertexCoord(0), Vector3());
    // Insertions log too, then go through the parent.
    EXPECT_EQ(view.InsertVertex(Vector3(5, 5, 5)), 4);
    EXPECT_EQ(cube.GetVertexCount(), 9);
    EXPECT_EQ(view.GetParentVertexId(4), 8);
    EXPECT_EQ(view.InsertTriangle(0, 1, 4), 2);
    EXPECT_EQ(Corners(cube, 12), (Ids{0, 1, 8}));
    EXPECT_EQ(view.InsertTriangle(0, 1, 7), -1);
    EXPECT_EQ(cube.GetTriangleCount(), 13);
    SubTriMesh orphan(nullptr, Ids{0, 1}, BUILD_SUBTRIMESH_BY_VERTEX);
    EXPECT_EQ(orphan.GetVertexCount() + orphan.GetTriangleCount(), 0);
    std::vector<std::string> expected;
    for (const char* name : {"SwapVertex", "PopbackVertices", "SwapTriangles", "PopbackTriangles",
                             "UpdateNormal()", "InsertVertex", "InsertTriangle", "InsertTriangle"})
        expected.push_back("SubTriMesh::" + std::string(name) + tail);
    expected.push_back("SubTriMesh::SubTriMesh: parent == NULL");
    EXPECT_EQ(log.Lines(), expected);
}

TEST(SubTriMesh, TriangleListsForwardEveryRead) {
    TriMesh cube = zoltest::MakeUnitCube();
    SubTriMesh view(&cube, Ids{10, 11}, BUILD_SUBTRIMESH_BY_TRIANGLE);
    TriangleList whole(&cube);
    SubTriangleList part(&cube, Ids{10, 11}, BUILD_SUBTRIMESH_BY_TRIANGLE), copied(view);
    const std::pair<ITriangleList*, ITriMesh*> pairs[] = {
        {&whole, &cube}, {&part, &view}, {&copied, &view}};
    for (const auto& [list, mesh] : pairs) {
        ASSERT_EQ(list->GetVertexCount(), mesh->GetVertexCount());
        ASSERT_EQ(list->GetTriangleCount(), mesh->GetTriangleCount());
        for (int v = 0; v < mesh->GetVertexCount(); ++v) {
            EXPECT_EQ(list->GetVertexCoord(v), mesh->GetVertexCoord(v));
            EXPECT_EQ(list->GetVertexNormal(v), mesh->GetVertexNormal(v));
        }
        for (int t = 0; t < mesh->GetTriangleCount(); ++t) {
            int ids[3];
            list->GetTriangleVertexIds(t, ids);
            EXPECT_EQ((Ids{ids[0], ids[1], ids[2]}), Corners(*mesh, t));
            EXPECT_EQ(list->GetTriangleNormal(t), mesh->GetTriangleNormal(t));
        }
    }
    EXPECT_EQ(part.GetVertexCount(), 4);  // parent 1, 3, 5, 7
}
