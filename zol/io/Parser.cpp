// File dispatch: the extension after the last "." picks the reader or writer from
// ordered tables, for meshes (reading and writing list the formats in different
// orders) and for point clouds. A point-cloud file is read once here; the format
// readers parse its bytes.
#include <zol/io/Parser.h>

#include <cctype>
#include <new>

#include <zol/core/IGridPointCloud.h>
#include <zol/core/IPointCloud.h>
#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/io/PointFormatInternal.h>
#include <zol/io/TextScanInternal.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

namespace {

// One row of a dispatch table: an extension and the function that handles it.
template <typename Function>
struct Entry {
    const char* extension;
    Function handle;
};

// The function of \p extension in \p table, or null when the table has none.
template <typename Function, std::size_t N>
Function Lookup(const Entry<Function> (&table)[N], const std::string& extension) {
    for (const Entry<Function>& entry : table) {
        if (extension == entry.extension) return entry.handle;
    }
    return nullptr;
}

using MeshReader = TriMesh* (*)(const std::string&);
using MeshWriter = int (*)(const std::string&, const ITriMesh*);
using CloudReader = PointCloud* (*)(std::string_view);
using CloudWriter = int (*)(const std::string&, const pointio::PointView&);

// PLY with colours when the mesh is a TriMesh that has them.
int WritePly(const std::string& fileName, const ITriMesh* triMesh) {
    const TriMesh* mesh = dynamic_cast<const TriMesh*>(triMesh);
    if (mesh != nullptr && mesh->HasVertexColor()) return ExportMeshByPLYWithColor(fileName, mesh);
    return ExportMeshByPLYWithoutColor(fileName, triMesh);
}

// ZPT stores TriMesh attributes, so other meshes cannot be written in it.
int WriteZpt(const std::string& fileName, const ITriMesh* triMesh) {
    if (triMesh == nullptr) return ExportMeshByZPT(fileName, nullptr);
    const TriMesh* mesh = dynamic_cast<const TriMesh*>(triMesh);
    if (mesh == nullptr)
        return LogFailure(RESULT_FAIL, "Parser::ExportTriMesh: not support format");
    return ExportMeshByZPT(fileName, mesh);
}

const Entry<MeshReader> kMeshReaders[] = {
    {"obj", ImportMeshByOBJ}, {"stl", ImportMeshBySTL}, {"off", ImportMeshByOFF},
    {"ply", ImportMeshByPLY}, {"zpt", ImportMeshByZPT},
};

const Entry<MeshWriter> kMeshWriters[] = {
    {"obj", ExportMeshByOBJ}, {"stl", ExportMeshBySTL2Binary},
    {"ply", WritePly},        {"off", ExportMeshByOFF},
    {"zpt", WriteZpt},
};

PointCloud* ReadAsc(std::string_view bytes) { return pointio::ImportPointCloudByASC(bytes, false); }
PointCloud* ReadColoredAsc(std::string_view bytes) {
    return pointio::ImportPointCloudByASC(bytes, true);
}
int WriteAsc(const std::string& fileName, const pointio::PointView& view) {
    return pointio::ExportPointCloudByASC(fileName, view, false);
}
int WriteColoredAsc(const std::string& fileName, const pointio::PointView& view) {
    return pointio::ExportPointCloudByASC(fileName, view, true);
}

const Entry<CloudReader> kCloudReaders[] = {
    {"asc", ReadAsc},
    {"xyz", ReadAsc},
    {"xyzn", ReadAsc},
    {"casc", ReadColoredAsc},
    {"xyzrgb", ReadColoredAsc},
    {"obj", pointio::ImportPointCloudByOBJ},
    {"ply", pointio::ImportPointCloudByPLY},
    {"zpc", pointio::ImportPointCloudByZPC},
    {"zbp", pointio::ImportPointCloudByZBP},
    {"zbg", pointio::ImportPointCloudByZBG},
};

const Entry<CloudWriter> kCloudWriters[] = {
    {"asc", WriteAsc},
    {"xyz", WriteAsc},
    {"xyzn", WriteAsc},
    {"casc", WriteColoredAsc},
    {"xyzrgb", WriteColoredAsc},
    {"obj", pointio::ExportPointCloudByOBJ},
    {"ply", pointio::ExportPointCloudByPLY},
    {"zpc", pointio::ExportPointCloudByZPC},
    {"zbp", pointio::ExportPointCloudByZBP},
};

// Grid clouds keep their grid in these formats only.
const Entry<CloudWriter> kGridWriters[] = {
    {"zbg", pointio::ExportPointCloudByZBG},
    {"ply", pointio::ExportPointCloudByPLY},
};

// The lower-cased text after the last "."; false when the name has no ".".
bool Extension(const std::string& fileName, std::string& extension) {
    const std::size_t dot = fileName.rfind('.');
    if (dot == std::string::npos) return false;
    extension = fileName.substr(dot + 1);
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return true;
}

}  // namespace

TriMesh* Parser::ImportTriMesh(std::string fileName) {
    std::string extension;
    if (!Extension(fileName, extension)) {
        LogLine("Parser::ImportTriMesh: invalid fileName: ", fileName);
        return nullptr;
    }
    if (const MeshReader read = Lookup(kMeshReaders, extension)) return read(fileName);
    LogLine("Parser::ImportTriMesh: non support format: ", fileName);
    return nullptr;
}

int Parser::ExportTriMesh(std::string fileName, const ITriMesh* triMesh) {
    std::string extension;
    if (!Extension(fileName, extension)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Parser::ExportTriMesh: invalid fileName: ", fileName);
    }
    if (const MeshWriter write = Lookup(kMeshWriters, extension)) return write(fileName, triMesh);
    return LogFailure(RESULT_FAIL, "Parser::ExportTriMesh: not support format");
}

PointCloud* Parser::ImportPointCloud(std::string fileName) {
    std::string extension;
    if (!Extension(fileName, extension)) {
        LogLine("Parser::ImportPointCloud: invalid fileName: ", fileName);
        return nullptr;
    }
    const CloudReader read = Lookup(kCloudReaders, extension);
    if (read == nullptr) {
        LogLine("Parser::ImportPointCloud: non support format: ", fileName);
        return nullptr;
    }
    try {
        FileContent content;
        if (!content.Read(fileName)) {
            LogLine("Parser::ImportPointCloud: can not open file: ", fileName);
            return nullptr;
        }
        return read(content.View());
    } catch (const std::bad_alloc&) {
        LogLine("Parser::ImportPointCloud: out of memory: ", fileName);
        return nullptr;
    }
}

int Parser::ExportPointCloud(std::string fileName, const IPointCloud* pointCloud) {
    if (pointCloud == nullptr)
        return LogFailure(RESULT_INVALID_INPUT, "Parser::ExportPointCloud: pointCloud is NULL");
    std::string extension;
    if (!Extension(fileName, extension)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Parser::ExportPointCloud: invalid fileName: ", fileName);
    }
    const CloudWriter write = Lookup(kCloudWriters, extension);
    if (write == nullptr)
        return LogFailure(RESULT_FAIL, "Parser::ExportPointCloud: not support format");
    return write(fileName, pointio::PointView(*pointCloud));
}

int Parser::ExportGridPointCloud(std::string fileName, const IGridPointCloud* gridPointCloud) {
    if (gridPointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Parser::ExportGridPointCloud: gridPointCloud is NULL");
    }
    if (gridPointCloud->GetWidth() < 1 || gridPointCloud->GetHeight() < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "Parser::ExportGridPointCloud: invalid grid size ",
                          gridPointCloud->GetWidth(), " x ", gridPointCloud->GetHeight());
    }
    std::string extension;
    if (!Extension(fileName, extension)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Parser::ExportGridPointCloud: invalid fileName: ", fileName);
    }
    const CloudWriter write = Lookup(kGridWriters, extension);
    if (write == nullptr)
        return LogFailure(RESULT_FAIL, "Parser::ExportGridPointCloud: not support format");
    return write(fileName, pointio::PointView(*gridPointCloud));
}

}  // namespace ZOL
