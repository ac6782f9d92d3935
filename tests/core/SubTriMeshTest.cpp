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

namespace {

std::vector<int> Corners(const ITriMesh& mesh, int triangle) {
    int ids[3];
    mesh.GetTriangleVertexIds(triangle, ids);
    return {ids[0], ids[1], ids[2]};
}

std::vector<bool> Flags(int count, const std::vector<int>& ids) {
    std::vector<bool> flags(count, false);
    for (int id : ids) flags[id] = true;
    return flags;
}

}  // namespace

TEST(SubTriMesh, ViewsTheChosenTrianglesWithTheirVertices) {
    TriMesh cube = zoltest::MakeUnitCube();
    SubTriMesh view(&cube, std::vector<int>{11, 0}, BUILD_SUBTRIMESH_BY_TRIANGLE);
    EXPECT_EQ(view.GetTriangleCount(), 2);
    EXPECT_EQ(view.GetParentTriangleIds(), (std::vector<int>{0, 11}));
    EXPECT_EQ(view.GetParentVertexIds(), (std::vector<int>{0, 1, 2, 3, 5, 7}));
    EXPECT_EQ(Corners(view, 0), (std::vector<int>{0, 2, 1}));
    EXPECT_EQ(Corners(view, 1), (std::vector<int>{3, 5, 4}));  // parent 3, 7, 5
    EXPECT_EQ(view.GetViewVertexId(7), 5);
    EXPECT_EQ(view.GetViewVertexId(4), -1);
    EXPECT_EQ(view.GetVertexCoord(5).x, 1.0);
    EXPECT_EQ(view.GetVertexNormal(5).x, cube.GetVertexNormal(7).x);
    EXPECT_EQ(view.GetTriangleNormal(1).x, 1.0);
}

TEST(SubTriMesh, BothConstructorsAndBothSelectionsAgree) {
    TriMesh cube = zoltest::MakeUnitCube();
    struct Case {
        BuildSubTriMeshType type;
        std::vector<int> ids;
        std::vector<int> vertices;
        std::vector<int> triangles;
    };
    const Case cases[] = {
        {BUILD_SUBTRIMESH_BY_TRIANGLE, {4, 5, 4, -1, 99}, {0, 1, 4, 5}, {4, 5}},
        {BUILD_SUBTRIMESH_BY_TRIANGLE, {}, {}, {}},
        // The z = 0 face; vertex 7 adds no triangle: each of its triangles lacks a corner.
        {BUILD_SUBTRIMESH_BY_VERTEX, {3, 2, 1, 0, 7}, {0, 1, 2, 3, 7}, {0, 1}},
        {BUILD_SUBTRIMESH_BY_VERTEX, {0, 1, 2, 3, 4}, {0, 1, 2, 3, 4}, {0, 1, 4, 8}},
        {BUILD_SUBTRIMESH_BY_VERTEX,
         {0, 1, 2, 3, 4, 5, 6, 7},
         {0, 1, 2, 3, 4, 5, 6, 7},
         {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}},
    };
    for (const Case& c : cases) {
        const int count = c.type == BUILD_SUBTRIMESH_BY_TRIANGLE ? 12 : 8;
        std::vector<int> validIds;
        for (int id : c.ids) {
            if (id >= 0 && id < count) validIds.push_back(id);
        }
        SubTriMesh byIds(&cube, c.ids, c.type);
        SubTriMesh byFlags(&cube, Flags(count, validIds), c.type);
        for (const SubTriMesh* view : {&byIds, &byFlags}) {
            EXPECT_EQ(view->GetParentVertexIds(), c.vertices);
            EXPECT_EQ(view->GetParentTriangleIds(), c.triangles);
            for (int t = 0; t < view->GetTriangleCount(); ++t) {
                const std::vector<int> corners = Corners(*view, t);
                const std::vector<int> parent = Corners(cube, view->GetParentTriangleId(t));
                for (int k = 0; k < 3; ++k) {
                    EXPECT_EQ(view->GetParentVertexId(corners[k]), parent[k]);
                }
            }
        }
    }
    // A short flag vector selects nothing beyond its end.
    SubTriMesh shortFlags(&cube, std::vector<bool>{true}, BUILD_SUBTRIMESH_BY_TRIANGLE);
    EXPECT_EQ(shortFlags.GetParentTriangleIds(), (std::vector<int>{0}));
}

TEST(SubTriMesh, WritesGoToTheParentAndSetVertexNormalWritesTheCoordinate) {
    TriMesh cube = zoltest::MakeUnitCube();
    SubTriMesh view(&cube, std::vector<int>{4, 5, 6, 7}, BUILD_SUBTRIMESH_BY_VERTEX);
    ASSERT_EQ(view.GetVertexCount(), 4);
    view.SetVertexCoord(1, Vector3(2, 0, 1));
    EXPECT_EQ(cube.GetVertexCoord(5).x, 2.0);

    const Vector3 normalBefore = cube.GetVertexNormal(6);
    view.SetVertexNormal(2, Vector3(0, 0, 1));
    EXPECT_EQ(cube.GetVertexCoord(6).y, 0.0);
    EXPECT_EQ(cube.GetVertexCoord(6).z, 1.0);
    EXPECT_EQ(cube.GetVertexNormal(6).x, normalBefore.x);

    const TriMesh before(cube);  // indices outside the view are ignored
    view.SetVertexCoord(4, Vector3(9, 9, 9));
    view.SetVertexCoord(-1, Vector3(9, 9, 9));
    view.SetVertexNormal(4, Vector3(9, 9, 9));
    view.SetTriangleVertexIds(0, 0, 1, 4);
    view.SetTriangleNormal(2, Vector3(9, 9, 9));
    for (int i = 0; i < 8; ++i) EXPECT_EQ(cube.GetVertexCoord(i).x, before.GetVertexCoordRef(i).x);
    for (int t = 0; t < 12; ++t) EXPECT_EQ(Corners(cube, t), Corners(before, t));

    view.SetTriangleVertexIds(1, 3, 2, 0);  // view triangle 1 is parent triangle 3
    EXPECT_EQ(Corners(cube, 3), (std::vector<int>{7, 6, 4}));
    view.SetTriangleNormal(1, Vector3(0, 1, 0));
    EXPECT_EQ(cube.GetTriangleNormal(3).y, 1.0);
}

TEST(SubTriMesh, StructureChangesAndANullParentLogTheirLine) {
    const std::string tail =
        ": Please do not use SubTriMesh here. SubTriMesh is not compatiable with this API";
    TriMesh cube = zoltest::MakeUnitCube();
    SubTriMesh view(&cube, std::vector<int>{0, 1}, BUILD_SUBTRIMESH_BY_TRIANGLE);
    const struct {
        void (*call)(SubTriMesh&);
        std::string name;
    } cases[] = {
        {[](SubTriMesh& v) { v.SwapVertex(0, 1); }, "SubTriMesh::SwapVertex"},
        {[](SubTriMesh& v) { v.PopbackVertices(1); }, "SubTriMesh::PopbackVertices"},
        {[](SubTriMesh& v) { v.SwapTriangles(0, 1); }, "SubTriMesh::SwapTriangles"},
        {[](SubTriMesh& v) { v.PopbackTriangles(1); }, "SubTriMesh::PopbackTriangles"},
        {[](SubTriMesh& v) { v.UpdateNormal(); }, "SubTriMesh::UpdateNormal()"},
    };
    for (const auto& c : cases) {
        zoltest::LogCapture log;
        c.call(view);
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.name + tail});
        EXPECT_EQ(view.GetVertexCount(), 4);
        EXPECT_EQ(view.GetTriangleCount(), 2);
        EXPECT_EQ(Corners(view, 0), (std::vector<int>{0, 2, 1}));
    }
    EXPECT_EQ(cube.GetVertexCount(), 8);
    EXPECT_EQ(cube.GetVertexCoord(0).x, 0.0);

    // Insertions log too, then go through the parent.
    zoltest::LogCapture log;
    EXPECT_EQ(view.InsertVertex(Vector3(5, 5, 5)), 4);
    EXPECT_EQ(cube.GetVertexCount(), 9);
    EXPECT_EQ(view.GetParentVertexId(4), 8);
    EXPECT_EQ(view.InsertTriangle(0, 1, 4), 2);
    EXPECT_EQ(cube.GetTriangleCount(), 13);
    EXPECT_EQ(Corners(cube, 12), (std::vector<int>{0, 1, 8}));
    EXPECT_EQ(view.InsertTriangle(0, 1, 7), -1);
    SubTriMesh orphan(nullptr, std::vector<int>{0, 1}, BUILD_SUBTRIMESH_BY_VERTEX);
    EXPECT_EQ(orphan.GetVertexCount(), 0);
    EXPECT_EQ(orphan.GetTriangleCount(), 0);
    EXPECT_EQ(log.Lines(),
              (std::vector<std::string>{
                  "SubTriMesh::InsertVertex" + tail, "SubTriMesh::InsertTriangle" + tail,
                  "SubTriMesh::InsertTriangle" + tail, "SubTriMesh::SubTriMesh: parent == NULL"}));
}

TEST(SubTriMesh, TriangleListsForwardEveryRead) {
    TriMesh cube = zoltest::MakeUnitCube();
    TriangleList whole(&cube);
    SubTriangleList part(&cube, std::vector<int>{10, 11}, BUILD_SUBTRIMESH_BY_TRIANGLE);
    SubTriangleList copied(part.GetSubTriMesh());
    EXPECT_EQ(whole.GetTriangleCount(), 12);
    EXPECT_EQ(whole.GetVertexCoord(7).z, 1.0);
    int wholeIds[3];
    whole.GetTriangleVertexIds(4, wholeIds);
    EXPECT_EQ(Corners(cube, 4), (std::vector<int>{wholeIds[0], wholeIds[1], wholeIds[2]}));
    for (ITriangleList* list : std::vector<ITriangleList*>{&part, &copied}) {
        EXPECT_EQ(list->GetVertexCount(), 4);  // parent 1, 3, 5, 7
        EXPECT_EQ(list->GetTriangleCount(), 2);
        EXPECT_EQ(list->GetVertexCoord(3).y, 1.0);
        EXPECT_EQ(list->GetVertexNormal(0).x, cube.GetVertexNormal(1).x);
        EXPECT_EQ(list->GetTriangleNormal(1).x, 1.0);
        int ids[3];
        list->GetTriangleVertexIds(1, ids);
        EXPECT_EQ((std::vector<int>{ids[0], ids[1], ids[2]}), (std::vector<int>{1, 3, 2}));
    }
}

TEST(SubTriMesh, TrianglesNamingMissingVerticesStayOutOfTheView) {
    TriMesh cube = zoltest::MakeUnitCube();
    cube.SetTriangleVertexIds(1, 0, 99, 3);
    cube.SetTriangleVertexIds(2, -5, 1, 5);
    SubTriMesh byTriangles(&cube, std::vector<int>{0, 1, 2}, BUILD_SUBTRIMESH_BY_TRIANGLE);
    EXPECT_EQ(byTriangles.GetParentTriangleIds(), std::vector<int>{0});
    EXPECT_EQ(byTriangles.GetParentVertexIds(), (std::vector<int>{0, 1, 2}));
    SubTriMesh byVertices(&cube, std::vector<int>{0, 1, 2, 3, 4, 5}, BUILD_SUBTRIMESH_BY_VERTEX);
    // Triangle 1 (of the z = 0 face) is broken; the others lie on the faces x = 0, x = 1, y = 0.
    EXPECT_EQ(byVertices.GetParentTriangleIds(), (std::vector<int>{0, 4, 5, 8, 10}));
    // A copied view reads the same parent through the same maps.
    const SubTriMesh copy(byVertices);
    EXPECT_EQ(Corners(copy, 1), Corners(byVertices, 1));
    EXPECT_EQ(copy.GetParentMesh(), &cube);
}
