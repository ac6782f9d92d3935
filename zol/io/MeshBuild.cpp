// The common last step of every mesh reader (check the collected data, then build the
// TriMesh in one go) and the common last step of every writer.
#include <memory>

#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/io/TextScanInternal.h>
#include <zol/io/TextWriterInternal.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

TriMesh* MeshData::Finish(const char* reader, int indexBase) {
    const int vertexCount = mMesh->GetVertexCount();
    const int triangleCount = mMesh->GetTriangleCount();
    for (int t = 0; t < triangleCount; ++t) {
        const int* ids = mMesh->GetTriangleVertexIdsRef(t);
        for (int k = 0; k < 3; ++k) {
            if (ids[k] < 0 || ids[k] >= vertexCount) {
                LogLine(reader,
                        ": invalid vertex index: ", static_cast<long long>(ids[k]) + indexBase);
                return nullptr;
            }
        }
    }
    if (hasVertexColor && colors.size() == static_cast<std::size_t>(vertexCount)) {
        mMesh->SetHasVertexColor(true);
        for (int i = 0; i < vertexCount; ++i) mMesh->SetVertexColor(i, colors[i]);
    }
    if (hasTriangleTexCoord &&
        cornerTexcoords.size() == 3 * static_cast<std::size_t>(triangleCount)) {
        mMesh->SetHasTriangleTexCoord(true);
        for (int t = 0; t < triangleCount; ++t) {
            for (int k = 0; k < 3; ++k)
                mMesh->SetTriangleTexcoord(t, k, cornerTexcoords[3 * t + k]);
        }
    }
    return mMesh.release();
}

bool AddPolygonLines(LineCursor& lines, int count, MeshData& data, const char* reader) {
    std::string_view line, token;
    for (int f = 0; f < count; ++f) {
        if (!lines.Next(line)) {
            LogLine(reader, ": unexpected end of file in face ", f);
            return false;
        }
        TokenCursor tokens(line);
        tokens.Skip();  // the corner count; only the first three corners are used
        int ids[3];
        int corners = 0;
        while (corners < 3 && tokens.Next(token)) ids[corners++] = ParseIndex(token);
        if (corners == 3) data.AddTriangle(ids[0], ids[1], ids[2]);
    }
    return true;
}

void PutTriangleLines(FileWriter& out, ITriMesh& mesh, std::string_view prefix, int indexBase) {
    const int triangleCount = mesh.GetTriangleCount();
    int ids[3];
    for (int t = 0; t < triangleCount; ++t) {
        mesh.GetTriangleVertexIds(t, ids);
        out.Put(prefix);
        out.PutInt(static_cast<std::int64_t>(ids[0]) + indexBase);
        out.Put(' ');
        out.PutInt(static_cast<std::int64_t>(ids[1]) + indexBase);
        out.Put(' ');
        out.PutInt(static_cast<std::int64_t>(ids[2]) + indexBase);
        out.Put('\n');
    }
}

int FinishWrite(FileWriter& writer, const char* writerName) {
    if (writer.Close()) return RESULT_OK;
    LogLine(writerName, ": file could not be written");
    return RESULT_FAIL;
}

}  // namespace ZOL
