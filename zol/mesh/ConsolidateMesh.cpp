// ConsolidateMesh: the API frame of mesh repair, which this library does not provide.
#include <zol/mesh/ConsolidateMesh.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int ConsolidateMesh::MakeTriMeshManifold(ITriMesh* triMesh) {
    SetProgress(0.0);
    DumpCall<DumpMeshConsolidationMakeManifold>(triMesh);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidateMesh::MakeTriMeshManifold: triMesh == NULL");
    }
    return NotAvailable(Unavailable::ConsolidateMesh_MakeTriMeshManifold);
}

int ConsolidateMesh::ConsolidateGeometry(ITriMesh* triMesh,
                                         double minTriangleAngle,
                                         double maxFoldoverAngle) {
    SetProgress(0.0);
    DumpCall<DumpMeshConsolidationGeometry>(triMesh, minTriangleAngle,
                                            maxFoldoverAngle);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidateMesh::ConsolidateGeometry: triMesh == NULL");
    }
    if (!(minTriangleAngle >= 0.0 && minTriangleAngle < ZOL_PI / 3.0) ||
        !(maxFoldoverAngle > 0.0 && maxFoldoverAngle <= ZOL_PI)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidateMesh::ConsolidateGeometry: invalid angle");
    }
    return NotAvailable(Unavailable::ConsolidateMesh_ConsolidateGeometry);
}

int ConsolidateMesh::RemoveGeometryNoise(ITriMesh* triMesh, double minPartRatio) {
    SetProgress(0.0);
    DumpCall<DumpMeshConsolidationRemoveGeometryNoise>(triMesh, minPartRatio);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidateMesh::RemoveGeometryNoise: triMesh == NULL");
    }
    if (!(minPartRatio >= 0.0 && minPartRatio <= 1.0)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidateMesh::RemoveGeometryNoise: minPartRatio out of [0, 1]");
    }
    return NotAvailable(Unavailable::ConsolidateMesh_RemoveGeometryNoise);
}

}  // namespace ZOL
