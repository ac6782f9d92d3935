// MeshGeodesic: the API frame of geodesic distances and paths, which this library does not
// provide. Geodesics have no dump record.
#include <zol/mesh/MeshGeodesic.h>

#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int MeshGeodesic::ComputeDistance(const ITriMesh* triMesh,
                                  const std::vector<int>& sourceVertexIds,
                                  std::vector<double>* distances) {
    SetProgress(0.0);
    if (triMesh == nullptr || distances == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "MeshGeodesic::ComputeDistance: triMesh == NULL || distances == NULL");
    }
    bool valid = !sourceVertexIds.empty();
    for (int id : sourceVertexIds) valid = valid && id >= 0 && id < triMesh->GetVertexCount();
    if (!valid) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "MeshGeodesic::ComputeDistance: invalid sourceVertexIds");
    }
    return NotAvailable(Unavailable::MeshGeodesic_ComputeDistance);
}

int MeshGeodesic::ComputePath(const ITriMesh* triMesh,
                              const PointOnFace& start,
                              const PointOnFace& end,
                              std::vector<PointOnFace>* path) {
    SetProgress(0.0);
    if (triMesh == nullptr || path == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "MeshGeodesic::ComputePath: triMesh == NULL || path == NULL");
    }
    const int triangleCount = triMesh->GetTriangleCount();
    for (const PointOnFace* point : {&start, &end}) {
        if (point->mTriangleId < 0 || point->mTriangleId >= triangleCount) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "MeshGeodesic::ComputePath: triangle id out of range");
        }
    }
    return NotAvailable(Unavailable::MeshGeodesic_ComputePath);
}

}  // namespace ZOL
