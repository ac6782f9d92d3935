// Mesh file dispatch: the extension after the last "." picks the reader or writer from
// two ordered tables (reading and writing list the formats in different orders).
#include <zol/io/Parser.h>

#include <cctype>

#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

namespace {

using MeshReader = TriMesh* (*)(const std::string&);
using MeshWriter = int (*)(const std::string&, const ITriMesh*);

struct ReaderEntry {
    const char* extension;
    MeshReader read;
};

struct WriterEntry {
    const char* extension;
    MeshWriter write;
};

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

const ReaderEntry kReaders[] = {
    {"obj", ImportMeshByOBJ}, {"stl", ImportMeshBySTL}, {"off", ImportMeshByOFF},
    {"ply", ImportMeshByPLY}, {"zpt", ImportMeshByZPT},
};

const WriterEntry kWriters[] = {
    {"obj", ExportMeshByOBJ}, {"stl", ExportMeshBySTL2Binary},
    {"ply", WritePly},        {"off", ExportMeshByOFF},
    {"zpt", WriteZpt},
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
    for (const ReaderEntry& entry : kReaders) {
        if (extension == entry.extension) return entry.read(fileName);
    }
    LogLine("Parser::ImportTriMesh: non support format: ", fileName);
    return nullptr;
}

int Parser::ExportTriMesh(std::string fileName, const ITriMesh* triMesh) {
    std::string extension;
    if (!Extension(fileName, extension)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Parser::ExportTriMesh: invalid fileName: ", fileName);
    }
    for (const WriterEntry& entry : kWriters) {
        if (extension == entry.extension) return entry.write(fileName, triMesh);
    }
    return LogFailure(RESULT_FAIL, "Parser::ExportTriMesh: not support format");
}

}  // namespace ZOL
