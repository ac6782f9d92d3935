// OptimiseMapping: the API frame of value and image mappings on meshes, which this library
// does not provide.
#include <zol/mesh/OptimiseMapping.h>

#include <zol/dump/DumpCurveRecords.h>
#include <zol/dump/DumpHookInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int OptimiseMapping::Interpolate(const ITriMesh* triMesh,
                                 const std::vector<int>& fixedVertexIds,
                                 const std::vector<Vector3>& fixedValues,
                                 std::vector<Vector3>* vertexValues) {
    SetProgress(0.0);
    DumpCall<DumpOptimiseMappingInterpolate>(triMesh, fixedVertexIds, fixedValues);  // dump hook
    if (triMesh == nullptr || vertexValues == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseMapping::Interpolate: triMesh == NULL || vertexValues == NULL");
    }
    if (fixedVertexIds.empty() || fixedVertexIds.size() != fixedValues.size()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseMapping::Interpolate: invalid fixed values");
    }
    return NotAvailable(Unavailable::OptimiseMapping_Interpolate);
}

int OptimiseMapping::TransferToMesh(const ITriMesh* sourceMesh,
                                    const std::vector<Vector3>& sourceValues,
                                    const ITriMesh* targetMesh,
                                    std::vector<Vector3>* targetValues) {
    SetProgress(0.0);
    DumpCall<DumpOptimiseMappingTransferToMesh>(sourceMesh, sourceValues,
                                                targetMesh);  // dump hook
    if (sourceMesh == nullptr || targetMesh == nullptr || targetValues == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseMapping::TransferToMesh: sourceMesh == NULL || targetMesh == "
                          "NULL || targetValues == NULL");
    }
    if (sourceValues.size() != static_cast<size_t>(sourceMesh->GetVertexCount())) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseMapping::TransferToMesh: sourceValues size != vertexCount");
    }
    return NotAvailable(Unavailable::OptimiseMapping_TransferToMesh);
}

int OptimiseMapping::ProjectToMesh(const ITriMesh* triMesh,
                                   const std::vector<Vector3>& points,
                                   std::vector<PointOnFace>* facePoints) {
    SetProgress(0.0);
    DumpCall<DumpOptimiseMappingProjectToMesh>(triMesh, points);  // dump hook
    if (triMesh == nullptr || facePoints == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseMapping::ProjectToMesh: triMesh == NULL || facePoints == NULL");
    }
    return NotAvailable(Unavailable::OptimiseMapping_ProjectToMesh);
}

int OptimiseMapping::FuseImageColorIds(
    const ITriMesh* triMesh,
    const std::vector<std::vector<ImageColorId>>& vertexCandidates,
    std::vector<ImageColorId>* vertexImageColorIds) {
    SetProgress(0.0);
    DumpCall<DumpOptimiseMappingFuseImageColorIds>(triMesh, vertexCandidates);  // dump hook
    if (triMesh == nullptr || vertexImageColorIds == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseMapping::FuseImageColorIds: triMesh == NULL || "
                          "vertexImageColorIds == NULL");
    }
    if (vertexCandidates.size() != static_cast<size_t>(triMesh->GetVertexCount())) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseMapping::FuseImageColorIds: vertexCandidates size != "
                          "vertexCount");
    }
    return NotAvailable(Unavailable::OptimiseMapping_FuseImageColorIds);
}

int OptimiseMapping::InterpolateFaceImageColorIds(
    const ITriMesh* triMesh,
    const std::vector<ImageColorId>& vertexImageColorIds,
    int samplesPerEdge,
    std::vector<ImageColorId>* faceImageColorIds) {
    SetProgress(0.0);
    DumpCall<DumpOptimiseMappingInterpolateFaceImageColorIds>(triMesh, vertexImageColorIds,
                                                              samplesPerEdge);  // dump hook
    if (triMesh == nullptr || faceImageColorIds == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseMapping::InterpolateFaceImageColorIds: triMesh == NULL || "
                          "faceImageColorIds == NULL");
    }
    if (vertexImageColorIds.size() != static_cast<size_t>(triMesh->GetVertexCount())) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseMapping::InterpolateFaceImageColorIds: vertexImageColorIds "
                          "size != vertexCount");
    }
    if (samplesPerEdge < 2) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseMapping::InterpolateFaceImageColorIds: samplesPerEdge < 2");
    }
    return NotAvailable(Unavailable::OptimiseMapping_InterpolateFaceImageColorIds);
}

}  // namespace ZOL
