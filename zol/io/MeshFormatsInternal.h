// The per-format mesh readers and writers behind Parser, and what they share: the
// buffers a reader fills before any mesh exists, and the one place that checks them
// and builds the TriMesh, so a malformed file never yields a mesh that fails later.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <zol/core/TriMesh.h>
#include <zol/core/Vector3.h>
#include <zol/io/TextScanInternal.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

class FileWriter;

// Readers: a new mesh, or null after one log line.
TriMesh* ImportMeshByOBJ(const std::string& fileName);
TriMesh* ImportMeshBySTL(const std::string& fileName);
TriMesh* ImportMeshByOFF(const std::string& fileName);
TriMesh* ImportMeshByPLY(const std::string& fileName);
TriMesh* ImportMeshByZPT(const std::string& fileName);

// The parsers behind the readers: a new mesh from a whole file's \p content, or null
// after one log line; \p fileName only names the file in log lines.
TriMesh* ParseMeshOBJ(std::string_view content, const std::string& fileName);
TriMesh* ParseMeshSTL(std::string_view content, const std::string& fileName);
TriMesh* ParseMeshOFF(std::string_view content, const std::string& fileName);
TriMesh* ParseMeshPLY(std::string_view content, const std::string& fileName);
TriMesh* ParseMeshZPT(std::string_view content, const std::string& fileName);
// The two STL bodies, once the kind is known (ParseMeshSTL tells them apart).
TriMesh* ParseMeshSTLBinary(std::string_view content);
TriMesh* ParseMeshSTLAscii(std::string_view content);

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

/// What a reader builds: the mesh itself, filled as the file is parsed, and the
/// attributes that are only attached once the whole file has been read.
class MeshData {
public:
    MeshData() : mMesh(new TriMesh()) {}

    /// Reserves room; \p vertices and \p triangles must already be capped (CappedReserve).
    void Reserve(std::size_t vertices, std::size_t triangles) {
        mMesh->Reserve(static_cast<int>(vertices), static_cast<int>(triangles));
    }
    int VertexCount() const { return mMesh->GetVertexCount(); }
    int TriangleCount() const { return mMesh->GetTriangleCount(); }
    void AddVertex(const Vector3& coord) { mMesh->InsertVertex(coord); }
    void AddVertex(const Vector3& coord, const Vector3& normal) {
        mMesh->InsertVertex(coord, normal);
    }
    /// Corners are checked in Finish, when every vertex is known.
    void AddTriangle(int a, int b, int c) { mMesh->InsertTriangle(a, b, c); }

    /// Checks that every triangle corner names a vertex, else logs
    /// "<reader>: invalid vertex index: <i>" with the index as written in the file (file
    /// index = stored index + \p indexBase). Then attaches the attributes.
    /// \return the mesh, now owned by the caller, or null after the log line.
    TriMesh* Finish(const char* reader, int indexBase);

    std::vector<Vector3> colors;           ///< one per vertex when hasVertexColor
    std::vector<Vector3> cornerTexcoords;  ///< three per triangle when hasTriangleTexCoord
    bool hasVertexColor = false;
    bool hasTriangleTexCoord = false;

private:
    std::unique_ptr<TriMesh> mMesh;
};

/// Reads \p fileName whole and parses it with \p parse. A file that cannot be read
/// gets the log line of \p openFailed and a null result; a failed allocation (a file
/// larger than memory) gives null with the line "<reader>: out of memory".
template <typename OpenFailed>
TriMesh* ReadMeshFile(const std::string& fileName,
                      const char* reader,
                      OpenFailed openFailed,
                      TriMesh* (*parse)(std::string_view, const std::string&)) {
    try {
        FileContent content;
        if (!content.Read(fileName)) {
            openFailed();
            return nullptr;
        }
        return parse(content.View(), fileName);
    } catch (const std::exception&) {  // bad_alloc or length_error: both are memory
        LogLine(reader, ": out of memory");
        return nullptr;
    }
}

/// Reads \p count polygon lines "<cornerCount> i j k ..." (0-based indices) and adds
/// the first triangle of each; a line with fewer than three indices adds nothing.
/// \return false after the line "<reader>: unexpected end of file in face <f>" when the
///         text ends first.
bool AddPolygonLines(LineCursor& lines, int count, MeshData& data, const char* reader);

/// Writes one line per triangle: \p prefix, then the three vertex indices plus
/// \p indexBase separated by one blank.
void PutTriangleLines(FileWriter& out, ITriMesh& mesh, std::string_view prefix, int indexBase);

/// Closes \p writer's file and checks that every byte arrived.
/// \return RESULT_OK, or RESULT_FAIL (-1) after the line "<writer>: file could not be written".
int FinishWrite(FileWriter& writer, const char* writerName);

/// Checks a count read from a file's header before anything is sized by it: each item
/// takes a line of its own, at least one byte, so no more than \p bytes of them can
/// follow, and a mesh holds at most INT_MAX. On success \p bytes drops by the count, so
/// the counts of one file are checked together. A count below 1 passes.
/// \return false after the line "<reader>: <what> count <count> exceeds the file size"
///         (or "... too large" past INT_MAX in a file that large).
inline bool TakeLineCount(std::int64_t count,
                          std::size_t& bytes,
                          const char* reader,
                          const char* what) {
    if (count <= 0) return true;
    if (static_cast<std::uint64_t>(count) > bytes) {
        LogLine(reader, ": ", what, " count ", count, " exceeds the file size");
        return false;
    }
    if (count > INT_MAX) {
        LogLine(reader, ": ", what, " count ", count, " too large");
        return false;
    }
    bytes -= static_cast<std::size_t>(count);
    return true;
}

/// A reservation that a count read from a file may ask for, capped by what \p bytes
/// of text can hold at \p minBytesPerItem each, so a lying header cannot make us
/// allocate without bound.
inline std::size_t CappedReserve(long long count, std::size_t bytes, std::size_t minBytesPerItem) {
    if (count <= 0) return 0;
    const std::size_t cap = bytes / minBytesPerItem + 1;
    return static_cast<std::size_t>(count) < cap ? static_cast<std::size_t>(count) : cap;
}

}  // namespace ZOL
