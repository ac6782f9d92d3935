// SamplePointCloud::Simplify: the API frame of simplification to a target point count,
// which this library declares for hosts but does not provide.
#include <zol/pointcloud/SamplePointCloud.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int SamplePointCloud::Simplify(const IPointCloud* pointCloud,
                               int targetCount,
                               std::vector<int>* sampleIndex,
                               double* interval) {
    (void)interval;
    SetProgress(0.0);
    DumpCall<DumpPointCloudSimplify>(pointCloud, targetCount);  // dump hook
    if (pointCloud == nullptr || sampleIndex == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::Simplify: pointCloud == NULL || sampleIndex == NULL");
    }
    if (targetCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "SamplePointCloud::Simplify: targetCount < 1");
    }
    return NotAvailable(Unavailable::SamplePointCloud_Simplify);
}

}  // namespace ZOL
