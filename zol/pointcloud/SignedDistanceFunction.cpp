// SignedDistanceFunction: the API frame of the distance grid, which this library does not
// provide.
#include <zol/pointcloud/SignedDistanceFunction.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/pointcloud/VolumeBoxInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

SignedDistanceFunction::SignedDistanceFunction(double resolution,
                                               const Vector3& bboxMin,
                                               const Vector3& bboxMax)
    : mResolution(resolution), mBBoxMin(bboxMin), mBBoxMax(bboxMax) {}

SignedDistanceFunction::~SignedDistanceFunction() = default;

int SignedDistanceFunction::UpdateFunction(const IPointCloud* pointCloud,
                                           const Vector3& viewPoint) {
    SetProgress(0.0);
    DumpCall<DumpSignedDistanceFunctionUpdate>(mResolution, mBBoxMin, mBBoxMax, pointCloud,
                                               viewPoint);  // dump hook
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SignedDistanceFunction::UpdateFunction: pointCloud == NULL");
    }
    if (!IsValidVolumeBox(mResolution, mBBoxMin, mBBoxMax)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SignedDistanceFunction::UpdateFunction: resolution <= 0 || bboxMin "
                          "above bboxMax");
    }
    return NotAvailable(Unavailable::SignedDistanceFunction_UpdateFunction);
}

int SignedDistanceFunction::ExtractTriMesh(ITriMesh* triMesh) {
    SetProgress(0.0);
    DumpCall<DumpSignedDistanceFunctionExtract>(mResolution, mBBoxMin, mBBoxMax);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SignedDistanceFunction::ExtractTriMesh: triMesh == NULL");
    }
    if (!IsValidVolumeBox(mResolution, mBBoxMin, mBBoxMax)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SignedDistanceFunction::ExtractTriMesh: resolution <= 0 || bboxMin "
                          "above bboxMax");
    }
    return NotAvailable(Unavailable::SignedDistanceFunction_ExtractTriMesh);
}

void SignedDistanceFunction::Clear() {}

}  // namespace ZOL
