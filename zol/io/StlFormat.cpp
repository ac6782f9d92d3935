// STL: read as ASCII or binary (told by content), written as binary. Every triangle
// gets three vertices of its own, as the format stores them; welding is FuseVertex's job.
#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/io/TextScanInternal.h>
#include <zol/io/TextWriterInternal.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

namespace {

constexpr std::size_t kHeaderSize = 80;
constexpr std::size_t kRecordSize = 50;
constexpr char kHeaderText[] = "zolshapetoolkits mesh";

}  // namespace

TriMesh* ParseMeshSTLBinary(std::string_view content) {
    const std::uint32_t faceCount =
        content.size() >= kHeaderSize + 4 ? GetU32LE(content.data() + kHeaderSize) : 0;
    // A count the file cannot hold, or that would overflow the vertex indices, is as
    // unusable as no count.
    const std::uint64_t needed = kHeaderSize + 4 + std::uint64_t(kRecordSize) * faceCount;
    if (faceCount < 1 || needed > content.size() || std::uint64_t(faceCount) * 3 > INT_MAX) {
        LogLine("ImportMeshBySTL:: invalid faceCount: ", faceCount);
        return nullptr;
    }
    MeshData data;
    data.Reserve(std::size_t(3) * faceCount, faceCount);
    const char* record = content.data() + kHeaderSize + 4;
    for (std::size_t f = 0; f < faceCount; ++f, record += kRecordSize) {
        // The stored normal (first 12 bytes) and the attribute (last 2) are not used.
        for (std::size_t k = 0; k < 3; ++k) {
            const char* v = record + 12 + 12 * k;
            data.AddVertex(Vector3(GetF32LE(v), GetF32LE(v + 4), GetF32LE(v + 8)));
        }
        const int first = static_cast<int>(3 * f);
        data.AddTriangle(first, first + 1, first + 2);
    }
    return data.Finish("ImportMeshBySTL", 0);
}

namespace {

// Reads three single-precision numbers as "%f %f %f" would. \return false when one
// of the next three tokens does not start with a number.
bool NextFloats(TokenCursor& tokens, Vector3& value) {
    std::string_view token;
    for (int k = 0; k < 3; ++k) {
        float f;
        if (!tokens.Next(token) || !ParseFloatPrefix(token, f)) return false;
        value[k] = f;
    }
    return true;
}

}  // namespace

TriMesh* ParseMeshSTLAscii(std::string_view content) {
    // The first line is "solid <name>"; the facets follow as whitespace-separated words:
    // facet normal nx ny nz / outer loop / vertex x y z (three times) / endloop / endfacet.
    const std::size_t firstEnd = content.find('\n');
    TokenCursor tokens(firstEnd == std::string_view::npos ? std::string_view()
                                                          : content.substr(firstEnd + 1));
    MeshData data;
    // A facet takes some 250 bytes of text; this sizes the arrays once for usual files.
    data.Reserve(content.size() / 80, content.size() / 240);
    Vector3 value;
    for (;;) {
        if (!tokens.Skip() || !tokens.Skip() || !NextFloats(tokens, value)) break;
        tokens.Skip();
        tokens.Skip();
        for (int k = 0; k < 3; ++k) {
            if (!tokens.Skip() || !NextFloats(tokens, value)) {
                LogLine("ImportMeshBySTL:: incomplete facet in asic: ", data.TriangleCount());
                return nullptr;
            }
            data.AddVertex(value);
        }
        const int first = data.VertexCount() - 3;
        data.AddTriangle(first, first + 1, first + 2);
        tokens.Skip();
        tokens.Skip();
    }
    if (data.TriangleCount() == 0) {
        LogLine("ImportMeshBySTL:: invalid faceCount: ", 0);
        return nullptr;
    }
    return data.Finish("ImportMeshBySTL", 0);
}

namespace {

constexpr int kAllIndicesValid = INT_MIN;

// Writes the 50-byte record of every triangle; \p corner(id) gives the coordinates of
// vertex id.
// \return kAllIndicesValid, or the first corner index that names no vertex.
template <typename Mesh, typename Corner>
int WriteStlRecords(FileWriter& out, Mesh& mesh, Corner corner) {
    const int vertexCount = mesh.GetVertexCount();
    const int triangleCount = mesh.GetTriangleCount();
    int ids[3];
    for (int t = 0; t < triangleCount; ++t) {
        mesh.GetTriangleVertexIds(t, ids);
        const Vector3 n = mesh.GetTriangleNormal(t);
        char* const record = out.Claim(kRecordSize);
        char* p = StoreF32LE(record, static_cast<float>(n.x));
        p = StoreF32LE(p, static_cast<float>(n.y));
        p = StoreF32LE(p, static_cast<float>(n.z));
        for (const int id : ids) {
            if (id < 0 || id >= vertexCount) return id;
            const Vector3& v = corner(id);
            p = StoreF32LE(p, static_cast<float>(v.x));
            p = StoreF32LE(p, static_cast<float>(v.y));
            p = StoreF32LE(p, static_cast<float>(v.z));
        }
        p[0] = p[1] = 0;
        out.Commit(kRecordSize);
    }
    return kAllIndicesValid;
}

// Our own mesh is read in place, without virtual calls (TriMesh is final) and without
// a copy of its vertices: at a few bytes per vertex, a fresh array costs more in page
// faults than the narrowing it would save. Any other mesh has its vertices copied once
// instead of fetched per incident triangle.
int WriteStlRecords(FileWriter& out, const ITriMesh& triMesh) {
    ITriMesh& mesh = const_cast<ITriMesh&>(triMesh);  // the interface's getters are not const
    if (TriMesh* own = dynamic_cast<TriMesh*>(&mesh)) {
        return WriteStlRecords(
            out, *own, [own](int id) -> const Vector3& { return own->GetVertexCoordRef(id); });
    }
    std::vector<Vector3> coords(static_cast<std::size_t>(mesh.GetVertexCount()));
    for (std::size_t i = 0; i < coords.size(); ++i) coords[i] = mesh.GetVertexCoord(int(i));
    return WriteStlRecords(out, mesh, [&coords](int id) -> const Vector3& { return coords[id]; });
}

}  // namespace

bool IsBinaryStl(std::string_view content) {
    if (content.size() >= kHeaderSize + 4) {
        const std::uint32_t faceCount = GetU32LE(content.data() + kHeaderSize);
        if (content.size() == kHeaderSize + 4 + std::uint64_t(kRecordSize) * faceCount) return true;
    }
    const std::size_t begin = std::min(content.size(), kHeaderSize + 4);
    const std::size_t end = std::min(content.size(), kHeaderSize + 4 + 128);
    for (std::size_t i = begin; i < end; ++i) {
        if (static_cast<unsigned char>(content[i]) >= 128) return true;
    }
    return false;
}

TriMesh* ParseMeshSTL(std::string_view content, const std::string&) {
    return IsBinaryStl(content) ? ParseMeshSTLBinary(content) : ParseMeshSTLAscii(content);
}

TriMesh* ImportMeshBySTL(const std::string& fileName) {
    // An unreadable file passes the kind test as text (no byte of it is 128 or above),
    // so it is the text reader's open that fails.
    return ReadMeshFile(
        fileName, "ImportMeshBySTL", [] { LogLine("ImportMeshBySTL:: open failed in asic"); },
        ParseMeshSTL);
}

int ExportMeshBySTL2Binary(const std::string& fileName, const ITriMesh* triMesh) {
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshBySTL2Binary: triMesh is NULL");
    }
    FileWriter out(fileName);
    if (!out.IsOpen()) {
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshBySTL2Binary: file could not open");
    }
    char header[kHeaderSize + 4] = {};
    std::memcpy(header, kHeaderText, sizeof kHeaderText - 1);
    StoreU32LE(header + kHeaderSize, static_cast<std::uint32_t>(triMesh->GetTriangleCount()));
    out.PutBytes(header, sizeof header);
    const int badIndex = WriteStlRecords(out, *triMesh);
    if (badIndex != kAllIndicesValid) {
        out.Close();
        return LogFailure(RESULT_INVALID_INPUT,
                          "ExportMeshBySTL2Binary: invalid vertex index: ", badIndex);
    }
    return FinishWrite(out, "ExportMeshBySTL2Binary");
}

}  // namespace ZOL
