// Reading meshes through Parser: extension dispatch and its log lines, known counts and
// values of the real files in the shared data folder, and malformed input that must
// give a log line and null rather than a crash or a mesh that fails later.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>

#include <zol/core/TriMesh.h>
#include <zol/io/Parser.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

using zoltest::DataPath;
using zoltest::ImportMesh;

TEST(Parser, RealFilesLoadWithTheirKnownCountsAndValues) {
    const struct {
        const char* file;
        int vertices;
        int triangles;
        bool vertexColor;
        bool triangleTexcoord;
    } cases[] = {{"formats/obj/box.obj", 8, 6, false, true},
                 {"formats/obj/crate.obj", 8, 6, false, true},
                 {"formats/obj/cube.OBJ", 8, 12, false, false},
                 {"formats/obj/cube_with_vertexcolors.obj", 8, 12, true, false},
                 {"formats/obj/only_a_part_of_vertexcolors.obj", 5, 3, false, false},
                 {"formats/obj/polygonfaces.obj", 5, 1, false, false},
                 {"formats/obj/textured_tetrahedron.obj", 4, 4, false, true},
                 {"formats/malformed/notenoughindices.obj", 3, 1, false, false},
                 {"formats/malformed/empty.obj", 0, 0, false, false},
                 {"formats/stl/soup.stl", 300, 100, false, false},
                 {"formats/stl/Spider_ascii.stl", 4104, 1368, false, false},
                 {"formats/stl/Spider_binary.stl", 4104, 1368, false, false},
                 {"formats/stl/triangle.stl", 3, 1, false, false},
                 {"formats/stl/unit_cube.STL", 36, 12, false, false},  // binary, header "solid"
                 {"formats/off/2triangles.off", 4, 2, false, false},
                 {"formats/off/Cube.off", 8, 6, false, false},
                 {"formats/ply/fuze_ascii.ply", 502, 1000, true, false},
                 {"formats/ply/points_ascii.ply", 5, 0, false, false},
                 {"formats/ply/sphere.ply", 642, 1280, false, false},
                 {"formats/ply/test_sample_ascii.ply", 7, 0, false, false},
                 {"formats/malformed/ply_empty_header.ply", 0, 0, false, false},
                 {"meshes/bunny.off", 3485, 6966, false, false},
                 {"meshes/decimated-knight.off", 502, 1000, false, false},
                 {"meshes/goathead.obj", 2763, 5522, false, false},
                 {"meshes/hammer.obj", 30082, 60160, false, false},
                 {"meshes/sphere.obj", 642, 1280, false, false},
                 {"bunny/bun000.ply", 40256, 0, false, false},
                 {"bunny/bun_zipper_res4.ply", 453, 948, false, false},
                 {"bunny/bun_zipper_res2.ply", 8171, 16301, false, false}};
    std::map<std::string, std::unique_ptr<TriMesh>> loaded;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        std::unique_ptr<TriMesh>& mesh = loaded[c.file] = ImportMesh(DataPath(c.file));
        ASSERT_NE(mesh, nullptr);
        EXPECT_EQ(mesh->GetVertexCount(), c.vertices);
        EXPECT_EQ(mesh->GetTriangleCount(), c.triangles);
        EXPECT_EQ(mesh->HasVertexColor(), c.vertexColor);
        EXPECT_EQ(mesh->HasTriangleTexCoord(), c.triangleTexcoord);
        for (int t = 0; t < mesh->GetTriangleCount(); ++t) {
            for (int id : zoltest::Corners(*mesh, t))
                ASSERT_TRUE(id >= 0 && id < mesh->GetVertexCount());
        }
    }
    EXPECT_EQ(loaded["meshes/bunny.off"]->GetVertexCoord(0),
              Vector3(-0.0260146, 0.112578, 0.0363871));
    // A polygon keeps its first triangle only; OBJ colours are taken as they stand.
    EXPECT_EQ(zoltest::Corners(*loaded["formats/obj/polygonfaces.obj"], 0),
              (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(loaded["formats/obj/cube_with_vertexcolors.obj"]->GetVertexColor(7).z, 0.78431);
    // PLY colours are bytes scaled to 0..1; the alpha column is ignored.
    const Vector3 c = loaded["formats/ply/fuze_ascii.ply"]->GetVertexColor(0);
    for (int k = 0; k < 3; ++k) EXPECT_EQ(std::round(c[k] * 255) / 255.0, c[k]);
    // "f 1/1 2/2 3/3" corners take the listed texture coordinates.
    EXPECT_EQ(loaded["formats/obj/textured_tetrahedron.obj"]->GetTriangleTexcoord(0, 0).x, 0.5440);
    EXPECT_EQ(loaded["formats/obj/textured_tetrahedron.obj"]->GetTriangleTexcoord(0, 0).y, 0.7206);
    // STL coordinates are single precision, widened.
    TriMesh& ascii = *loaded["formats/stl/Spider_ascii.stl"];
    for (int i = 0; i < ascii.GetVertexCount(); ++i) {
        ASSERT_LT(ascii.GetVertexCoordRef(i).Distance(
                      loaded["formats/stl/Spider_binary.stl"]->GetVertexCoordRef(i)),
                  1e-4);
    }
}

TEST(Parser, DispatchFailuresAndBrokenDataFilesAreLogged) {
    const std::string tet = DataPath("formats/ply/tet.ply");
    zoltest::LogCapture log;
    for (const std::string& path :
         {std::string("meshwithoutextension"), std::string("mesh.obj.gz"),
          std::string("missing.off"), std::string("missing.stl"), std::string("missing.zpt"),
          DataPath("formats/malformed/malformed.obj"), DataPath("formats/stl/stl_empty_bin.stl"),
          tet}) {
        EXPECT_EQ(ImportMesh(path), nullptr) << path;
    }
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{
                               "Parser::ImportTriMesh: invalid fileName: meshwithoutextension",
                               "Parser::ImportTriMesh: non support format: mesh.obj.gz",
                               "Failed to open file: missing.off",
                               "ImportMeshBySTL:: open failed in asic",
                               "ImportMeshByZPT failed: can not open file: missing.zpt",
                               "ImportMeshByOBJ: invalid vertex index: 12",
                               "ImportMeshBySTL:: invalid faceCount: 0",
                               "ImportMeshByPLY: binary PLY is not supported: " + tet,
                           }));
}

TEST(Parser, MalformedFilesGiveNullAndOneLine) {
    // Counts far beyond the bytes must be refused before allocating: under the sanitizer
    // a reader that trusted them would abort the run.
    std::string claimsTwo(84 + 50, '\0');
    claimsTwo[80] = 2;  // two facets claimed, one present
    claimsTwo[100] = static_cast<char>(0x80);
    const struct {
        const char* name;
        std::string content;
        std::string line;
    } cases[] = {
        {"bad.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 4\n",
         "ImportMeshByOBJ: invalid vertex index: 4"},
        {"zero.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 0 1 2\n",
         "ImportMeshByOBJ: invalid vertex index: 0"},
        {"negative.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf -1 1 2\n",
         "ImportMeshByOBJ: invalid vertex index: -1"},
        {"bad.off", "OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 3\n",
         "ImportMeshByOFF: invalid vertex index: 3"},
        {"short.off", "OFF\n3 1 0\n0 0 0\n1 0 0\n",
         "ImportMeshByOFF: unexpected end of file in vertex 2"},
        {"huge.zpt", "1 2000000000 2000000000 2000000000\n",
         "ImportMeshByZPT: vertex count 2000000000 exceeds the file size"},
        {"claims_two.stl", claimsTwo, "ImportMeshBySTL:: invalid faceCount: 2"},
        {"nocounts.off", "OFF\n", "ImportMeshByOFF: missing vertex and face counts"},
        {"negative.off", "OFF\n-3 1 0\n", "ImportMeshByOFF: invalid counts: -3 1"},
        {"bad.ply",
         "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\n"
         "property float z\nelement face 1\nproperty list uchar int vertex_indices\n"
         "end_header\n0 0 0\n3 0 0 7\n",
         "ImportMeshByPLY: invalid vertex index: 7"},
        {"short.ply", "ply\nformat ascii 1.0\nelement vertex 4\nend_header\n0 0 0\n",
         "ImportMeshByPLY: unexpected end of file in vertex 1"},
        {"noend.ply", "ply\nformat ascii 1.0\n",
         "ImportMeshByPLY: end_header not found: noend.ply"},
        {"empty.stl", "", "ImportMeshBySTL:: invalid faceCount: 0"},
        {"truncated.stl", "solid t\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0",
         "ImportMeshBySTL:: incomplete facet in asic: 0"},
        {"version.zpt", "2 0 0 0\n", "Can not support the data format."},
        {"bad.zpt", "1 1 1 0\n0 0 0 0 0 1 1 1 1\n0 0 1\n",
         "ImportMeshByZPT: invalid vertex index: 1"},
        {"badtex.zpt", "1 3 1 3\n0 0 0\n1 0 0\n0 1 0\n0 1 2\n0 0 0\n0 0 0\n0 0 0\n0 1 3\n",
         "ImportMeshByZPT: invalid texture coordinate index: 3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        zoltest::WriteFile(c.name, c.content);
        zoltest::LogCapture log;
        EXPECT_EQ(ImportMesh(c.name), nullptr);
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
    }
}

TEST(Parser, TextQuirksAreTolerated) {
    // CRLF line ends, no final newline, tabs, a long comment, odd numbers.
    const std::string obj = "# " + std::string(700, 'c') +
                            " v 9 9 9\r\nv\t1 2 3\r\nv 4 5 6 \r\n"
                            "v 1e999 nan -0\r\nvt 0.25 0.75\r\nf 1/1 2/1 3/1 extra\r\nf 3 2 1";
    zoltest::WriteFile("quirks.obj", obj);
    std::unique_ptr<TriMesh> mesh = ImportMesh("quirks.obj");
    ASSERT_NE(mesh, nullptr);
    ASSERT_EQ(mesh->GetVertexCount(), 3);
    EXPECT_EQ(mesh->GetTriangleCount(), 2);
    EXPECT_EQ(mesh->GetVertexCoordRef(1).z, 6.0);
    EXPECT_TRUE(std::isinf(mesh->GetVertexCoordRef(2).x));
    EXPECT_TRUE(std::isnan(mesh->GetVertexCoordRef(2).y));
    EXPECT_FALSE(mesh->HasVertexColor());  // "6 " has a trailing blank, not three more fields
    ASSERT_TRUE(mesh->HasTriangleTexCoord());
    EXPECT_EQ(mesh->GetTriangleTexcoord(0, 2).y, 0.75);
    EXPECT_EQ(mesh->GetTriangleTexcoord(1, 0).x, 0.0);

    zoltest::WriteFile("crlf.off", "OFF\r\n\r\n3 1 0\r\n0 0 0\r\n1 0 0\r\n0 1 0\r\n3 0 1 2");
    std::unique_ptr<TriMesh> off = ImportMesh("crlf.off");
    ASSERT_NE(off, nullptr);
    EXPECT_EQ(off->GetTriangleCount(), 1);
}
