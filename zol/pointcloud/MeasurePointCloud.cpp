// MeasurePointCloud: the API frame of distances between point clouds, which this library
// does not provide.
#include <zol/pointcloud/MeasurePointCloud.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int MeasurePointCloud::ComputeOneSideDistance(const IPointCloud* pointCloud,
                                              const IPointCloud* refCloud,
                                              std::vector<double>* distances) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudMeasureOneSideDistance>(pointCloud, refCloud);  // dump hook
    if (pointCloud == nullptr || refCloud == nullptr || distances == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "MeasurePointCloud::ComputeOneSideDistance: pointCloud == NULL || "
                          "refCloud == NULL || distances == NULL");
    }
    if (refCloud->GetPointCount() < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "MeasurePointCloud::ComputeOneSideDistance: refCloud pointCount < 1");
    }
    return NotAvailable(Unavailable::MeasurePointCloud_ComputeOneSideDistance);
}

}  // namespace ZOL
