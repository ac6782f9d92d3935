// DeformMesh: the API frame of handle-based deformation, which this library does not
// provide.
#include <zol/mesh/DeformMesh.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

DeformMesh::DeformMesh() = default;
DeformMesh::~DeformMesh() = default;

int DeformMesh::Init(const ITriMesh* triMesh,
                     const std::vector<int>& fixedVertexIds,
                     const std::vector<int>& handleVertexIds) {
    SetProgress(0.0);
    DumpCall<DumpDeformMeshInit>(triMesh, fixedVertexIds, handleVertexIds);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "DeformMesh::Init: triMesh == NULL");
    }
    if (handleVertexIds.empty()) {
        return LogFailure(RESULT_INVALID_INPUT, "DeformMesh::Init: handleVertexIds is empty");
    }
    const int vertexCount = triMesh->GetVertexCount();
    for (const std::vector<int>* ids : {&fixedVertexIds, &handleVertexIds}) {
        for (int id : *ids) {
            if (id < 0 || id >= vertexCount) {
                return LogFailure(RESULT_INVALID_INPUT, "DeformMesh::Init: vertex id out of range");
            }
        }
    }
    return NotAvailable(Unavailable::DeformMesh_Init);
}

int DeformMesh::Deform(const std::vector<Vector3>& handleCoords, ITriMesh* triMesh) {
    SetProgress(0.0);
    DumpCall<DumpDeformMeshDeform>(handleCoords, triMesh);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "DeformMesh::Deform: triMesh == NULL");
    }
    if (handleCoords.empty()) {
        return LogFailure(RESULT_INVALID_INPUT, "DeformMesh::Deform: handleCoords is empty");
    }
    return NotAvailable(Unavailable::DeformMesh_Deform);
}

}  // namespace ZOL
