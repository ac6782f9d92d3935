// Every reader, mesh and point cloud, on damaged input: all prefixes of a valid file,
// seeded byte flips, numbers replaced by huge counts, negative counts and NaN. Each run
// must give a sound result or null with its log line, and read nothing outside the
// bytes: the parsers get exactly sized heap copies, so the sanitizers see any overrun.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/io/Parser.h>
#include <zol/io/PointFormatInternal.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

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

// Runs \p parse on every damaged variant of \p bytes, each in a heap block of exactly
// its size. \return how many variants gave no result.
std::size_t CountFailures(const std::string& bytes,
                          bool binary,
                          const std::function<bool(std::string_view)>& parse) {
    std::size_t failures = 0;
    for (const std::string& variant : Damaged(bytes, binary)) {
        std::unique_ptr<char[]> copy(new char[std::max<std::size_t>(variant.size(), 1)]);
        std::memcpy(copy.get(), variant.data(), variant.size());
        failures += parse(std::string_view(copy.get(), variant.size())) ? 0 : 1;
    }
    return failures;
}

TriMesh SmallMesh() {
    TriMesh mesh = zoltest::MakeUnitCube();
    mesh.SetHasVertexColor(true);
    mesh.SetHasTriangleTexCoord(true);
    for (int i = 0; i < mesh.GetVertexCount(); ++i) mesh.SetVertexColor(i, Vector3(i / 8.0, 0, 1));
    for (int t = 0; t < mesh.GetTriangleCount(); ++t) {
        for (int k = 0; k < 3; ++k) mesh.SetTriangleTexcoord(t, k, Vector3(k * 0.5, t / 12.0, 0));
    }
    return mesh;
}

// A sound mesh: every corner names a vertex and the attribute arrays match the counts.
bool SoundMesh(TriMesh* mesh) {
    std::unique_ptr<TriMesh> owned(mesh);
    if (!mesh) return false;
    int ids[3];
    for (int t = 0; t < mesh->GetTriangleCount(); ++t) {
        mesh->GetTriangleVertexIds(t, ids);
        for (const int id : ids) EXPECT_TRUE(id >= 0 && id < mesh->GetVertexCount());
        if (mesh->HasTriangleTexCoord()) mesh->GetTriangleTexcoord(t, 2);
    }
    for (int i = 0; mesh->HasVertexColor() && i < mesh->GetVertexCount(); ++i)
        mesh->GetVertexColor(i);
    return true;
}

// A sound cloud: finite coordinates, and on a grid every point sits in its own cell.
bool SoundCloud(PointCloud* cloud) {
    std::unique_ptr<PointCloud> owned(cloud);
    if (!cloud) return false;
    for (int i = 0; i < cloud->GetPointCount(); ++i) {
        const Vector3 p = cloud->GetPointCoord(i);
        EXPECT_TRUE(std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z));
    }
    if (cloud->HasGridTopology()) {
        EXPECT_LE(cloud->GetPointCount(), cloud->GetWidth() * cloud->GetHeight());
    }
    return true;
}

}  // namespace

TEST(ReaderRobustness, EveryMeshReaderSurvivesDamagedFiles) {
    using MeshParse = TriMesh* (*)(std::string_view, const std::string&);
    TriMesh mesh = SmallMesh();
    auto written = [&](const char* extension) {
        const std::string path = zoltest::ScratchPath(std::string("damaged.") + extension);
        EXPECT_EQ(Parser::ExportTriMesh(path, &mesh), 0);
        return zoltest::ReadFile(path);
    };
    // Ours, plus a text STL and a textured OBJ as other authors write them.
    const struct {
        MeshParse parse;
        std::string bytes;
        bool binary;
    } cases[] = {
        {ParseMeshOBJ, written("obj"), false},
        {ParseMeshSTL, written("stl"), true},
        {ParseMeshOFF, written("off"), false},
        {ParseMeshPLY, written("ply"), false},
        {ParseMeshZPT, written("zpt"), false},
        {ParseMeshSTL, zoltest::ReadFile(zoltest::DataPath("formats/stl/triangle.stl")), false},
        {ParseMeshOBJ, zoltest::ReadFile(zoltest::DataPath("formats/obj/textured_tetrahedron.obj")),
         false},
    };
    zoltest::LogCapture log;
    std::size_t failures = 0;
    for (const auto& c : cases) {
        failures += CountFailures(c.bytes, c.binary, [&](std::string_view v) {
            return SoundMesh(c.parse(v, "damaged"));
        });
    }
    EXPECT_GT(failures, 0u);
    // A mesh reader is silent on success and writes exactly one line on failure.
    EXPECT_EQ(log.Lines().size(), failures);
}

TEST(ReaderRobustness, EveryPointReaderSurvivesDamagedFiles) {
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
    const struct {
        const char* extension;
        bool grid;
        bool binary;
        std::function<PointCloud*(std::string_view)> read;
    } cases[] = {
        {"asc", false, false,
         [](std::string_view b) { return pointio::ImportPointCloudByASC(b, false); }},
        {"casc", false, false,
         [](std::string_view b) { return pointio::ImportPointCloudByASC(b, true); }},
        {"obj", false, false, pointio::ImportPointCloudByOBJ},
        {"ply", false, false, pointio::ImportPointCloudByPLY},
        {"ply", true, false, pointio::ImportPointCloudByPLY},
        {"zpc", false, false, pointio::ImportPointCloudByZPC},
        {"zbp", false, true, pointio::ImportPointCloudByZBP},
        {"zbg", true, true, pointio::ImportPointCloudByZBG},
    };
    zoltest::LogCapture log;
    std::size_t failures = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.extension);
        const std::string source = zoltest::ScratchPath(std::string("damaged.") + c.extension);
        ASSERT_EQ(c.grid ? Parser::ExportGridPointCloud(source, &grid)
                         : Parser::ExportPointCloud(source, &cloud),
                  RESULT_OK);
        failures += CountFailures(zoltest::ReadFile(source), c.binary,
                                  [&](std::string_view v) { return SoundCloud(c.read(v)); });
    }
    // Every failure has its line; a success may add one about dropped points or grid.
    std::size_t failureLines = 0;
    for (const std::string& line : log.Lines()) {
        failureLines += line.find("dropped points") == std::string::npos &&
                        line.find("grid ignored") == std::string::npos;
    }
    EXPECT_GT(failures, 0u);
    EXPECT_EQ(failureLines, failures);
}
