// OBJ: vertices with optional colours, texture coordinates and the first triangle of
// each face are read; vertices (with colours for a coloured TriMesh) and triangles are
// written. Normals, groups and materials are neither read nor written.
#include <climits>
#include <cstring>

#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/io/TextScanInternal.h>
#include <zol/io/TextWriterInternal.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

namespace {

// Lines are read as a fixed 512-byte line buffer would hold them.
constexpr std::size_t kObjLineMax = 511;

// A face corner "v", "v/t", "v//n" or "v/t/n" as 0-based indices; -1 when absent.
struct Corner {
    int vertex;
    int texcoord;
};

int OneBasedToIndex(std::string_view text) {
    const long long index = static_cast<long long>(ParseIndex(text)) - 1;
    return index < INT_MIN ? INT_MIN : static_cast<int>(index);
}

Corner ParseCorner(std::string_view token) {
    Corner corner{OneBasedToIndex(token), -1};
    const std::size_t slash = token.find('/');
    if (slash != std::string_view::npos) corner.texcoord = OneBasedToIndex(token.substr(slash + 1));
    return corner;
}

bool IsObjSeparator(char c) { return c == ' ' || c == '\t'; }

// Counts the lines that start with "v" and "f" and a separator, so the arrays are sized
// once; a memchr pass costs far less than regrowing them.
void CountObjItems(std::string_view text, std::size_t& vertices, std::size_t& faces) {
    vertices = faces = 0;
    const char* p = text.data();
    const char* end = p + text.size();
    while (p + 1 < end) {
        if (IsObjSeparator(p[1])) {
            if (p[0] == 'v') ++vertices;
            if (p[0] == 'f') ++faces;
        }
        const void* next = std::memchr(p, '\n', end - p);
        if (next == nullptr) break;
        p = static_cast<const char*>(next) + 1;
    }
}

}  // namespace

TriMesh* ParseMeshOBJ(std::string_view content, const std::string&) {
    MeshData data;
    std::size_t vertexHint, faceHint;
    CountObjItems(content, vertexHint, faceHint);
    data.Reserve(CappedReserve(vertexHint, content.size(), 2),
                 CappedReserve(faceHint, content.size(), 2));

    std::vector<Vector3> colors;
    std::vector<Vector3> texcoords;
    std::vector<int> cornerTexIds;  // three per triangle once any face has texture ids
    LineCursor lines(content, kObjLineMax);
    std::string_view line;
    std::string_view token;
    while (lines.Next(line)) {
        if (line.size() < 2) continue;
        if (line[0] == 'v' && IsObjSeparator(line[1])) {
            TokenCursor tokens(line.substr(2));
            double values[6] = {0, 0, 0, 0, 0, 0};
            int count = 0;
            while (count < 6 && tokens.Next(token)) values[count++] = ParseDouble(token);
            data.AddVertex(Vector3(values[0], values[1], values[2]));
            if (count == 6) colors.emplace_back(values[3], values[4], values[5]);
        } else if (line[0] == 'v' && line[1] == 't') {
            TokenCursor tokens(line.substr(2));
            double uv[2] = {0, 0};
            for (int k = 0; k < 2 && tokens.Next(token); ++k) uv[k] = ParseDouble(token);
            texcoords.emplace_back(uv[0], uv[1], 0.0);
        } else if (line[0] == 'f' && IsObjSeparator(line[1])) {
            // Only the first three corners count: a polygon gives its first triangle.
            TokenCursor tokens(line.substr(2));
            Corner corners[3];
            int count = 0;
            while (count < 3 && tokens.Next(token)) corners[count++] = ParseCorner(token);
            if (count < 3) continue;  // a face of one or two corners has no triangle
            const int triangle = data.TriangleCount();
            data.AddTriangle(corners[0].vertex, corners[1].vertex, corners[2].vertex);
            const int texCount = static_cast<int>(texcoords.size());
            if (corners[0].texcoord >= 0 && corners[0].texcoord < texCount) {
                data.hasTriangleTexCoord = true;
                cornerTexIds.resize(3 * static_cast<std::size_t>(triangle), -1);
                for (const Corner& c : corners) {
                    const bool valid = c.texcoord >= 0 && c.texcoord < texCount;
                    cornerTexIds.push_back(valid ? c.texcoord : -1);
                }
            }
        }
    }
    if (!colors.empty() && colors.size() == static_cast<std::size_t>(data.VertexCount())) {
        data.hasVertexColor = true;
        data.colors = std::move(colors);
    }
    if (data.hasTriangleTexCoord) {
        cornerTexIds.resize(3 * static_cast<std::size_t>(data.TriangleCount()), -1);
        data.cornerTexcoords.resize(cornerTexIds.size());
        for (std::size_t k = 0; k < cornerTexIds.size(); ++k) {
            if (cornerTexIds[k] >= 0) data.cornerTexcoords[k] = texcoords[cornerTexIds[k]];
        }
    }
    return data.Finish("ImportMeshByOBJ", 1);
}

TriMesh* ImportMeshByOBJ(const std::string& fileName) {
    return ReadMeshFile(
        fileName, "ImportMeshByOBJ", [&] { LogLine("Failed to open file: ", fileName); },
        ParseMeshOBJ);
}

int ExportMeshByOBJ(const std::string& fileName, const ITriMesh* triMesh) {
    if (triMesh == nullptr)
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshByOBJ: triMesh is NULL");
    FileWriter out(fileName);
    if (!out.IsOpen())
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshByOBJ: file could not open");
    // The interface's readers are not const; writing does not change the mesh.
    ITriMesh* mesh = const_cast<ITriMesh*>(triMesh);
    TriMesh* coloured = dynamic_cast<TriMesh*>(mesh);
    if (coloured != nullptr && !coloured->HasVertexColor()) coloured = nullptr;
    const int vertexCount = mesh->GetVertexCount();
    for (int i = 0; i < vertexCount; ++i) {
        const Vector3 p = mesh->GetVertexCoord(i);
        out.Put("v ");
        out.PutReals(p.x, p.y, p.z, " ");
        if (coloured != nullptr) {
            const Vector3 c = coloured->GetVertexColor(i);
            out.Put(' ');
            out.PutReals(c.x, c.y, c.z, " ");
        }
        out.Put('\n');
    }
    PutTriangleLines(out, *mesh, "f ", 1);
    return FinishWrite(out, "ExportMeshByOBJ");
}

}  // namespace ZOL
