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

std::uint32_t ReadUint32LE(const char* p) {
    const unsigned char* b = reinterpret_cast<const unsigned char*>(p);
    return std::uint32_t(b[0]) | std::uint32_t(b[1]) << 8 | std::uint32_t(b[2]) << 16 |
           std::uint32_t(b[3]) << 24;
}

float ReadFloatLE(const char* p) {
    const std::uint32_t bits = ReadUint32LE(p);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

char* WriteUint32LE(char* p, std::uint32_t value) {
    p[0] = static_cast<char>(value & 0xff);
    p[1] = static_cast<char>((value >> 8) & 0xff);
    p[2] = static_cast<char>((value >> 16) & 0xff);
    p[3] = static_cast<char>((value >> 24) & 0xff);
    return p + 4;
}

char* WriteFloatLE(char* p, float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return WriteUint32LE(p, bits);
}

TriMesh* ReadBinaryStl(std::string_view content) {
    const std::uint32_t faceCount =
        content.size() >= kHeaderSize + 4 ? ReadUint32LE(content.data() + kHeaderSize) : 0;
    // A count the file cannot hold, or that would overflow the vertex indices, is as
    // unusable as no count.
    const std::uint64_t needed = kHeaderSize + 4 + std::uint64_t(kRecordSize) * faceCount;
    if (faceCount < 1 || needed > content.size() || std::uint64_t(faceCount) * 3 > INT_MAX) {
        LogLine("ImportMeshBySTL:: invalid faceCount: ", faceCount);
        return nullptr;
    }
    MeshData data;
    data.coords.resize(std::size_t(3) * faceCount);
    data.corners.resize(std::size_t(3) * faceCount);
    const char* record = content.data() + kHeaderSize + 4;
    for (std::size_t f = 0; f < faceCount; ++f, record += kRecordSize) {
        // The stored normal (first 12 bytes) and the attribute (last 2) are not used.
        for (std::size_t k = 0; k < 3; ++k) {
            const char* v = record + 12 + 12 * k;
            data.coords[3 * f + k].SetValue(ReadFloatLE(v), ReadFloatLE(v + 4), ReadFloatLE(v + 8));
            data.corners[3 * f + k] = static_cast<int>(3 * f + k);
        }
    }
    return BuildTriMesh(data, "ImportMeshBySTL", 0);
}

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

TriMesh* ReadAsciiStl(std::string_view content) {
    // The first line is "solid <name>"; the facets follow as whitespace-separated words:
    // facet normal nx ny nz / outer loop / vertex x y z (three times) / endloop / endfacet.
    const std::size_t firstEnd = content.find('\n');
    TokenCursor tokens(firstEnd == std::string_view::npos ? std::string_view()
                                                          : content.substr(firstEnd + 1));
    MeshData data;
    // A facet takes some 250 bytes of text; this sizes the arrays once for usual files.
    data.coords.reserve(content.size() / 80);
    data.corners.reserve(content.size() / 80);
    Vector3 value;
    for (;;) {
        if (!tokens.Skip() || !tokens.Skip() || !NextFloats(tokens, value)) break;
        tokens.Skip();
        tokens.Skip();
        for (int k = 0; k < 3; ++k) {
            if (!tokens.Skip() || !NextFloats(tokens, value)) {
                LogLine("ImportMeshBySTL:: incomplete facet in asic: ", data.corners.size() / 3);
                return nullptr;
            }
            data.corners.push_back(static_cast<int>(data.coords.size()));
            data.coords.push_back(value);
        }
        tokens.Skip();
        tokens.Skip();
    }
    if (data.corners.empty()) {
        LogLine("ImportMeshBySTL:: invalid faceCount: ", 0);
        return nullptr;
    }
    return BuildTriMesh(data, "ImportMeshBySTL", 0);
}

TriMesh* ReadStl(const std::string& fileName) {
    std::string content;
    if (!ReadWholeFile(fileName, content)) {
        // An unreadable file passes the kind test as text (no byte of it is 128 or
        // above), so it is the text reader's open that fails.
        LogLine("ImportMeshBySTL:: open failed in asic");
        return nullptr;
    }
    return IsBinaryStl(content) ? ReadBinaryStl(content) : ReadAsciiStl(content);
}

}  // namespace

bool IsBinaryStl(std::string_view content) {
    if (content.size() >= kHeaderSize + 4) {
        const std::uint32_t faceCount = ReadUint32LE(content.data() + kHeaderSize);
        if (content.size() == kHeaderSize + 4 + std::uint64_t(kRecordSize) * faceCount) return true;
    }
    const std::size_t begin = std::min(content.size(), kHeaderSize + 4);
    const std::size_t end = std::min(content.size(), kHeaderSize + 4 + 128);
    for (std::size_t i = begin; i < end; ++i) {
        if (static_cast<unsigned char>(content[i]) >= 128) return true;
    }
    return false;
}

TriMesh* ImportMeshBySTL(const std::string& fileName) {
    return GuardedRead("ImportMeshBySTL", [&] { return ReadStl(fileName); });
}

int ExportMeshBySTL2Binary(const std::string& fileName, const ITriMesh* triMesh) {
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshBySTL2Binary: triMesh is NULL");
    }
    FileWriter out(fileName);
    if (!out.IsOpen()) {
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshBySTL2Binary: file could not open");
    }
    ITriMesh* mesh = const_cast<ITriMesh*>(triMesh);
    char header[kHeaderSize + 4] = {};
    std::memcpy(header, kHeaderText, sizeof kHeaderText - 1);
    const int triangleCount = mesh->GetTriangleCount();
    WriteUint32LE(header + kHeaderSize, static_cast<std::uint32_t>(triangleCount));
    out.PutBytes(header, sizeof header);

    // Narrow every vertex once instead of once per incident triangle.
    const int vertexCount = mesh->GetVertexCount();
    std::vector<float> coords(3 * static_cast<std::size_t>(vertexCount));
    for (int i = 0; i < vertexCount; ++i) {
        const Vector3 p = mesh->GetVertexCoord(i);
        coords[3 * i] = static_cast<float>(p.x);
        coords[3 * i + 1] = static_cast<float>(p.y);
        coords[3 * i + 2] = static_cast<float>(p.z);
    }
    char record[kRecordSize];
    int ids[3];
    for (int t = 0; t < triangleCount; ++t) {
        const Vector3 n = mesh->GetTriangleNormal(t);
        char* p = WriteFloatLE(record, static_cast<float>(n.x));
        p = WriteFloatLE(p, static_cast<float>(n.y));
        p = WriteFloatLE(p, static_cast<float>(n.z));
        mesh->GetTriangleVertexIds(t, ids);
        for (const int id : ids) {
            if (id < 0 || id >= vertexCount) {
                out.Close();
                return LogFailure(RESULT_INVALID_INPUT,
                                  "ExportMeshBySTL2Binary: invalid vertex index: ", id);
            }
            const float* v = &coords[3 * static_cast<std::size_t>(id)];
            p = WriteFloatLE(p, v[0]);
            p = WriteFloatLE(p, v[1]);
            p = WriteFloatLE(p, v[2]);
        }
        p[0] = p[1] = 0;
        out.PutBytes(record, kRecordSize);
    }
    return FinishWrite(out, "ExportMeshBySTL2Binary");
}

}  // namespace ZOL
