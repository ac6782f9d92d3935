// SubdivideMesh: the API frame of mesh refinement, which this library does not provide.
#include <zol/mesh/SubdivideMesh.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int SubdivideMesh::LoopSubdivide(ITriMesh* triMesh, int iterationCount) {
    SetProgress(0.0);
    DumpCall<DumpMeshSubdivisionLoop>(triMesh, iterationCount);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "SubdivideMesh::LoopSubdivide: triMesh == NULL");
    }
    if (iterationCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "SubdivideMesh::LoopSubdivide: iterationCount < 1");
    }
    return NotAvailable(Unavailable::SubdivideMesh_LoopSubdivide);
}

int SubdivideMesh::Densify(ITriMesh* triMesh, double maxEdgeLength) {
    SetProgress(0.0);
    DumpCall<DumpMeshSubdivisionDensify>(triMesh, maxEdgeLength);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "SubdivideMesh::Densify: triMesh == NULL");
    }
    if (!(maxEdgeLength > 0.0)) {
        return LogFailure(RESULT_INVALID_INPUT, "SubdivideMesh::Densify: maxEdgeLength <= 0");
    }
    return NotAvailable(Unavailable::SubdivideMesh_Densify);
}

int SubdivideMesh::InsertPointsOnMesh(ITriMesh* triMesh,
                                      const std::vector<PointOnFace>& facePoints,
                                      std::vector<int>* /*vertexIds*/) {
    SetProgress(0.0);
    DumpCall<DumpMeshSubdivisionInsertPointsOnMesh>(triMesh, facePoints);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SubdivideMesh::InsertPointsOnMesh: triMesh == NULL");
    }
    const int triangleCount = triMesh->GetTriangleCount();
    for (const PointOnFace& point : facePoints) {
        if (point.mTriangleId < 0 || point.mTriangleId >= triangleCount) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "SubdivideMesh::InsertPointsOnMesh: triangle id out of range");
        }
    }
    return NotAvailable(Unavailable::SubdivideMesh_InsertPointsOnMesh);
}

}  // namespace ZOL
