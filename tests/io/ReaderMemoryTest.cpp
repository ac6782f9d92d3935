// Memory a reader may take: a header that lies about its counts is refused with its
// line before anything is sized by the count, and real files never cost more than a
// small multiple of their size. Peaks are counted by the test's operator new.
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>
#include <zol/io/Parser.h>

#include "tests/common/AllocationCounter.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

std::string U32(std::uint32_t v) {
    std::string bytes;
    for (int k = 0; k < 4; ++k) bytes.push_back(static_cast<char>(v >> (8 * k)));
    return bytes;
}

std::string U64(std::uint64_t v) { return U32(static_cast<std::uint32_t>(v)) + U32(v >> 32); }

// Reads \p path as a mesh or a cloud. \return whether a result came back, and the
// peak heap use of the read in \p peak.
bool Read(const std::string& path, bool mesh, std::size_t& peak) {
    zoltest::AllocationScope scope;
    bool read = false;
    if (mesh) {
        read = std::unique_ptr<TriMesh>(Parser::ImportTriMesh(path)) != nullptr;
    } else {
        read = std::unique_ptr<PointCloud>(Parser::ImportPointCloud(path)) != nullptr;
    }
    peak = scope.Peak();
    return read;
}

const std::string kXyz = "property float x\nproperty float y\nproperty float z\n";
constexpr const char* kTrillion = "1000000000000";

}  // namespace

TEST(ReaderMemory, HeaderClaimingATrillionVerticesIsRefusedBeforeAllocating) {
    const std::string ply = "ply\nformat ascii 1.0\nelement vertex ";
    const std::string stlHeader = std::string(80, ' ') + U32(0xffffffffu);
    const std::string zbg = std::string("ZBGC") + U32(1) + U32(0);
    const struct {
        const char* name;
        bool mesh;
        std::string bytes;
        std::string line;
    } cases[] = {
        {"vertices.ply", true, ply + kTrillion + "\n" + kXyz + "end_header\n0 0 0\n",
         "ImportMeshByPLY: element vertex count 1000000000000 exceeds the file size"},
        {"faces.ply", true,
         ply + "3\n" + kXyz + "element face " + kTrillion + "\nend_header\n0 0 0\n1 0 0\n0 1 0\n",
         "ImportMeshByPLY: element face count 1000000000000 exceeds the file size"},
        {"vertices.off", true, std::string("OFF\n") + kTrillion + " 1 0\n0 0 0\n",
         "ImportMeshByOFF: vertex count 1000000000000 exceeds the file size"},
        {"triangles.zpt", true, std::string("1 1 ") + kTrillion + " 0\n0 0 0 0 0 1 1 1 1\n",
         "ImportMeshByZPT: triangle count 1000000000000 exceeds the file size"},
        {"texcoords.zpt", true, std::string("1 1 0 ") + kTrillion + "\n0 0 0 0 0 1 1 1 1\n",
         "ImportMeshByZPT: texture coordinate count 1000000000000 exceeds the file size"},
        {"faces.stl", true, stlHeader + std::string(50, '\x80'),
         "ImportMeshBySTL:: invalid faceCount: 4294967295"},
        {"cloud.ply", false, ply + kTrillion + "\n" + kXyz + "end_header\n0 0 0\n",
         "ImportPointCloudByPLY: element vertex count 1000000000000 exceeds the file size"},
        {"binary.ply", false,
         "ply\nformat binary_little_endian 1.0\nelement vertex " + std::string(kTrillion) + "\n" +
             kXyz + "end_header\n" + std::string(12, '\0'),
         "ImportPointCloudByPLY: element vertex count 1000000000000 exceeds the file size"},
        {"grid.ply", false,
         ply + "1\n" + kXyz + "element range_grid " + kTrillion +
             "\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 0\n",
         "ImportPointCloudByPLY: element range_grid count 1000000000000 exceeds the file size"},
        {"points.zpc", false, std::string("ZPC 1\n") + kTrillion + " 0 0\n1 2 3\n",
         "ImportPointCloudByZPC: point count 1e+12 exceeds the file size"},
        {"points.zbp", false,
         std::string("ZBPC") + U32(1) + U32(0) + U32(0) + U64(1000000000000) +
             std::string(24, '\0'),
         "ImportPointCloudByZBP: point count 1000000000000 does not match the file size 48"},
        {"cells.zbg", false, zbg + U32(1000000) + U32(1000000) + U32(0) + U64(0),
         "ImportPointCloudByZBG: invalid grid size 1000000 x 1000000"},
        {"points.zbg", false,
         zbg + U32(4) + U32(4) + U32(0) + U64(1000000000000) + std::string(28, '\0'),
         "ImportPointCloudByZBG: point count 1000000000000 does not match the file size 60"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = zoltest::ScratchPath(c.name);
        std::ofstream(path, std::ios::binary) << c.bytes;
        zoltest::LogCapture log;
        std::size_t peak = 0;
        EXPECT_FALSE(Read(path, c.mesh, peak));
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
        // The file's own bytes and a few small strings; nothing sized by the count.
        EXPECT_LE(peak, c.bytes.size() + 4096);
    }
}

TEST(ReaderMemory, RealFilesTakeASmallMultipleOfTheirSize) {
    const struct {
        const char* path;
        bool mesh;
    } cases[] = {
        {"bunny/bun000.ply", false},
        {"bunny/bun_zipper_res2.ply", true},
        {"meshes/hammer.obj", true},
        {"meshes/bunny.off", true},
        {"formats/stl/Spider_ascii.stl", true},
        {"formats/stl/Spider_binary.stl", true},
        {"clouds/sac_plane_test.xyzn", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const std::string path = zoltest::DataPath(c.path);
        const std::size_t size = zoltest::ReadFile(path).size();
        std::size_t peak = 0;
        ASSERT_TRUE(Read(path, c.mesh, peak));
        // Binary STL is the densest: 50 bytes become three vertices and a triangle.
        EXPECT_LE(peak, 12 * size);
    }
}
