// Writes the seed corpus of every fuzz target: small valid files of each format made by
// our own writers (or by hand where we write no such file), the shared sample files of
// matching extensions, dump files of recorded calls, and the target's regression files.
// Prints the target names.
//   zol_fuzz_seeds <outDir> [<sampleDir> [<regressionDir>]]
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>
#include <zol/io/Parser.h>
#include <zol/runtime/LogSystem.h>

#include "fuzz/DumpSeeds.h"
#include "fuzz/FuzzReaders.h"

namespace fs = std::filesystem;
using ZOL::Parser;
using ZOL::PointCloud;
using ZOL::TriMesh;
using ZOL::Vector3;

namespace {

// Larger samples only slow every execution down; the fuzzer cuts inputs to a few KiB.
constexpr std::uintmax_t kMaxSampleBytes = 128 * 1024;

void WriteText(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

TriMesh Tetrahedron(bool color, bool texcoord) {
    TriMesh mesh;
    const Vector3 corners[] = {{0, 0, 0}, {1.5, 0, 0}, {0, 2.25, 0}, {0, 0, -0.125}};
    for (const Vector3& c : corners) mesh.InsertVertex(c);
    const int faces[4][3] = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {0, 3, 2}};
    for (const auto& f : faces) mesh.InsertTriangle(f[0], f[1], f[2]);
    mesh.UpdateNormal();
    if (color) {
        mesh.SetHasVertexColor(true);
        for (int i = 0; i < 4; ++i) mesh.SetVertexColor(i, Vector3(i / 3.0, 0.5, 1));
    }
    if (texcoord) {
        mesh.SetHasTriangleTexCoord(true);
        for (int t = 0; t < 4; ++t) {
            for (int k = 0; k < 3; ++k)
                mesh.SetTriangleTexcoord(t, k, Vector3(k / 2.0, t / 4.0, 0));
        }
    }
    return mesh;
}

PointCloud Cloud(bool normal, bool color) {
    PointCloud cloud(normal, color, false);
    for (int i = 0; i < 5; ++i) {
        const int id = cloud.InsertPoint(Vector3(i, -0.5 * i, 1.0 / (i + 1)), Vector3(0, 0.6, 0.8));
        if (color) cloud.SetPointColor(id, Vector3(i / 4.0, 1, 0));
    }
    return cloud;
}

PointCloud Grid() {
    PointCloud grid(true, true, true);
    grid.InitGrid(4, 3);
    for (int cell = 0; cell < 12; cell += 3) {
        grid.SetGridCoord(cell % 4, cell / 4, Vector3(cell, 1, 2));
        grid.SetGridNormal(cell % 4, cell / 4, Vector3(1, 0, 0));
        grid.SetPointColor(grid.GetGridPointId(cell % 4, cell / 4), Vector3(0.2, 0.4, 0.6));
    }
    return grid;
}

// A binary PLY with a vertex element (float coordinates, byte colours), a face list and
// a range grid, in either byte order.
std::string BinaryPly(bool bigEndian) {
    std::string bytes = std::string("ply\nformat ") +
                        (bigEndian ? "binary_big_endian" : "binary_little_endian") +
                        " 1.0\nobj_info num_cols 2\nobj_info num_rows 2\nelement vertex 3\n"
                        "property float x\nproperty float y\nproperty float z\n"
                        "property uchar red\nproperty uchar green\nproperty uchar blue\n"
                        "element face 1\nproperty list uchar int vertex_indices\n"
                        "element range_grid 4\nproperty list uchar int vertex_indices\n"
                        "end_header\n";
    auto put = [&](const void* value, std::size_t size) {
        char b[8];
        std::memcpy(b, value, size);
        if (bigEndian) std::reverse(b, b + size);
        bytes.append(b, size);
    };
    for (int i = 0; i < 3; ++i) {
        const float xyz[3] = {float(i), 0.5f * i, -1.0f};
        for (const float v : xyz) put(&v, 4);
        const unsigned char rgb[3] = {10, 200, static_cast<unsigned char>(80 * i)};
        bytes.append(reinterpret_cast<const char*>(rgb), 3);
    }
    const std::int32_t face[3] = {0, 1, 2};
    bytes.push_back(3);
    for (const std::int32_t v : face) put(&v, 4);
    const std::int32_t cellVertex[4] = {0, -1, 1, 2};
    for (const std::int32_t v : cellVertex) {
        bytes.push_back(v < 0 ? 0 : 1);
        if (v >= 0) put(&v, 4);
    }
    return bytes;
}

// Writes the generated seeds of \p reader into \p dir.
void WriteGenerated(const std::string& reader, const fs::path& dir) {
    auto at = [&](const char* name) { return (dir / name).string(); };
    const TriMesh plain = Tetrahedron(false, false);
    const TriMesh full = Tetrahedron(true, true);
    if (reader == "mesh_obj") {
        Parser::ExportTriMesh(at("tet.obj"), &plain);
        Parser::ExportTriMesh(at("tet_color.obj"), &full);
        WriteText(dir / "textured.obj",
                  "# textured quad\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\n"
                  "vt 1 1\nvt 0 1\nvn 0 0 1\nf 1/1/1 2/2/1 3/3/1 4/4/1\nf 1//1 3//1 4//1\n");
    } else if (reader == "mesh_stl_ascii") {
        WriteText(dir / "two.stl",
                  "solid two\nfacet normal 0 0 1\n outer loop\n  vertex 0 0 0\n  vertex 1 0 0\n"
                  "  vertex 0 1 0\n endloop\nendfacet\nfacet normal 0 0 -1\n outer loop\n"
                  "  vertex 0 0 0\n  vertex 0 1 0\n  vertex -1.5e-3 2E1 0.25\n endloop\n"
                  "endfacet\nendsolid two\n");
    } else if (reader == "mesh_stl_binary") {
        Parser::ExportTriMesh(at("tet.stl"), &plain);
    } else if (reader == "mesh_off") {
        Parser::ExportTriMesh(at("tet.off"), &plain);
        WriteText(dir / "quad.off",
                  "OFF\n# a quad\n4 1 4\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n4 0 1 2 3\n");
    } else if (reader == "mesh_ply") {
        Parser::ExportTriMesh(at("tet.ply"), &plain);
        Parser::ExportTriMesh(at("tet_color.ply"), &full);
    } else if (reader == "mesh_zpt") {
        Parser::ExportTriMesh(at("tet.zpt"), &plain);
        Parser::ExportTriMesh(at("tet_full.zpt"), &full);
    } else if (reader == "cloud_asc" || reader == "cloud_casc") {
        const PointCloud bare = Cloud(false, false);
        const PointCloud oriented = Cloud(true, true);
        Parser::ExportPointCloud(at("bare.xyz"), &bare);
        Parser::ExportPointCloud(at("oriented.xyzn"), &oriented);
        Parser::ExportPointCloud(at("colored.casc"), &oriented);
        WriteText(dir / "columns.xyz",
                  "# x y z r g b a\n// comment\n1 2 3 10 20 30 255\n\n4.5 -6 7e2 0 255 1 0\n");
    } else if (reader == "cloud_obj") {
        const PointCloud oriented = Cloud(true, true);
        Parser::ExportPointCloud(at("oriented.obj"), &oriented);
    } else if (reader == "cloud_ply_ascii") {
        const PointCloud oriented = Cloud(true, true);
        const PointCloud grid = Grid();
        Parser::ExportPointCloud(at("oriented.ply"), &oriented);
        Parser::ExportGridPointCloud(at("grid.ply"), &grid);
    } else if (reader == "cloud_ply_binary") {
        WriteText(dir / "little.ply", BinaryPly(false));
        WriteText(dir / "big.ply", BinaryPly(true));
    } else if (reader == "cloud_zpc" || reader == "cloud_zbp") {
        const char* extension = reader == "cloud_zpc" ? "zpc" : "zbp";
        const PointCloud bare = Cloud(false, false);
        const PointCloud oriented = Cloud(true, true);
        Parser::ExportPointCloud(at((std::string("bare.") + extension).c_str()), &bare);
        Parser::ExportPointCloud(at((std::string("oriented.") + extension).c_str()), &oriented);
    } else if (reader == "cloud_zbg") {
        const PointCloud grid = Grid();
        Parser::ExportGridPointCloud(at("grid.zbg"), &grid);
    }
}

std::string LowerExtension(const fs::path& path) {
    std::string extension = path.extension().string();
    if (!extension.empty()) extension.erase(0, 1);
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

// Copies the files under \p from that \p accept takes into \p dir, flattening the path.
template <typename Accept>
void CopyMatching(const fs::path& from, const fs::path& dir, Accept accept) {
    std::error_code error;
    if (!fs::is_directory(from, error)) return;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(from, error)) {
        if (!entry.is_regular_file() || !accept(entry.path()) ||
            entry.file_size() > kMaxSampleBytes) {
            continue;
        }
        std::string name = fs::relative(entry.path(), from).string();
        std::replace(name.begin(), name.end(), '/', '_');
        fs::copy_file(entry.path(), dir / name, fs::copy_options::overwrite_existing, error);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s <outDir> [<sampleDir> [<regressionDir>]]\n", argv[0]);
        return 2;
    }
    // Our writers log nothing on success; keep any line out of the working directory.
    ZOL::LogSystem::SetLogFileName((fs::path(argv[1]) / "seeds.log").string());
    for (const zolfuzz::Reader& reader : zolfuzz::kReaders) {
        const fs::path dir = fs::path(argv[1]) / reader.name;
        fs::create_directories(dir);
        WriteGenerated(reader.name, dir);
        if (argc > 2) {
            std::istringstream list(reader.seedExtensions);
            std::vector<std::string> extensions{std::istream_iterator<std::string>(list), {}};
            CopyMatching(argv[2], dir, [&](const fs::path& p) {
                return std::count(extensions.begin(), extensions.end(), LowerExtension(p)) > 0;
            });
        }
        if (argc > 3) {
            const std::string prefix = std::string(reader.name) + "-";
            CopyMatching(argv[3], dir, [&](const fs::path& p) {
                return p.filename().string().rfind(prefix, 0) == 0;
            });
        }
        std::printf("%s\n", reader.name);
    }
    // The dump loader: files of recorded calls, and its regression files.
    const fs::path dumpDir = fs::path(argv[1]) / "dump";
    fs::create_directories(dumpDir);
    zolfuzz::WriteDumpSeeds(dumpDir.string());
    if (argc > 3) {
        CopyMatching(argv[3], dumpDir, [](const fs::path& p) {
            return p.filename().string().rfind("dump-", 0) == 0;
        });
    }
    std::printf("dump\n");
    return 0;
}
