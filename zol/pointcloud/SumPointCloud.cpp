// SumPointCloud: the API frame of the sum map, which this library does not provide.
#include <zol/pointcloud/SumPointCloud.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/pointcloud/VolumeBoxInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

SumPointCloud::SumPointCloud(double resolution, const Vector3& bboxMin, const Vector3& bboxMax)
    : mResolution(resolution), mBBoxMin(bboxMin), mBBoxMax(bboxMax) {}

SumPointCloud::~SumPointCloud() = default;

int SumPointCloud::UpdateSumFunction(const IPointCloud* pointCloud, const Matrix4x4* transform) {
    SetProgress(0.0);
    DumpCall<DumpSumPointCloudUpdate>(mResolution, mBBoxMin, mBBoxMax, pointCloud,
                                      transform);  // dump hook
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SumPointCloud::UpdateSumFunction: pointCloud == NULL");
    }
    if (!IsValidVolumeBox(mResolution, mBBoxMin, mBBoxMax)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SumPointCloud::UpdateSumFunction: resolution <= 0 || bboxMin above "
                          "bboxMax");
    }
    return NotAvailable(Unavailable::SumPointCloud_UpdateSumFunction);
}

int SumPointCloud::ExtractPointCloud(IPointCloud* pointCloud) {
    SetProgress(0.0);
    DumpCall<DumpSumPointCloudExtract>(mResolution, mBBoxMin, mBBoxMax);  // dump hook
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SumPointCloud::ExtractPointCloud: pointCloud == NULL");
    }
    if (!IsValidVolumeBox(mResolution, mBBoxMin, mBBoxMax)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SumPointCloud::ExtractPointCloud: resolution <= 0 || bboxMin above "
                          "bboxMax");
    }
    return NotAvailable(Unavailable::SumPointCloud_ExtractPointCloud);
}

void SumPointCloud::Clear() {}

}  // namespace ZOL
