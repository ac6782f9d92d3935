// ConsolidatePointCloud: the API frame of the per-point measures (isolation, uniformity,
// outliers) and of raw-scan and overlap clean-up, which this library declares for hosts
// but does not provide; each records its call and answers RESULT_NOT_AVAILABLE.
#include <zol/pointcloud/ConsolidatePointCloud.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int ConsolidatePointCloud::CalculateIsolation(const IPointCloud* pointCloud,
                                              int neighborCount,
                                              std::vector<double>* isolation) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudConsolidationCalculateIsolation>(pointCloud,
                                                            neighborCount);  // dump hook
    if (pointCloud == nullptr || isolation == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::CalculateIsolation: pointCloud == NULL || "
                          "isolation == NULL");
    }
    if (neighborCount < 2) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::CalculateIsolation: neighborCount < 2");
    }
    return NotAvailable(Unavailable::ConsolidatePointCloud_CalculateIsolation);
}

int ConsolidatePointCloud::CalculateUniformity(const IPointCloud* pointCloud,
                                               int neighborCount,
                                               std::vector<double>* uniformity) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudConsolidationCalculateUniformity>(pointCloud,
                                                             neighborCount);  // dump hook
    if (pointCloud == nullptr || uniformity == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::CalculateUniformity: pointCloud == NULL || "
                          "uniformity == NULL");
    }
    if (neighborCount < 3) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::CalculateUniformity: neighborCount < 3");
    }
    return NotAvailable(Unavailable::ConsolidatePointCloud_CalculateUniformity);
}

int ConsolidatePointCloud::CalculateOutlier(const IPointCloud* pointCloud,
                                            int neighborCount,
                                            std::vector<double>* outlierValues) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudConsolidationCalculateOutlier>(pointCloud, neighborCount);  // dump hook
    if (pointCloud == nullptr || outlierValues == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::CalculateOutlier: pointCloud == NULL || "
                          "outlierValues == NULL");
    }
    if (neighborCount < 4) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::CalculateOutlier: neighborCount < 4");
    }
    return NotAvailable(Unavailable::ConsolidatePointCloud_CalculateOutlier);
}

int ConsolidatePointCloud::ConsolidateRawScanData(IPointCloud* pointCloud,
                                                  int neighborCount,
                                                  double maxZAngle,
                                                  std::vector<int>* removeIndex) {
    (void)removeIndex;
    SetProgress(0.0);
    DumpCall<DumpPointCloudConsolidationRawScanData>(pointCloud, neighborCount,
                                                     maxZAngle);  // dump hook
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::ConsolidateRawScanData: pointCloud == NULL");
    }
    if (neighborCount < 4) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::ConsolidateRawScanData: neighborCount < 4");
    }
    // Written as "not inside" so that NaN is refused too.
    if (!(maxZAngle >= 0.0 && maxZAngle <= 90.0 * ONE_RADIAN)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::ConsolidateRawScanData: maxZAngle < 0 || "
                          "maxZAngle > 90.0");
    }
    return NotAvailable(Unavailable::ConsolidatePointCloud_ConsolidateRawScanData);
}

int ConsolidatePointCloud::RemoveOverlap(const std::vector<IPointCloud*>& pointCloudList,
                                         double overlapDistance,
                                         std::vector<std::vector<int>>* removeIndexList) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudConsolidationRemoveOverlap>(pointCloudList,
                                                       overlapDistance);  // dump hook
    const int cloudCount = static_cast<int>(pointCloudList.size());
    if (cloudCount < 2) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::RemoveOverlap: cloudCount < 2");
    }
    for (int c = 0; c < cloudCount; ++c) {
        if (pointCloudList[c] == nullptr) {
            return LogFailure(
                RESULT_INVALID_INPUT,
                "ConsolidatePointCloud::RemoveOverlap: pointCloud is NULL: cloudId = ", c);
        }
    }
    if (!(overlapDistance > 0.0)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::RemoveOverlap: overlapDistance <= 0");
    }
    if (removeIndexList == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::RemoveOverlap: removeIndexList == NULL");
    }
    return NotAvailable(Unavailable::ConsolidatePointCloud_RemoveOverlap);
}

}  // namespace ZOL
