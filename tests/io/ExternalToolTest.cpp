// Other programs accept what we write: admesh reads our binary STL, assimp reads our
// OBJ, PLY, OFF and STL (POV-Ray renders the zol tool's scenes in tests/tool). `make test`
// installs the tools first; a test whose tool is missing is skipped with a message.
#include <gtest/gtest.h>

#include <cstdlib>

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
