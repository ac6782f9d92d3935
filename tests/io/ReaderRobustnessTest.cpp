// Every reader on damaged input (prefixes, seeded byte flips, hostile numbers) and on the
// fuzz findings in tests/io/regressions: a sound result or null with its log line, and no
// byte read outside the input, which the parsers get as an exactly sized heap copy.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/io/Parser.h>

#include "fuzz/FuzzReaders.h"
#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

const std::string kRegressions = std::string(ZOL_SOURCE_DIR) + "/tests/io/regressions";

// The damaged variants of \p bytes: every prefix, seeded flips of three bytes, and, in
// text, each of the first tokens replaced by a hostile number; in binary, each aligned
// 32-bit word replaced by a hostile pattern.
std::vector<std::string> Damaged(const std::string& bytes, bool binary) {
    std::vector<std::string> variants;
    for (std::size_t cut = 0; cut < bytes.size(); ++cut) variants.push_back(bytes.substr(0, cut));
    std::mt19937 rng(11);
    std::uniform_int_distribution<std::size_t> where(0, bytes.size() - 1);
    std::uniform_int_distribution<int> value(0, 255);
    for (int trial = 0; trial < 200; ++trial) {
        std::string corrupt = bytes;
        for (int k = 0; k < 3; ++k) corrupt[where(rng)] = static_cast<char>(value(rng));
        variants.push_back(corrupt);
    }
    if (binary) {
        const std::uint32_t words[] = {0xffffffffu, 0x7fffffffu, 0x80000000u, 0x7fc00000u};
        for (std::size_t at = 0; at + 4 <= bytes.size() && at < 256; at += 4) {
            for (const std::uint32_t w : words) {
                std::string changed = bytes;
                std::memcpy(&changed[at], &w, 4);
                variants.push_back(changed);
            }
        }
        return variants;
    }
    const char* numbers[] = {"nan", "-1", "2147483647", "99999999999999999999", "1e999"};
    std::size_t start = 0;
    for (int token = 0; token < 60; ++token) {
        start = bytes.find_first_not_of(" \t\r\n", start);
        if (start == std::string::npos) break;
        const std::size_t end = std::min(bytes.find_first_of(" \t\r\n", start), bytes.size());
        for (const char* n : numbers) {
            variants.push_back(bytes.substr(0, start) + n + bytes.substr(end));
        }
        start = end;
    }
    return variants;
}

// Runs \p reader on \p bytes held in a heap block of exactly their size.
zolfuzz::Outcome RunExact(const zolfuzz::Reader& reader, const std::string& bytes) {
    std::unique_ptr<char[]> copy(new char[std::max<std::size_t>(bytes.size(), 1)]);
    std::memcpy(copy.get(), bytes.data(), bytes.size());
    return reader.run(std::string_view(copy.get(), bytes.size()));
}

// Runs \p reader on every damaged variant of \p bytes; each result must be sound.
// \return how many variants gave no result.
std::size_t CountFailures(const zolfuzz::Reader& reader, const std::string& bytes, bool binary) {
    std::size_t failures = 0;
    for (const std::string& variant : Damaged(bytes, binary)) {
        const zolfuzz::Outcome outcome = RunExact(reader, variant);
        EXPECT_TRUE(outcome.sound) << reader.name;
        failures += outcome.parsed ? 0 : 1;
    }
    return failures;
}

const zolfuzz::Reader& ReaderOf(const std::string& name) {
    const zolfuzz::Reader* reader = zolfuzz::FindReader(name);
    EXPECT_NE(reader, nullptr) << name;
    return reader ? *reader : zolfuzz::kReaders[0];
}

// Binary and text STL through the test that tells them apart, as Parser reads them.
const zolfuzz::Reader kStl = {"mesh_stl", "stl", [](std::string_view bytes) {
                                  return zolfuzz::CheckMesh(ParseMeshSTL(bytes, "damaged"));
                              }};

}  // namespace

TEST(ReaderRobustness, EveryReaderSurvivesDamagedFiles) {
    TriMesh mesh = zoltest::MakeUnitCube();
    mesh.SetHasVertexColor(true);
    mesh.SetHasTriangleTexCoord(true);
    for (int i = 0; i < mesh.GetVertexCount(); ++i) mesh.SetVertexColor(i, Vector3(i / 8.0, 0, 1));
    for (int t = 0; t < mesh.GetTriangleCount(); ++t) {
        for (int k = 0; k < 3; ++k) mesh.SetTriangleTexcoord(t, k, Vector3(k * 0.5, t / 12.0, 0));
    }
    PointCloud cloud(true, true, false);
    for (int i = 0; i < 6; ++i) {
        const int id = cloud.InsertPoint(Vector3(i, 0.5 * i, -1.0 / (i + 1)), Vector3(0, 0, 1));
        cloud.SetPointColor(id, Vector3(i / 5.0, 1, 0));
    }
    PointCloud grid(true, true, true);
    grid.InitGrid(4, 3);
    for (int k = 0; k < 12; k += 3) {
        grid.SetGridCoord(k % 4, k / 4, Vector3(k, 1, 2));
        grid.SetGridNormal(k % 4, k / 4, Vector3(1, 0, 0));
    }
    // Our files, a text STL and a textured OBJ as other authors write them.
    auto written = [&](const std::string& extension, char kind) {
        const std::string path = zoltest::ScratchPath("damaged." + extension);
        EXPECT_EQ(kind == 'm'   ? Parser::ExportTriMesh(path, &mesh)
                  : kind == 'g' ? Parser::ExportGridPointCloud(path, &grid)
                                : Parser::ExportPointCloud(path, &cloud),
                  RESULT_OK);
        return zoltest::ReadFile(path);
    };
    const struct {
        const zolfuzz::Reader& reader;
        std::string bytes;
        bool binary;
    } cases[] = {
        {ReaderOf("mesh_obj"), written("obj", 'm'), false},
        {kStl, written("stl", 'm'), true},
        {ReaderOf("mesh_off"), written("off", 'm'), false},
        {ReaderOf("mesh_ply"), written("ply", 'm'), false},
        {ReaderOf("mesh_zpt"), written("zpt", 'm'), false},
        {kStl, zoltest::ReadFile(zoltest::DataPath("formats/stl/triangle.stl")), false},
        {ReaderOf("mesh_obj"),
         zoltest::ReadFile(zoltest::DataPath("formats/obj/textured_tetrahedron.obj")), false},
        {ReaderOf("cloud_asc"), written("asc", 'c'), false},
        {ReaderOf("cloud_casc"), written("casc", 'c'), false},
        {ReaderOf("cloud_obj"), written("obj", 'c'), false},
        {ReaderOf("cloud_ply_ascii"), written("ply", 'c'), false},
        {ReaderOf("cloud_ply_ascii"), written("ply", 'g'), false},
        {ReaderOf("cloud_zpc"), written("zpc", 'c'), false},
        {ReaderOf("cloud_zbp"), written("zbp", 'c'), true},
        {ReaderOf("cloud_zbg"), written("zbg", 'g'), true},
    };
    zoltest::LogCapture log;
    std::size_t failures = 0;
    for (const auto& c : cases) failures += CountFailures(c.reader, c.bytes, c.binary);
    // Every failure has its one line; a mesh read is silent on success, a cloud read may
    // add a line about dropped points or an ignored grid.
    std::size_t failureLines = 0;
    for (const std::string& line : log.Lines()) {
        failureLines += line.find("dropped points") == std::string::npos &&
                        line.find("grid ignored") == std::string::npos;
    }
    EXPECT_GT(failures, 0u);
    EXPECT_EQ(failureLines, failures);
}

TEST(ReaderRobustness, EveryFuzzFindingIsReadSafely) {
    // What each file gives now: its element count, or -1 and the line of its refusal.
    const struct {
        const char* file;
        int elements;
        const char* line;
    } cases[] = {
        // Colours beyond [0, 1] in our own formats used to be kept as written.
        {"cloud_zpc-1.zpc", 5, ""},
        {"cloud_zbp-1.zbp", 5, ""},
        {"cloud_zbg-1.zbg", 4, ""},
        // A point count beyond the range of int64 was converted before it was bounded.
        {"cloud_zpc-2.zpc", -1, "ImportPointCloudByZPC: point count 2e+54 exceeds the file size"},
        // Grid columns times rows overflowed int64 (found by review, replayed alike).
        {"cloud_ply_ascii-1.ply", 1, ""},
    };
    std::vector<std::string> listed;
    for (const auto& c : cases) listed.push_back(c.file);
    for (const auto& entry : std::filesystem::directory_iterator(kRegressions)) {
        const std::string name = entry.path().filename().string();
        EXPECT_NE(std::find(listed.begin(), listed.end(), name), listed.end())
            << name << " has no expected outcome";
    }
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string name = c.file, bytes = zoltest::ReadFile(kRegressions + "/" + name);
        ASSERT_FALSE(bytes.empty());
        zoltest::LogCapture log;
        const zolfuzz::Outcome outcome = RunExact(ReaderOf(name.substr(0, name.find('-'))), bytes);
        EXPECT_TRUE(outcome.sound);
        EXPECT_EQ(outcome.parsed ? outcome.elements : -1, c.elements);
        EXPECT_EQ(log.Lines(),
                  *c.line ? std::vector<std::string>{c.line} : std::vector<std::string>{});
    }
}
