// Writing meshes: the exact bytes of every format, the status and log line of each
// failure, and round trips through our own readers.
#include <gtest/gtest.h>

#include <cstring>
#include <locale>
#include <memory>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>
#include <zol/io/Parser.h>

#include "tests/common/HostContainers.h"
#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

// Three vertices whose numbers exercise the six-digit formatting, one triangle.
TriMesh Small(bool colored) {
    TriMesh mesh = zoltest::MakeMesh(
        {{0.1, -0.0, 1e-05}, {1234567.0, 2.5, -3}, {1.0 / 3, 100, 0.000123456789}}, {{0, 1, 2}});
    if (colored) {
        mesh.SetHasVertexColor(true);
        mesh.SetVertexColor(0, Vector3(1, 0.5, 0));
        mesh.SetVertexColor(1, Vector3(0.999, 0.2, 1.0 / 255));
        mesh.SetVertexColor(2, Vector3(0.25, 0.75, 0.1));
    }
    return mesh;
}

float FloatAt(const std::string& bytes, std::size_t offset) {
    float value;
    std::memcpy(&value, bytes.data() + offset, 4);
    return value;
}

}  // namespace

TEST(MeshFormat, TextFormatsAreExactAndOnlyTriMeshColoursAreWritten) {
    const std::string plyHead =
        "ply\nformat ascii 1.0 \nelement vertex 3\nproperty float x\nproperty float y\n"
        "property float z\n";
    const std::string plyTail =
        "element face 1\nproperty list uchar int vertex_indices\nend_header\n";
    const std::string offText =
        "OFF\n3 1 0\n0.1 -0 1e-05\n1.23457e+06 2.5 -3\n0.333333 100 0.000123457\n3 0 1 2\n";
    const struct {
        const char* extension;
        std::string plain;
        std::string colored;
    } cases[] = {
        {"obj", "v 0.1 -0 1e-05\nv 1.23457e+06 2.5 -3\nv 0.333333 100 0.000123457\nf 1 2 3\n",
         "v 0.1 -0 1e-05 1 0.5 0\nv 1.23457e+06 2.5 -3 0.999 0.2 0.00392157\n"
         "v 0.333333 100 0.000123457 0.25 0.75 0.1\nf 1 2 3\n"},
        {"off", offText, offText},
        {"ply",
         plyHead + plyTail +
             "0.1 -0 1e-05\n1.23457e+06 2.5 -3\n0.333333 100 0.000123457\n3 0 1 2\n",
         plyHead + "property uchar red\nproperty uchar green\nproperty uchar blue\n" + plyTail +
             "0.1 -0 1e-05 255 127 0\n1.23457e+06 2.5 -3 254 51 1\n"
             "0.333333 100 0.000123457 63 191 25\n3 0 1 2\n"},
    };
    TriMesh colored = Small(true);
    TriMesh uncolored = Small(false);
    zoltest::HostMesh host(colored);  // a host's own mesh: the writers see ITriMesh only
    for (const auto& c : cases) {
        SCOPED_TRACE(c.extension);
        const std::string name = zoltest::ScratchPath(std::string("small.") + c.extension);
        ASSERT_EQ(Parser::ExportTriMesh(name, &colored), RESULT_OK);
        EXPECT_EQ(zoltest::ReadFile(name), c.colored);
        ASSERT_EQ(Parser::ExportTriMesh(name, &host), RESULT_OK);
        EXPECT_EQ(zoltest::ReadFile(name), c.plain);
        ASSERT_EQ(Parser::ExportTriMesh(name, &uncolored), RESULT_OK);
        EXPECT_EQ(zoltest::ReadFile(name), c.plain);
    }
}

TEST(MeshFormat, StlBytesFollowTheBinaryLayout) {
    TriMesh cube = zoltest::MakeUnitCube();
    const std::string name = zoltest::ScratchPath("cube.stl");
    ASSERT_EQ(Parser::ExportTriMesh(name, &cube), RESULT_OK);
    const std::string bytes = zoltest::ReadFile(name);
    ASSERT_EQ(bytes.size(), 84u + 50u * 12u);
    EXPECT_EQ(bytes.substr(0, 80), std::string("zolshapetoolkits mesh") + std::string(59, '\0'));
    EXPECT_EQ(bytes.substr(80, 4), std::string("\x0c\0\0\0", 4));
    for (int t = 0; t < 12; ++t) {
        const std::size_t record = 84 + 50 * t;
        const Vector3& n = cube.GetTriangleNormalRef(t);
        for (int k = 0; k < 3; ++k) EXPECT_EQ(FloatAt(bytes, record + 4 * k), float(n[k]));
        const int* ids = cube.GetTriangleVertexIdsRef(t);
        for (int corner = 0; corner < 3; ++corner) {
            const Vector3& p = cube.GetVertexCoordRef(ids[corner]);
            for (int k = 0; k < 3; ++k)
                EXPECT_EQ(FloatAt(bytes, record + 12 + 12 * corner + 4 * k), float(p[k]));
        }
        EXPECT_EQ(bytes.substr(record + 48, 2), std::string(2, '\0'));
    }
}

TEST(MeshFormat, ZptTextIsExact) {
    TriMesh mesh = Small(true);
    mesh.SetVertexNormal(0, Vector3(0, 0, 1));
    mesh.SetHasTriangleTexCoord(true);
    mesh.SetTriangleTexcoord(0, 1, Vector3(0.5, 0.25, 0));
    const std::string name = zoltest::ScratchPath("small.zpt");
    ASSERT_EQ(Parser::ExportTriMesh(name, &mesh), RESULT_OK);
    EXPECT_EQ(zoltest::ReadFile(name),
              "1 3 1 3\n"
              "0.1 -0 1e-05 0 0 1 1 0.5 0\n"
              "1.23457e+06 2.5 -3 0 0 0 0.999 0.2 0.00392157\n"
              "0.333333 100 0.000123457 0 0 0 0.25 0.75 0.1\n"
              "0 1 2\n"
              "0 0 0\n0.5 0.25 0\n0 0 0\n"
              "0 1 2\n");
}

TEST(MeshFormat, ExportFailuresHaveTheirStatusAndLine) {
    TriMesh cube = zoltest::MakeUnitCube();
    TriMesh colored = Small(true);
    zoltest::HostMesh host(cube);
    const struct {
        std::string name;
        const ITriMesh* mesh;
        int status;
        std::string line;
    } cases[] = {
        {"noextension", &cube, RESULT_INVALID_INPUT,
         "Parser::ExportTriMesh: invalid fileName: noextension"},
        {"cube.3ds", &cube, RESULT_FAIL, "Parser::ExportTriMesh: not support format"},
        {"host.zpt", &host, RESULT_FAIL, "Parser::ExportTriMesh: not support format"},
        {"null.obj", nullptr, RESULT_INVALID_INPUT, "ExportMeshByOBJ: triMesh is NULL"},
        {"null.stl", nullptr, RESULT_INVALID_INPUT, "ExportMeshBySTL2Binary: triMesh is NULL"},
        {"null.ply", nullptr, RESULT_INVALID_INPUT, "ExportMeshByPLYWithoutColor: triMesh is NULL"},
        {"null.off", nullptr, RESULT_INVALID_INPUT, "ExportMeshByOFF: triMesh is NULL"},
        {"null.zpt", nullptr, RESULT_INVALID_INPUT, "ExportMeshByZPT: triMesh is NULL"},
        {"no_dir/cube.obj", &cube, RESULT_INVALID_INPUT, "ExportMeshByOBJ: file could not open"},
        {"no_dir/cube.stl", &cube, RESULT_INVALID_INPUT,
         "ExportMeshBySTL2Binary: file could not open"},
        {"no_dir/cube.ply", &cube, RESULT_INVALID_INPUT,
         "ExportMeshByPLYWithoutColor: file could not open"},
        {"no_dir/colored.ply", &colored, RESULT_INVALID_INPUT,
         "ExportMeshByPLYWithColor: file could not open"},
        {"no_dir/cube.off", &cube, RESULT_INVALID_INPUT, "ExportMeshByOFF: file could not open "},
        {"no_dir/cube.zpt", &cube, RESULT_INVALID_INPUT, "ExportMeshByZPT: file could not open"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        zoltest::LogCapture log;
        EXPECT_EQ(Parser::ExportTriMesh(c.name, c.mesh), c.status);
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
    }
}

TEST(MeshFormat, EveryFormatRoundTripsToTheSameBytes) {
    // Writing what we read gives the same file again, and the geometry survives to
    // six significant digits (STL: single precision, three vertices per triangle). The
    // extension is the text after the last dot, in any case.
    TriMesh sphere = zoltest::MakeSphere(24, 12, 2.0);
    sphere.SetHasVertexColor(true);
    sphere.SetHasTriangleTexCoord(true);
    for (int i = 0; i < sphere.GetVertexCount(); ++i)
        sphere.SetVertexColor(i, Vector3((i % 256) / 255.0, 0.5, 1.0));
    for (int t = 0; t < sphere.GetTriangleCount(); ++t) {
        for (int k = 0; k < 3; ++k)
            sphere.SetTriangleTexcoord(t, k, Vector3((t % 16) / 16.0, k / 4.0, 0));
    }
    for (const std::string extension : {"obj", "b.STL", "off", "ply", "zpt"}) {
        SCOPED_TRACE(extension);
        const std::string first = zoltest::ScratchPath("first." + extension);
        const std::string second = zoltest::ScratchPath("second." + extension);
        ASSERT_EQ(Parser::ExportTriMesh(first, &sphere), RESULT_OK);
        std::unique_ptr<TriMesh> back = zoltest::ImportMesh(first);
        ASSERT_NE(back, nullptr);
        ASSERT_EQ(back->GetTriangleCount(), sphere.GetTriangleCount());
        ASSERT_EQ(Parser::ExportTriMesh(second, back.get()), RESULT_OK);
        const bool stl = extension == "b.STL";
        EXPECT_EQ(zoltest::ReadFile(first).substr(0, 21) == "zolshapetoolkits mesh", stl);
        if (!stl) {
            EXPECT_EQ(zoltest::ReadFile(first), zoltest::ReadFile(second));
            EXPECT_EQ(back->GetVertexCount(), sphere.GetVertexCount());
        }
        double largest = 0;
        for (int t = 0; t < sphere.GetTriangleCount(); ++t) {
            for (int k = 0; k < 3; ++k) {
                const Vector3& a = sphere.GetVertexCoordRef(sphere.GetTriangleVertexIdsRef(t)[k]);
                const Vector3& b = back->GetVertexCoordRef(back->GetTriangleVertexIdsRef(t)[k]);
                largest = std::max(largest, a.Distance(b));
            }
        }
        EXPECT_LT(largest, 1e-5);
        const bool keepsColour = !stl && extension != "off";
        EXPECT_EQ(back->HasVertexColor(), keepsColour);
        if (keepsColour) {
            EXPECT_NEAR(back->GetVertexColor(200).x, 200 / 255.0, 1e-6);
        }
        if (extension == "zpt") {
            ASSERT_TRUE(back->HasTriangleTexCoord());
            EXPECT_EQ(back->GetTriangleTexcoord(511, 2).x, 15 / 16.0);
            EXPECT_EQ(back->GetTriangleTexcoord(511, 2).y, 0.5);
            EXPECT_LT(back->GetVertexNormalRef(7).Distance(sphere.GetVertexNormalRef(7)), 1e-5);
        }
    }
}

TEST(MeshFormat, ReadersAndWritersIgnoreTheGlobalLocale) {
    // A host in a German locale: decimal comma, thousands grouped with dots.
    struct CommaPunct : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::string offText = "OFF\n3 1 0\n1234.5 0 0\n0 2.25 0\n0 0 0.001\n3 0 1 2\n";
    const std::string off = zoltest::ScratchPath("locale.off");
    const std::string asc = zoltest::ScratchPath("locale.asc");
    zoltest::WriteFile(off, "OFF\n3 1 0\n1234.5 0 0\n0 2.25 0\n0 0 1e-3\n3 0 1 2\n");
    zoltest::WriteFile(asc, "1234.5 2.25 1e-3\n");
    const std::locale previous =
        std::locale::global(std::locale(std::locale::classic(), new CommaPunct));
    std::unique_ptr<TriMesh> mesh = zoltest::ImportMesh(off);
    std::unique_ptr<PointCloud> cloud(Parser::ImportPointCloud(asc));
    const std::string meshCopy = zoltest::ScratchPath("copy.off");
    const std::string cloudCopy = zoltest::ScratchPath("copy.asc");
    const int meshStatus = mesh ? Parser::ExportTriMesh(meshCopy, mesh.get()) : RESULT_FAIL;
    const int cloudStatus = cloud ? Parser::ExportPointCloud(cloudCopy, cloud.get()) : RESULT_FAIL;
    std::locale::global(previous);
    ASSERT_NE(mesh, nullptr);
    ASSERT_NE(cloud, nullptr);
    EXPECT_EQ(mesh->GetVertexCoordRef(0).x, 1234.5);
    EXPECT_EQ(cloud->GetPointCoord(0).y, 2.25);
    EXPECT_EQ(meshStatus, RESULT_OK);
    EXPECT_EQ(cloudStatus, RESULT_OK);
    EXPECT_EQ(zoltest::ReadFile(meshCopy), offText);
    EXPECT_EQ(zoltest::ReadFile(cloudCopy), "1234.5 2.25 0.001\n");
}
