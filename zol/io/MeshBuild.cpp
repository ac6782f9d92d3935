// The common last step of every mesh reader (check the collected data, then build the
// TriMesh in one go) and the common last step of every writer.
#include <memory>

#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/io/TextWriterInternal.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

TriMesh* BuildTriMesh(MeshData& data, const char* reader, int indexBase) {
    const int vertexCount = static_cast<int>(data.coords.size());
    for (const int corner : data.corners) {
        if (corner < 0 || corner >= vertexCount) {
            LogLine(reader, ": invalid vertex index: ", static_cast<long long>(corner) + indexBase);
            return nullptr;
        }
    }
    const int triangleCount = static_cast<int>(data.corners.size() / 3);
    const bool withNormals = data.normals.size() == data.coords.size();

    std::unique_ptr<TriMesh> mesh(new TriMesh());
    mesh->Reserve(vertexCount, triangleCount);
    for (int i = 0; i < vertexCount; ++i) {
        if (withNormals) {
            mesh->InsertVertex(data.coords[i], data.normals[i]);
        } else {
            mesh->InsertVertex(data.coords[i]);
        }
    }
    for (int t = 0; t < triangleCount; ++t) {
        mesh->InsertTriangle(data.corners[3 * t], data.corners[3 * t + 1], data.corners[3 * t + 2]);
    }
    if (data.hasVertexColor && data.colors.size() == data.coords.size()) {
        mesh->SetHasVertexColor(true);
        for (int i = 0; i < vertexCount; ++i) mesh->SetVertexColor(i, data.colors[i]);
    }
    if (data.hasTriangleTexCoord && data.cornerTexcoords.size() == data.corners.size()) {
        mesh->SetHasTriangleTexCoord(true);
        for (int t = 0; t < triangleCount; ++t) {
            for (int k = 0; k < 3; ++k)
                mesh->SetTriangleTexcoord(t, k, data.cornerTexcoords[3 * t + k]);
        }
    }
    return mesh.release();
}

int FinishWrite(FileWriter& writer, const char* writerName) {
    if (writer.Close()) return RESULT_OK;
    LogLine(writerName, ": file could not be written");
    return RESULT_FAIL;
}

}  // namespace ZOL
