// Other programs accept what we write: admesh reads our binary STL, assimp reads our
// OBJ, PLY, OFF and STL, and POV-Ray renders our mesh2 objects and cylinders. `make test`
// installs the tools first; a test whose tool is missing is skipped with a message.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include <zol/core/TriMesh.h>
#include <zol/io/Parser.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

bool HasTool(const std::string& command) {
    return std::system(("command -v " + command + " >/dev/null 2>&1").c_str()) == 0;
}
#define SKIP_WITHOUT(tool) \
    if (!HasTool(tool)) GTEST_SKIP() << tool << " is not installed; `make test` installs it"

// Runs \p command with its output captured. \return the exit status.
int RunTool(const std::string& command, std::string& output) {
    const std::string outputFile = zoltest::ScratchPath("tool_output.txt");
    const int status = std::system((command + " >" + outputFile + " 2>&1").c_str());
    output = zoltest::ReadFile(outputFile);
    return status;
}

// The first integer after \p label in \p text, or -1.
long NumberAfter(const std::string& text, const std::string& label) {
    const std::size_t at = text.find(label);
    if (at == std::string::npos) return -1;
    const std::size_t digits = text.find_first_of("0123456789", at + label.size());
    if (digits == std::string::npos) return -1;
    // Only blanks and a colon may stand between the label and its number.
    if (text.find_first_not_of(" \t:", at + label.size()) != digits) return -1;
    return std::atol(text.c_str() + digits);
}

}  // namespace

TEST(ExternalTool, AdmeshReadsOurBinaryStl) {
    SKIP_WITHOUT("admesh");
    TriMesh sphere = zoltest::MakeSphere(16, 8, 1.0);
    const std::string name = zoltest::ScratchPath("sphere.stl");
    ASSERT_EQ(Parser::ExportTriMesh(name, &sphere), RESULT_OK);
    std::string output;
    ASSERT_EQ(RunTool("admesh " + name, output), 0) << output;
    EXPECT_NE(output.find("Binary STL file"), std::string::npos) << output;
    EXPECT_NE(output.find("zolshapetoolkits mesh"), std::string::npos);
    EXPECT_EQ(NumberAfter(output, "Number of facets"), sphere.GetTriangleCount()) << output;
    // A closed sphere: every facet finds its three neighbours.
    EXPECT_EQ(NumberAfter(output, "Total disconnected facets"), 0) << output;
}

TEST(ExternalTool, AssimpReadsEveryFormatWeWrite) {
    SKIP_WITHOUT("assimp");
    TriMesh sphere = zoltest::MakeSphere(16, 8, 1.0);
    for (const char* extension : {"obj", "ply", "off", "stl"}) {
        SCOPED_TRACE(extension);
        const std::string name = zoltest::ScratchPath(std::string("sphere.") + extension);
        ASSERT_EQ(Parser::ExportTriMesh(name, &sphere), RESULT_OK);
        std::string output;
        ASSERT_EQ(RunTool("assimp info " + name, output), 0) << output;
        EXPECT_EQ(NumberAfter(output, "Faces"), sphere.GetTriangleCount()) << output;
        if (std::string(extension) != "stl") {
            EXPECT_EQ(NumberAfter(output, "Vertices"), sphere.GetVertexCount()) << output;
        }
    }
}

TEST(ExternalTool, PovRayRendersOurMeshAndCylinders) {
    SKIP_WITHOUT("povray");
    TriMesh sphere = zoltest::MakeSphere(24, 12, 1.0);
    sphere.SetHasVertexColor(true);
    for (int i = 0; i < sphere.GetVertexCount(); ++i) {
        sphere.SetVertexColor(i, Vector3(0.2, (i % 7) / 7.0, 0.8));
    }
    TriMesh cube = zoltest::MakeUnitCube();
    cube.SetHasTriangleTexCoord(true);
    Vector3 red(1, 0, 0);
    const std::string colored = zoltest::ScratchPath("colored.inc");
    const std::string plain = zoltest::ScratchPath("plain.inc");
    const std::string textured = zoltest::ScratchPath("textured.inc");
    const std::string segments = zoltest::ScratchPath("segments.inc");
    ASSERT_EQ(Parser::ExportTriMeshToPovray(colored, &sphere, nullptr), RESULT_OK);
    ASSERT_EQ(Parser::ExportTriMeshToPovray(plain, &cube, &red), RESULT_OK);
    ASSERT_EQ(Parser::ExportTextureTriMeshToPovray(textured, &cube), RESULT_OK);
    ASSERT_EQ(
        Parser::ExportLineSegmentToPovray(
            segments, {Vector3(-2, -1, 0), Vector3(2, -1, 0), Vector3(0, -2, 0), Vector3(0, 2, 0)},
            0.05, Vector3(0, 1, 0)),
        RESULT_OK);
    const std::string scene = zoltest::ScratchPath("scene.pov");
    std::ofstream(scene) << "camera { location <0, 0, -6> look_at <0, 0, 0> }\n"
                            "light_source { <10, 10, -10> color rgb <1, 1, 1> }\n"
                            "background { color rgb <0, 0, 0> }\n"
                            "object { #include \""
                         << colored << "\" }\n"
                         << "object { #include \"" << plain << "\" translate <2, 0, 0> }\n"
                         << "object { #include \"" << textured << "\" translate <-3, 0, 0> }\n"
                         << "#include \"" << segments << "\"\n";
    const std::string ppm = zoltest::ScratchPath("scene.ppm");
    std::string output;
    // A plain pixmap shows that objects, not just background, were drawn.
    ASSERT_EQ(RunTool("povray +I" + scene + " +W48 +H48 -D -V +A0.3 +FP +O" + ppm, output), 0)
        << output;
    // Eight-bit P6: the pixels are the last 48 x 48 x 3 bytes, after the header and comments.
    const std::string image = zoltest::ReadFile(ppm);
    const std::size_t pixelBytes = 48 * 48 * 3;
    ASSERT_EQ(image.substr(0, 3), "P6\n");
    ASSERT_GT(image.size(), pixelBytes);
    int lit = 0;
    for (std::size_t i = image.size() - pixelBytes; i < image.size(); i += 3)
        lit += (image[i] | image[i + 1] | image[i + 2]) != 0;
    EXPECT_GT(lit, 48 * 48 / 10);
}
