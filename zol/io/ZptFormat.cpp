// ZPT, the library's own text mesh format: everything a TriMesh carries per vertex
// (coordinate, normal, colour) and per triangle corner (texture coordinate).
//   1 <vertexCount> <triangleCount> <texCoordCount>
//   x y z nx ny nz r g b          (vertexCount lines)
//   i j k                         (triangleCount lines)
//   u v w                         (texCoordCount lines, three per triangle)
//   3t 3t+1 3t+2                  (triangleCount lines, when texCoordCount > 0)
#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/io/TextScanInternal.h>
#include <zol/io/TextWriterInternal.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

namespace {

constexpr std::size_t kLineMax = 511;

// Reads up to \p count numbers of one line into \p values; the rest stay 0.
template <typename Number, typename Parse>
bool ReadLineValues(LineCursor& lines, Number* values, int count, Parse parse) {
    std::string_view line, token;
    if (!lines.Next(line)) return false;
    TokenCursor tokens(line);
    for (int k = 0; k < count; ++k) values[k] = tokens.Next(token) ? parse(token) : Number(0);
    return true;
}

}  // namespace

TriMesh* ParseMeshZPT(std::string_view content, const std::string&) {
    LineCursor lines(content, kLineMax);
    std::int64_t counts[4] = {0, 0, 0, 0};
    ReadLineValues(lines, counts, 4, ParseInt64);
    if (counts[0] != 1) {
        LogLine("Can not support the data format.");
        return nullptr;
    }
    if (counts[1] < 0 || counts[2] < 0 || counts[3] < 0) {
        LogLine("ImportMeshByZPT: invalid counts: ", counts[1], " ", counts[2], " ", counts[3]);
        return nullptr;
    }
    // Vertex, triangle and texture coordinate lines, and with texture coordinates one
    // index line per triangle.
    const std::size_t bytes = lines.Rest().size();
    std::size_t unclaimed = bytes;
    if (!TakeLineCount(counts[1], unclaimed, "ImportMeshByZPT", "vertex") ||
        !TakeLineCount(counts[2], unclaimed, "ImportMeshByZPT", "triangle") ||
        !TakeLineCount(counts[3], unclaimed, "ImportMeshByZPT", "texture coordinate") ||
        (counts[3] > 0 && !TakeLineCount(counts[2], unclaimed, "ImportMeshByZPT", "triangle"))) {
        return nullptr;
    }
    const int vertexCount = static_cast<int>(counts[1]);
    const int triangleCount = static_cast<int>(counts[2]);
    const int texCoordCount = static_cast<int>(counts[3]);
    MeshData data;
    data.Reserve(CappedReserve(vertexCount, bytes, 18), CappedReserve(triangleCount, bytes, 6));
    data.colors.reserve(CappedReserve(vertexCount, bytes, 18));
    data.hasVertexColor = true;
    double v[9];
    for (int i = 0; i < vertexCount; ++i) {
        if (!ReadLineValues(lines, v, 9, ParseDouble)) {
            LogLine("ImportMeshByZPT: unexpected end of file in vertex ", i);
            return nullptr;
        }
        data.AddVertex(Vector3(v[0], v[1], v[2]), Vector3(v[3], v[4], v[5]));
        data.colors.emplace_back(v[6], v[7], v[8]);
    }
    for (int t = 0; t < triangleCount; ++t) {
        int ids[3] = {-1, -1, -1};
        if (!ReadLineValues(lines, ids, 3, ParseIndex)) {
            LogLine("ImportMeshByZPT: unexpected end of file in triangle ", t);
            return nullptr;
        }
        data.AddTriangle(ids[0], ids[1], ids[2]);
    }
    if (texCoordCount >= 1) {
        std::vector<Vector3> texcoords;
        texcoords.reserve(CappedReserve(texCoordCount, lines.Rest().size(), 6));
        for (int k = 0; k < texCoordCount; ++k) {
            double uvw[3];
            if (!ReadLineValues(lines, uvw, 3, ParseDouble)) {
                LogLine("ImportMeshByZPT: unexpected end of file in texture coordinate ", k);
                return nullptr;
            }
            texcoords.emplace_back(uvw[0], uvw[1], uvw[2]);
        }
        data.hasTriangleTexCoord = true;
        data.cornerTexcoords.resize(3 * static_cast<std::size_t>(triangleCount));
        for (int t = 0; t < triangleCount; ++t) {
            int ids[3] = {-1, -1, -1};
            if (!ReadLineValues(lines, ids, 3, ParseIndex)) {
                LogLine("ImportMeshByZPT: unexpected end of file in texture indices ", t);
                return nullptr;
            }
            for (int k = 0; k < 3; ++k) {
                if (ids[k] < 0 || ids[k] >= texCoordCount) {
                    LogLine("ImportMeshByZPT: invalid texture coordinate index: ", ids[k]);
                    return nullptr;
                }
                data.cornerTexcoords[3 * t + k] = texcoords[ids[k]];
            }
        }
    }
    return data.Finish("ImportMeshByZPT", 0);
}

TriMesh* ImportMeshByZPT(const std::string& fileName) {
    return ReadMeshFile(
        fileName, "ImportMeshByZPT",
        [&] { LogLine("ImportMeshByZPT failed: can not open file: ", fileName); }, ParseMeshZPT);
}

int ExportMeshByZPT(const std::string& fileName, const TriMesh* triMesh) {
    if (triMesh == nullptr)
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshByZPT: triMesh is NULL");
    FileWriter out(fileName);
    if (!out.IsOpen())
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshByZPT: file could not open");
    TriMesh* mesh = const_cast<TriMesh*>(triMesh);
    const int vertexCount = mesh->GetVertexCount();
    const int triangleCount = mesh->GetTriangleCount();
    const bool hasColor = mesh->HasVertexColor();
    const bool hasTexcoord = mesh->HasTriangleTexCoord();
    out.Put("1 ");
    out.PutInt(vertexCount);
    out.Put(' ');
    out.PutInt(triangleCount);
    out.Put(' ');
    out.PutInt(hasTexcoord ? 3 * static_cast<std::int64_t>(triangleCount) : 0);
    out.Put('\n');
    for (int i = 0; i < vertexCount; ++i) {
        const Vector3 p = mesh->GetVertexCoord(i);
        const Vector3 n = mesh->GetVertexNormal(i);
        const Vector3 c = hasColor ? mesh->GetVertexColor(i) : Vector3();
        out.PutReals(p.x, p.y, p.z, " ");
        out.Put(' ');
        out.PutReals(n.x, n.y, n.z, " ");
        out.Put(' ');
        out.PutReals(c.x, c.y, c.z, " ");
        out.Put('\n');
    }
    PutTriangleLines(out, *mesh, "", 0);
    if (hasTexcoord) {
        for (int t = 0; t < triangleCount; ++t) {
            for (int k = 0; k < 3; ++k) {
                const Vector3 uvw = mesh->GetTriangleTexcoord(t, k);
                out.PutReals(uvw.x, uvw.y, uvw.z, " ");
                out.Put('\n');
            }
        }
        for (std::int64_t t = 0; t < triangleCount; ++t) {
            out.PutInt(3 * t);
            out.Put(' ');
            out.PutInt(3 * t + 1);
            out.Put(' ');
            out.PutInt(3 * t + 2);
            out.Put('\n');
        }
    }
    return FinishWrite(out, "ExportMeshByZPT");
}

}  // namespace ZOL
