// POV-Ray scene fragments: exact text of the three exports, x negated everywhere.
#include <gtest/gtest.h>

#include <zol/core/TriMesh.h>
#include <zol/io/Parser.h>

#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

TriMesh TwoTriangles() {
    TriMesh mesh;
    mesh.InsertVertex(Vector3(1, 2, 3));
    mesh.InsertVertex(Vector3(-0.5, 0, 1e-05));
    mesh.InsertVertex(Vector3(0, 1, 0));
    mesh.InsertVertex(Vector3(1234567, 0, 0));
    mesh.InsertTriangle(0, 1, 2);
    mesh.InsertTriangle(2, 1, 3);
    return mesh;
}

const char kVertexBlock[] =
    "mesh2 {\n"
    "  vertex_vectors {\n"
    "    4, <-1, 2, 3>, <0.5, 0, 1e-05>, <-0, 1, 0>, <-1.23457e+06, 0, 0>}\n";

}  // namespace

TEST(PovRayExport, MeshWithOneColourIsOneMesh2Object) {
    TriMesh mesh = TwoTriangles();
    Vector3 color(1, 0.5, 0.25);
    const std::string name = zoltest::ScratchPath("mesh.inc");
    ASSERT_EQ(Parser::ExportTriMeshToPovray(name, &mesh, &color), 0);
    EXPECT_EQ(zoltest::ReadFile(name), std::string(kVertexBlock) +
                                           "  face_indices {\n"
                                           "    2, <0, 1, 2>, <2, 1, 3>}\n"
                                           "pigment { color rgb <1, 0.5, 0.25> }}\n");

    TriMesh lone;  // without triangles the object is still complete
    lone.InsertVertex(Vector3(1, 2, 3));
    ASSERT_EQ(Parser::ExportTriMeshToPovray(name, &lone, &color), 0);
    EXPECT_EQ(zoltest::ReadFile(name),
              "mesh2 {\n  vertex_vectors {\n    1, <-1, 2, 3>}\n  face_indices {\n    0}\n"
              "pigment { color rgb <1, 0.5, 0.25> }}\n");
}

TEST(PovRayExport, MeshWithoutColourUsesOneTexturePerVertex) {
    TriMesh mesh = TwoTriangles();
    mesh.SetHasVertexColor(true);
    mesh.SetVertexColor(0, Vector3(1, 0, 0));
    mesh.SetVertexColor(3, Vector3(0.2, 0.4, 0.6));
    const std::string name = zoltest::ScratchPath("colored.inc");
    ASSERT_EQ(Parser::ExportTriMeshToPovray(name, &mesh, nullptr), 0);
    EXPECT_EQ(zoltest::ReadFile(name), std::string(kVertexBlock) +
                                           "  texture_list {\n"
                                           "    4, texture { pigment { color rgb <1, 0, 0> } }"
                                           ", texture { pigment { color rgb <0, 0, 0> } }"
                                           ", texture { pigment { color rgb <0, 0, 0> } }"
                                           ", texture { pigment { color rgb <0.2, 0.4, 0.6> } }}\n"
                                           "  face_indices {\n"
                                           "    2, <0, 1, 2>, 0, 1, 2, <2, 1, 3>, 2, 1, 3}\n"
                                           "}\n");
}

TEST(PovRayExport, TexturedMeshListsCornerCoordinates) {
    TriMesh mesh = TwoTriangles();
    mesh.SetHasTriangleTexCoord(true);
    mesh.SetTriangleTexcoord(0, 1, Vector3(0.5, 0.25, 0));
    mesh.SetTriangleTexcoord(1, 2, Vector3(1, 1, 7));
    const std::string name = zoltest::ScratchPath("textured.inc");
    ASSERT_EQ(Parser::ExportTextureTriMeshToPovray(name, &mesh), 0);
    EXPECT_EQ(zoltest::ReadFile(name),
              std::string(kVertexBlock) +
                  "  uv_vectors {\n"
                  "    6, <0, 0>, <0.5, 0.25>, <0, 0>, <0, 0>, <0, 0>, <1, 1>}\n"
                  "  face_indices {\n"
                  "    2, <0, 1, 2>, <2, 1, 3>}\n"
                  "  uv_indices {\n"
                  "    2, <0, 1, 2>, <3, 4, 5>}\n"
                  "pigment { color rgb <0.55, 0.55, 0.55> }}\n");
}

TEST(PovRayExport, SegmentsBecomeCylindersAndAnUnpairedPointIsIgnored) {
    const std::vector<Vector3> points = {Vector3(1, 2, 3), Vector3(4, 5, 6), Vector3(-1, 0, 0.5),
                                         Vector3(0, 0, 0), Vector3(9, 9, 9)};
    const std::string name = zoltest::ScratchPath("segments.inc");
    ASSERT_EQ(Parser::ExportLineSegmentToPovray(name, points, 0.01, Vector3(1, 0, 0)), 0);
    EXPECT_EQ(zoltest::ReadFile(name),
              "cylinder { <-1, 2, 3>, <-4, 5, 6>, 0.01\n"
              "texture { pigment { color rgb <1, 0, 0> } }\n"
              "}\n"
              "cylinder { <1, 0, 0.5>, <-0, 0, 0>, 0.01\n"
              "texture { pigment { color rgb <1, 0, 0> } }\n"
              "}\n");
}

TEST(PovRayExport, FailuresHaveTheirStatusAndLine) {
    TriMesh mesh = TwoTriangles();
    zoltest::LogCapture log;
    EXPECT_EQ(Parser::ExportTriMeshToPovray("a.inc", nullptr, nullptr), -2);
    EXPECT_EQ(Parser::ExportTriMeshToPovray("no_dir/a.inc", &mesh, nullptr), -2);
    EXPECT_EQ(Parser::ExportTextureTriMeshToPovray("a.inc", nullptr), -2);
    EXPECT_EQ(Parser::ExportTextureTriMeshToPovray("no_dir/a.inc", &mesh), -2);
    EXPECT_EQ(Parser::ExportLineSegmentToPovray("no_dir/a.inc", {}, 1, Vector3()), -2);
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{
                               "ExportTriMeshToPovray: triMesh is NULL",
                               "ExportTriMeshToPovray: file could not open ",
                               "ExportTextureTriMeshToPovray: triMesh is NULL",
                               "ExportTextureTriMeshToPovray: file could not open ",
                               "ExportLineSegmentToPovray: file could not open ",
                           }));
}
