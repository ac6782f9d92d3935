// FitPointCloud: the API frame of surface fitting to points, which this library does not
// provide.
#include <zol/pointcloud/FitPointCloud.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int FitPointCloud::FitUniform(const IPointCloud* pointCloud,
                              double spacing,
                              IPointCloud* fittedCloud) {
    SetProgress(0.0);
    DumpCall<DumpFitPointCloudUniform>(pointCloud, spacing);  // dump hook
    if (pointCloud == nullptr || fittedCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FitPointCloud::FitUniform: pointCloud == NULL || fittedCloud == NULL");
    }
    if (pointCloud->GetPointCount() < 3) {
        return LogFailure(RESULT_INVALID_INPUT, "FitPointCloud::FitUniform: pointCount < 3");
    }
    if (!(spacing > 0.0)) {
        return LogFailure(RESULT_INVALID_INPUT, "FitPointCloud::FitUniform: spacing <= 0");
    }
    return NotAvailable(Unavailable::FitPointCloud_FitUniform);
}

}  // namespace ZOL
