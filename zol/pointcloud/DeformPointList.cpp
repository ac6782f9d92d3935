// DeformPointList: the API frame of non-rigid point deformation, which this library does
// not provide.
#include <zol/pointcloud/DeformPointList.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int DeformPointList::Deform(IPointCloud* pointCloud,
                            const std::vector<int>& controlIds,
                            const std::vector<Vector3>& targetCoords,
                            double stiffness) {
    SetProgress(0.0);
    DumpCall<DumpDeformPointListDeform>(pointCloud, controlIds, targetCoords,
                                        stiffness);  // dump hook
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "DeformPointList::Deform: pointCloud == NULL");
    }
    bool valid = !controlIds.empty() && controlIds.size() == targetCoords.size();
    for (int id : controlIds) valid = valid && id >= 0 && id < pointCloud->GetPointCount();
    if (!valid) {
        return LogFailure(RESULT_INVALID_INPUT, "DeformPointList::Deform: invalid control points");
    }
    if (!(stiffness > 0.0)) {
        return LogFailure(RESULT_INVALID_INPUT, "DeformPointList::Deform: stiffness <= 0");
    }
    return NotAvailable(Unavailable::DeformPointList_Deform);
}

}  // namespace ZOL
