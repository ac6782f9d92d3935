// OFF: a keyword line, a counts line, one vertex per line and one polygon per line, of
// which the first triangle is kept.
#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/io/TextScanInternal.h>
#include <zol/io/TextWriterInternal.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

namespace {

constexpr std::size_t kLineMax = 511;

}  // namespace

TriMesh* ParseMeshOFF(std::string_view text, const std::string&) {
    // Skip the keyword line; the two counts may follow after blank lines, and the rest
    // of their line (the edge count) is ignored.
    const std::size_t firstEnd = text.find('\n');
    TokenCursor countTokens(firstEnd == std::string_view::npos ? std::string_view()
                                                               : text.substr(firstEnd + 1));
    std::string_view vertexToken, faceToken;
    if (!countTokens.Next(vertexToken) || !countTokens.Next(faceToken)) {
        LogLine("ImportMeshByOFF: missing vertex and face counts");
        return nullptr;
    }
    const std::int64_t vertexCount = ParseInt64(vertexToken);
    const std::int64_t faceCount = ParseInt64(faceToken);
    if (vertexCount < 0 || faceCount < 0) {
        LogLine("ImportMeshByOFF: invalid counts: ", vertexCount, " ", faceCount);
        return nullptr;
    }
    const std::string_view rest = countTokens.Rest();
    const std::size_t countsEnd = rest.find('\n');
    LineCursor lines(
        countsEnd == std::string_view::npos ? std::string_view() : rest.substr(countsEnd + 1),
        kLineMax);
    const std::size_t bytes = lines.Rest().size();
    std::size_t unclaimed = bytes;
    if (!TakeLineCount(vertexCount, unclaimed, "ImportMeshByOFF", "vertex") ||
        !TakeLineCount(faceCount, unclaimed, "ImportMeshByOFF", "face")) {
        return nullptr;
    }

    MeshData data;
    data.Reserve(CappedReserve(vertexCount, bytes, 6), CappedReserve(faceCount, bytes, 8));
    std::string_view line, token;
    for (int i = 0; i < vertexCount; ++i) {
        if (!lines.Next(line)) {
            LogLine("ImportMeshByOFF: unexpected end of file in vertex ", i);
            return nullptr;
        }
        TokenCursor tokens(line);
        double xyz[3];
        int count = 0;
        while (count < 3 && tokens.Next(token)) xyz[count++] = ParseDouble(token);
        if (count == 3) data.AddVertex(Vector3(xyz[0], xyz[1], xyz[2]));
    }
    if (!AddPolygonLines(lines, static_cast<int>(faceCount), data, "ImportMeshByOFF")) {
        return nullptr;
    }
    return data.Finish("ImportMeshByOFF", 0);
}

TriMesh* ImportMeshByOFF(const std::string& fileName) {
    return ReadMeshFile(
        fileName, "ImportMeshByOFF", [&] { LogLine("Failed to open file: ", fileName); },
        ParseMeshOFF);
}

int ExportMeshByOFF(const std::string& fileName, const ITriMesh* triMesh) {
    if (triMesh == nullptr)
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshByOFF: triMesh is NULL");
    FileWriter out(fileName);
    if (!out.IsOpen())
        return LogFailure(RESULT_INVALID_INPUT, "ExportMeshByOFF: file could not open ");
    ITriMesh* mesh = const_cast<ITriMesh*>(triMesh);
    const int vertexCount = mesh->GetVertexCount();
    const int triangleCount = mesh->GetTriangleCount();
    out.Put("OFF\n");
    out.PutInt(vertexCount);
    out.Put(' ');
    out.PutInt(triangleCount);
    out.Put(" 0\n");
    for (int i = 0; i < vertexCount; ++i) {
        const Vector3 p = mesh->GetVertexCoord(i);
        out.PutReals(p.x, p.y, p.z, " ");
        out.Put('\n');
    }
    PutTriangleLines(out, *mesh, "3 ", 0);
    return FinishWrite(out, "ExportMeshByOFF");
}

}  // namespace ZOL
