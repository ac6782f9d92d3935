// The per-format mesh readers and writers behind Parser, and what they share: the
// buffers a reader fills before any mesh exists, and the one place that checks them
// and builds the TriMesh, so a malformed file never yields a mesh that fails later.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <zol/core/Vector3.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

class ITriMesh;
class TriMesh;
class FileWriter;

// Readers: a new mesh, or null after one log line.
TriMesh* ImportMeshByOBJ(const std::string& fileName);
TriMesh* ImportMeshBySTL(const std::string& fileName);
TriMesh* ImportMeshByOFF(const std::string& fileName);
TriMesh* ImportMeshByPLY(const std::string& fileName);
TriMesh* ImportMeshByZPT(const std::string& fileName);

// Writers: 0, or a negative status after one log line.
int ExportMeshByOBJ(const std::string& fileName, const ITriMesh* triMesh);
int ExportMeshBySTL2Binary(const std::string& fileName, const ITriMesh* triMesh);
int ExportMeshByOFF(const std::string& fileName, const ITriMesh* triMesh);
int ExportMeshByPLYWithoutColor(const std::string& fileName, const ITriMesh* triMesh);
int ExportMeshByPLYWithColor(const std::string& fileName, const TriMesh* triMesh);
int ExportMeshByZPT(const std::string& fileName, const TriMesh* triMesh);

/// \return true when the STL file content is binary: its size is 84 + 50 n for the
/// count n at byte 80, or one of the 128 bytes after the count is 128 or above.
bool IsBinaryStl(std::string_view content);

/// What a reader collected, before any mesh is made.
struct MeshData {
    std::vector<Vector3> coords;
    std::vector<int> corners;              ///< three vertex indices per triangle
    std::vector<Vector3> normals;          ///< empty, or one per vertex
    std::vector<Vector3> colors;           ///< empty, or one per vertex
    std::vector<Vector3> cornerTexcoords;  ///< empty, or three per triangle
    bool hasVertexColor = false;
    bool hasTriangleTexCoord = false;
};

/// Makes the mesh from \p data, moving out of it. Every triangle corner must name a
/// vertex; the first that does not logs "<reader>: invalid vertex index: <i>" with the
/// index as written in the file (file index = stored index + \p indexBase).
/// \return the new mesh, or null after the log line.
TriMesh* BuildTriMesh(MeshData& data, const char* reader, int indexBase);

/// Runs \p read and turns a failed allocation (a file larger than memory) into a null
/// result with the line "<reader>: out of memory".
template <typename Read>
TriMesh* GuardedRead(const char* reader, Read read) {
    try {
        return read();
    } catch (const std::exception&) {  // bad_alloc or length_error: both are memory
        LogLine(reader, ": out of memory");
        return nullptr;
    }
}

/// Closes \p writer's file and checks that every byte arrived.
/// \return 0, or -1 after the line "<writer>: file could not be written".
int FinishWrite(FileWriter& writer, const char* writerName);

/// A reservation that a count read from a file may ask for, capped by what \p bytes
/// of text can hold at \p minBytesPerItem each, so a lying header cannot make us
/// allocate without bound.
inline std::size_t CappedReserve(long long count, std::size_t bytes, std::size_t minBytesPerItem) {
    if (count <= 0) return 0;
    const std::size_t cap = bytes / minBytesPerItem + 1;
    return static_cast<std::size_t>(count) < cap ? static_cast<std::size_t>(count) : cap;
}

}  // namespace ZOL
