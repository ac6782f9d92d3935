// UnfoldMesh: the API frame of parameterisation and UV atlases, which this library does
// not provide.
#include <zol/mesh/UnfoldMesh.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int UnfoldMesh::ConformalMap(const ITriMesh* triMesh,
                             const std::vector<int>* fixedVertexIds,
                             const std::vector<Vector2>* fixedCoords,
                             std::vector<Vector2>* vertexTexCoords) {
    SetProgress(0.0);
    DumpCall<DumpMeshUnfoldConformal>(triMesh, fixedVertexIds, fixedCoords);  // dump hook
    if (triMesh == nullptr || vertexTexCoords == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "UnfoldMesh::ConformalMap: triMesh == NULL || vertexTexCoords == NULL");
    }
    const size_t fixedCount = fixedVertexIds ? fixedVertexIds->size() : 0;
    if (fixedCount != (fixedCoords ? fixedCoords->size() : 0)) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "UnfoldMesh::ConformalMap: fixedVertexIds and fixedCoords differ in size");
    }
    return NotAvailable(Unavailable::UnfoldMesh_ConformalMap);
}

int UnfoldMesh::OptimizeIsometric(const ITriMesh* triMesh,
                                  int iterationCount,
                                  std::vector<Vector2>* vertexTexCoords) {
    SetProgress(0.0);
    DumpCall<DumpMeshUnfoldOptimizeIsometric>(triMesh, iterationCount,
                                              vertexTexCoords);  // dump hook
    if (triMesh == nullptr || vertexTexCoords == nullptr) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "UnfoldMesh::OptimizeIsometric: triMesh == NULL || vertexTexCoords == NULL");
    }
    if (iterationCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "UnfoldMesh::OptimizeIsometric: iterationCount < 1");
    }
    if (vertexTexCoords->size() != static_cast<size_t>(triMesh->GetVertexCount())) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "UnfoldMesh::OptimizeIsometric: vertexTexCoords size != vertexCount");
    }
    return NotAvailable(Unavailable::UnfoldMesh_OptimizeIsometric);
}

int UnfoldMesh::GenerateUVAtlas(const ITriMesh* triMesh,
                                double maxDistortion,
                                std::vector<Vector2>* cornerTexCoords) {
    SetProgress(0.0);
    DumpCall<DumpMeshUnfoldGenerateUVAtlas>(triMesh, maxDistortion);  // dump hook
    if (triMesh == nullptr || cornerTexCoords == nullptr) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "UnfoldMesh::GenerateUVAtlas: triMesh == NULL || cornerTexCoords == NULL");
    }
    if (!(maxDistortion > 0.0)) {
        return LogFailure(RESULT_INVALID_INPUT, "UnfoldMesh::GenerateUVAtlas: maxDistortion <= 0");
    }
    return NotAvailable(Unavailable::UnfoldMesh_GenerateUVAtlas);
}

int UnfoldMesh::PackUVAtlas(const ITriMesh* triMesh,
                            double gapRatio,
                            std::vector<Vector2>* cornerTexCoords) {
    SetProgress(0.0);
    DumpCall<DumpMeshUnfoldPackUVAtlas>(triMesh, gapRatio, cornerTexCoords);  // dump hook
    if (triMesh == nullptr || cornerTexCoords == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "UnfoldMesh::PackUVAtlas: triMesh == NULL || cornerTexCoords == NULL");
    }
    if (!(gapRatio >= 0.0 && gapRatio < 0.5)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "UnfoldMesh::PackUVAtlas: gapRatio out of [0, 0.5)");
    }
    if (cornerTexCoords->size() != 3 * static_cast<size_t>(triMesh->GetTriangleCount())) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "UnfoldMesh::PackUVAtlas: cornerTexCoords size != 3 * triangleCount");
    }
    return NotAvailable(Unavailable::UnfoldMesh_PackUVAtlas);
}

}  // namespace ZOL
