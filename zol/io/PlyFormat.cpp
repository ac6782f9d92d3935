// ASCII PLY in the layout our writers produce: x y z [red green blue] per vertex and a
// vertex_indices list per face. The header is matched at fixed character positions.
#include <algorithm>

#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/io/TextScanInternal.h>
#include <zol/io/TextWriterInternal.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

namespace {

constexpr std::size_t kLineMax = 511;

bool StartsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

// The text of \p line from \p position on; empty when the line is shorter.
std::string_view From(std::string_view line, std::size_t position) {
    return position < line.size() ? line.substr(position) : std::string_view();
}

}  // namespace

TriMesh* ParseMeshPLY(std::string_view content, const std::string& fileName) {
    LineCursor lines(content, kLineMax);
    std::string_view line, token;
    std::int64_t vertexCount = 0;
    std::int64_t faceCount = 0;
    bool hasColor = false;
    bool headerEnded = false;
    while (!headerEnded && lines.Next(line)) {
        if (StartsWith(line, "end_header")) {
            headerEnded = true;
        } else if (StartsWith(line, "format binary")) {
            // Reading binary bodies as text would only make garbage.
            LogLine("ImportMeshByPLY: binary PLY is not supported: ", fileName);
            return nullptr;
        } else if (StartsWith(line, "element")) {
            if (From(line, 8).substr(0, 6) == "vertex") vertexCount = ParseInt64(From(line, 15));
            if (From(line, 8).substr(0, 4) == "face") faceCount = ParseInt64(From(line, 13));
        } else if (StartsWith(line, "property")) {
            const std::string_view name = From(line, 15);
            if (StartsWith(name, "red") || StartsWith(name, "green") || StartsWith(name, "blue")) {
                hasColor = true;
            }
        }
    }
    if (!headerEnded) {
        LogLine("ImportMeshByPLY: end_header not found: ", fileName);
        return nullptr;
    }
    const std::size_t bytes = lines.Rest().size();
    std::size_t unclaimed = bytes;
    if (!TakeLineCount(vertexCount, unclaimed, "ImportMeshByPLY", "element vertex") ||
        !TakeLineCount(faceCount, unclaimed, "ImportMeshByPLY", "element face")) {
        return nullptr;
    }
    vertexCount = std::max<std::int64_t>(vertexCount, 0);
    faceCount = std::max<std::int64_t>(faceCount, 0);

    MeshData data;
    data.Reserve(CappedReserve(vertexCount, bytes, 6), CappedReserve(faceCount, bytes, 8));
    if (hasColor) data.colors.reserve(CappedReserve(vertexCount, bytes, 6));
    for (int i = 0; i < vertexCount; ++i) {
        if (!lines.Next(line)) {
            LogLine("ImportMeshByPLY: unexpected end of file in vertex ", i);
            return nullptr;
        }
        TokenCursor tokens(line);
        double xyz[3] = {0, 0, 0};
        for (int k = 0; k < 3 && tokens.Next(token); ++k) xyz[k] = ParseDouble(token);
        data.AddVertex(Vector3(xyz[0], xyz[1], xyz[2]));
        if (hasColor) {
            int rgb[3] = {0, 0, 0};
            for (int k = 0; k < 3 && tokens.Next(token); ++k) rgb[k] = ParseIndex(token);
            data.colors.emplace_back(rgb[0] / 255.0, rgb[1] / 255.0, rgb[2] / 255.0);
        }
    }
    data.hasVertexColor = hasColor;
    if (!AddPolygonLines(lines, static_cast<int>(faceCount), data, "ImportMeshByPLY")) {
        return nullptr;
    }
    return data.Finish("ImportMeshByPLY", 0);
}

namespace {

// Colour components 0..1 become 0..255 by truncation; out-of-range values are held to
// the uchar range the header declares.
int ColorByte(double component) {
    const double scaled = component * 255;
    if (!(scaled > 0)) return 0;
    return scaled >= 255 ? 255 : static_cast<int>(scaled);
}

// Writes header and body, with colour columns when \p withColor; their values come
// from \p colors, or are 0 when it is null.
int WritePly(FileWriter& out, ITriMesh* mesh, bool withColor, TriMesh* colors, const char* writer) {
    const int vertexCount = mesh->GetVertexCount();
    const int triangleCount = mesh->GetTriangleCount();
    out.Put("ply\nformat ascii 1.0 \nelement vertex ");
    out.PutInt(vertexCount);
    out.Put("\nproperty float x\nproperty float y\nproperty float z\n");
    if (withColor) out.Put("property uchar red\nproperty uchar green\nproperty uchar blue\n");
    out.Put("element face ");
    out.PutInt(triangleCount);
    out.Put("\nproperty list uchar int vertex_indices\nend_header\n");
    for (int i = 0; i < vertexCount; ++i) {
        const Vector3 p = mesh->GetVertexCoord(i);
        out.PutReals(p.x, p.y, p.z, " ");
        if (withColor) {
            const Vector3 c = colors != nullptr ? colors->GetVertexColor(i) : Vector3();
            for (int k = 0; k < 3; ++k) {
                out.Put(' ');
                out.PutInt(ColorByte(c[k]));
            }
        }
        out.Put('\n');
    }
    PutTriangleLines(out, *mesh, "3 ", 0);
    return FinishWrite(out, writer);
}

}  // namespace

TriMesh* ImportMeshByPLY(const std::string& fileName) {
    return ReadMeshFile(
        fileName, "ImportMeshByPLY", [&] { LogLine("Failed to open file: ", fileName); },
        ParseMeshPLY);
}

int ExportMeshByPLYWithoutColor(const std::string& fileName, const ITriMesh* triMesh) {
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshByPLYWithoutColor: triMesh is NULL");
    }
    FileWriter out(fileName);
    if (!out.IsOpen()) {
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshByPLYWithoutColor: file could not open");
    }
    return WritePly(out, const_cast<ITriMesh*>(triMesh), false, nullptr,
                    "ExportMeshByPLYWithoutColor");
}

int ExportMeshByPLYWithColor(const std::string& fileName, const TriMesh* triMesh) {
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshByPLYWithColor: triMesh is NULL");
    }
    FileWriter out(fileName);
    if (!out.IsOpen()) {
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshByPLYWithColor: file could not open");
    }
    TriMesh* mesh = const_cast<TriMesh*>(triMesh);
    // A mesh without colours keeps the coloured layout, with black vertices.
    return WritePly(out, mesh, true, mesh->HasVertexColor() ? mesh : nullptr,
                    "ExportMeshByPLYWithColor");
}

}  // namespace ZOL
