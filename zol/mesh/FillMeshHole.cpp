// FillMeshHole: the API frame of hole finding, filling and bridging, which this library
// does not provide.
#include <zol/mesh/FillMeshHole.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int FillMeshHole::FindHoles(const ITriMesh* triMesh, std::vector<std::vector<int>>* holeVertexIds) {
    SetProgress(0.0);
    DumpCall<DumpFindMeshHole>(triMesh);  // dump hook
    if (triMesh == nullptr || holeVertexIds == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FillMeshHole::FindHoles: triMesh == NULL || holeVertexIds == NULL");
    }
    return NotAvailable(Unavailable::FillMeshHole_FindHoles);
}

int FillMeshHole::FillHoles(ITriMesh* triMesh,
                            const std::vector<int>* boundarySeedIds,
                            FillMeshHoleType type,
                            const std::vector<double>* vertexFields,
                            std::vector<double>* /*outputFields*/) {
    SetProgress(0.0);
    DumpCall<DumpFillMeshHole>(triMesh, boundarySeedIds, type, vertexFields);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "FillMeshHole::FillHoles: triMesh == NULL");
    }
    const int vertexCount = triMesh->GetVertexCount();
    if (boundarySeedIds != nullptr) {
        for (int id : *boundarySeedIds) {
            if (id < 0 || id >= vertexCount) {
                return LogFailure(RESULT_INVALID_INPUT,
                                  "FillMeshHole::FillHoles: boundarySeedId out of range");
            }
        }
    }
    if (type < FILL_MESH_HOLE_FLAT || type > FILL_MESH_HOLE_CURVATURE) {
        return LogFailure(RESULT_INVALID_INPUT, "FillMeshHole::FillHoles: invalid type");
    }
    if (vertexFields != nullptr && !vertexFields->empty() &&
        (vertexCount == 0 || vertexFields->size() % static_cast<size_t>(vertexCount) != 0)) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "FillMeshHole::FillHoles: vertexFields size is not a multiple of vertexCount");
    }
    return NotAvailable(Unavailable::FillMeshHole_FillHoles);
}

int FillMeshHole::BridgeEdges(ITriMesh* triMesh,
                              const std::vector<int>& edgeVertexIds,
                              int segmentCount) {
    SetProgress(0.0);
    DumpCall<DumpBridgeEdges>(triMesh, edgeVertexIds, segmentCount);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "FillMeshHole::BridgeEdges: triMesh == NULL");
    }
    if (edgeVertexIds.empty() || edgeVertexIds.size() % 4 != 0) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "FillMeshHole::BridgeEdges: edgeVertexIds.empty() || edgeVertexIds.size() % 4 != 0");
    }
    if (segmentCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "FillMeshHole::BridgeEdges: segmentCount < 1");
    }
    return NotAvailable(Unavailable::FillMeshHole_BridgeEdges);
}

}  // namespace ZOL
