// ReconstructMesh: the API frame of surface reconstruction, which this library does not
// provide.
#include <zol/pointcloud/ReconstructMesh.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int ReconstructMesh::Reconstruct(const IPointCloud* pointCloud, int depth, ITriMesh* triMesh) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudReconstructMesh>(pointCloud, depth);  // dump hook
    if (pointCloud == nullptr || triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ReconstructMesh::Reconstruct: pointCloud == NULL || triMesh == NULL");
    }
    if (!pointCloud->HasNormal()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ReconstructMesh::Reconstruct: pointCloud should has normal first");
    }
    if (depth < 1 || depth > 16) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ReconstructMesh::Reconstruct: depth out of [1, 16]");
    }
    return NotAvailable(Unavailable::ReconstructMesh_Reconstruct);
}

}  // namespace ZOL
