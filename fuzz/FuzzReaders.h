// The file readers under fuzzing, by name. Each entry parses a whole file held in
// memory through the same code as Parser and then checks that what it built is sound.
// The fuzz targets, the seed generator and the regression replay test share this table.
#pragma once

#include <cmath>
#include <memory>
#include <string>
#include <string_view>

#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/io/PointFormatInternal.h>

namespace zolfuzz {

/// What one parse gave.
struct Outcome {
    bool parsed = false;  ///< a mesh or cloud came back
    bool sound = true;    ///< false when what came back breaks its own invariants
    int elements = 0;     ///< triangles of a mesh, points of a cloud
};

/// A mesh is sound when every triangle corner names a vertex and every attribute the
/// mesh claims can be read for every vertex and triangle.
inline Outcome CheckMesh(ZOL::TriMesh* result) {
    std::unique_ptr<ZOL::TriMesh> mesh(result);
    Outcome outcome;
    if (!mesh) return outcome;
    outcome.parsed = true;
    const int vertexCount = mesh->GetVertexCount();
    const int triangleCount = mesh->GetTriangleCount();
    outcome.elements = triangleCount;
    // Every attribute is read, so that a bounds-checked build sees any shortfall.
    volatile double sink = 0;
    for (int t = 0; t < triangleCount; ++t) {
        int ids[3];
        mesh->GetTriangleVertexIds(t, ids);
        for (int k = 0; k < 3; ++k) {
            if (ids[k] < 0 || ids[k] >= vertexCount) outcome.sound = false;
            if (mesh->HasTriangleTexCoord()) sink = sink + mesh->GetTriangleTexcoord(t, k).x;
        }
    }
    for (int i = 0; i < vertexCount; ++i) {
        sink = sink + mesh->GetVertexCoord(i).x + mesh->GetVertexNormal(i).x;
        if (mesh->HasVertexColor()) sink = sink + mesh->GetVertexColor(i).x;
    }
    return outcome;
}

inline bool IsFiniteVector(const ZOL::Vector3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

/// A cloud is sound when its coordinates are finite, its normals finite, its colours
/// in [0, 1], and, on a grid, every point sits in a cell of the grid that maps back to it.
inline Outcome CheckCloud(ZOL::PointCloud* result) {
    std::unique_ptr<ZOL::PointCloud> cloud(result);
    Outcome outcome;
    if (!cloud) return outcome;
    outcome.parsed = true;
    const int count = cloud->GetPointCount();
    outcome.elements = count;
    for (int i = 0; i < count; ++i) {
        bool ok = IsFiniteVector(cloud->GetPointCoord(i));
        if (cloud->HasNormal()) ok = ok && IsFiniteVector(cloud->GetPointNormal(i));
        if (cloud->HasColor()) {
            const ZOL::Vector3 c = cloud->GetPointColor(i);
            for (int k = 0; k < 3; ++k) ok = ok && c[k] >= 0.0 && c[k] <= 1.0;
        }
        if (cloud->HasGridTopology()) {
            const int width = cloud->GetWidth();
            const int cell = cloud->GetPointGridId(i);
            ok = ok && width > 0 && cell >= 0 && cell / width < cloud->GetHeight() &&
                 cloud->GetGridPointId(cell % width, cell / width) == i;
        }
        outcome.sound = outcome.sound && ok;
    }
    if (cloud->HasGridTopology()) {
        const long long cells = static_cast<long long>(cloud->GetWidth()) * cloud->GetHeight();
        outcome.sound = outcome.sound && count <= cells;
    }
    return outcome;
}

/// One reader: its name (also the fuzz target's and the regression files' prefix), the
/// extensions of the shared sample files that seed it, and the parse.
struct Reader {
    const char* name;
    const char* seedExtensions;  ///< blank-separated, lower case
    Outcome (*run)(std::string_view bytes);
};

inline const Reader kReaders[] = {
    {"mesh_obj", "obj",
     [](std::string_view b) { return CheckMesh(ZOL::ParseMeshOBJ(b, "fuzz.obj")); }},
    {"mesh_stl_ascii", "stl",
     [](std::string_view b) { return CheckMesh(ZOL::ParseMeshSTLAscii(b)); }},
    {"mesh_stl_binary", "stl",
     [](std::string_view b) { return CheckMesh(ZOL::ParseMeshSTLBinary(b)); }},
    {"mesh_off", "off",
     [](std::string_view b) { return CheckMesh(ZOL::ParseMeshOFF(b, "fuzz.off")); }},
    {"mesh_ply", "ply",
     [](std::string_view b) { return CheckMesh(ZOL::ParseMeshPLY(b, "fuzz.ply")); }},
    {"mesh_zpt", "zpt",
     [](std::string_view b) { return CheckMesh(ZOL::ParseMeshZPT(b, "fuzz.zpt")); }},
    {"cloud_asc", "asc xyz xyzn",
     [](std::string_view b) { return CheckCloud(ZOL::pointio::ImportPointCloudByASC(b, false)); }},
    {"cloud_casc", "casc xyzrgb xyz",
     [](std::string_view b) { return CheckCloud(ZOL::pointio::ImportPointCloudByASC(b, true)); }},
    {"cloud_obj", "obj",
     [](std::string_view b) { return CheckCloud(ZOL::pointio::ImportPointCloudByOBJ(b)); }},
    {"cloud_ply_ascii", "ply",
     [](std::string_view b) { return CheckCloud(ZOL::pointio::ImportPointCloudByPLY(b)); }},
    {"cloud_ply_binary", "ply",
     [](std::string_view b) { return CheckCloud(ZOL::pointio::ImportPointCloudByPLY(b)); }},
    {"cloud_zpc", "zpc",
     [](std::string_view b) { return CheckCloud(ZOL::pointio::ImportPointCloudByZPC(b)); }},
    {"cloud_zbp", "zbp",
     [](std::string_view b) { return CheckCloud(ZOL::pointio::ImportPointCloudByZBP(b)); }},
    {"cloud_zbg", "zbg",
     [](std::string_view b) { return CheckCloud(ZOL::pointio::ImportPointCloudByZBG(b)); }},
};

/// The reader called \p name, or null.
inline const Reader* FindReader(std::string_view name) {
    for (const Reader& reader : kReaders) {
        if (name == reader.name) return &reader;
    }
    return nullptr;
}

}  // namespace zolfuzz
