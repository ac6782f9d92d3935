// OffsetMesh: the API frame of mesh offsetting, which this library does not provide.
#include <zol/mesh/OffsetMesh.h>

#include <cmath>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int OffsetMesh::UniformApproximateOffset(const ITriMesh* triMesh,
                                         double offsetDistance,
                                         ITriMesh* offsetMesh) {
    SetProgress(0.0);
    DumpCall<DumpOffsetMeshUniformApproximate>(triMesh, offsetDistance);  // dump hook
    if (triMesh == nullptr || offsetMesh == nullptr) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "OffsetMesh::UniformApproximateOffset: triMesh == NULL || offsetMesh == NULL");
    }
    if (offsetDistance == 0.0 || !std::isfinite(offsetDistance)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OffsetMesh::UniformApproximateOffset: invalid offsetDistance");
    }
    return NotAvailable(Unavailable::OffsetMesh_UniformApproximateOffset);
}

}  // namespace ZOL
