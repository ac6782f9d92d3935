// SimplifyMesh: the API frame of mesh simplification, which this library does not provide.
#include <zol/mesh/SimplifyMesh.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int SimplifyMesh::QuadricSimplify(ITriMesh* triMesh, int targetVertexCount) {
    SetProgress(0.0);
    DumpCall<DumpMeshSimplificationQuadric>(triMesh, targetVertexCount);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "SimplifyMesh::QuadricSimplify: triMesh == NULL");
    }
    if (targetVertexCount < 4) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SimplifyMesh::QuadricSimplify: targetVertexCount < 4");
    }
    return NotAvailable(Unavailable::SimplifyMesh_QuadricSimplify);
}

int SimplifyMesh::QuadricSimplifyTextureCoord(ITriMesh* triMesh,
                                              int targetVertexCount,
                                              std::vector<Vector2>* cornerTexCoords) {
    SetProgress(0.0);
    DumpCall<DumpMeshSimplificationTextureCoord>(triMesh, targetVertexCount,
                                                 cornerTexCoords);  // dump hook
    if (triMesh == nullptr || cornerTexCoords == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SimplifyMesh::QuadricSimplifyTextureCoord: triMesh == NULL || "
                          "cornerTexCoords == NULL");
    }
    if (targetVertexCount < 4) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SimplifyMesh::QuadricSimplifyTextureCoord: targetVertexCount < 4");
    }
    if (cornerTexCoords->size() != 3 * static_cast<size_t>(triMesh->GetTriangleCount())) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SimplifyMesh::QuadricSimplifyTextureCoord: cornerTexCoords size != 3 "
                          "* triangleCount");
    }
    return NotAvailable(Unavailable::SimplifyMesh_QuadricSimplifyTextureCoord);
}

int SimplifyMesh::RemoveVertices(ITriMesh* triMesh, const std::vector<int>& vertexIds) {
    SetProgress(0.0);
    DumpCall<DumpMeshSimplificationByRemovingVertex>(triMesh, vertexIds);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "SimplifyMesh::RemoveVertices: triMesh == NULL");
    }
    const int vertexCount = triMesh->GetVertexCount();
    for (int id : vertexIds) {
        if (id < 0 || id >= vertexCount) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "SimplifyMesh::RemoveVertices: vertex id out of range");
        }
    }
    return NotAvailable(Unavailable::SimplifyMesh_RemoveVertices);
}

}  // namespace ZOL
