// FuseDepthVideo: the API frame of depth-video fusion, which this library does not provide.
// Depth-video fusion has no dump record.
#include <zol/pointcloud/FuseDepthVideo.h>

#include <zol/pointcloud/VolumeBoxInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

FuseDepthVideo::FuseDepthVideo(double resolution, const Vector3& bboxMin, const Vector3& bboxMax)
    : mResolution(resolution), mBBoxMin(bboxMin), mBBoxMax(bboxMax) {}

FuseDepthVideo::~FuseDepthVideo() = default;

int FuseDepthVideo::UpdateFrame(const std::vector<double>& depths,
                                int width,
                                int height,
                                const std::vector<double>& intrinsics,
                                const Matrix4x4& /*cameraPose*/) {
    SetProgress(0.0);
    if (width < 1 || height < 1 ||
        depths.size() != static_cast<size_t>(width) * static_cast<size_t>(height)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FuseDepthVideo::UpdateFrame: depths.size() != width * height");
    }
    if (intrinsics.size() != 4) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FuseDepthVideo::UpdateFrame: intrinsics.size() != 4");
    }
    if (!IsValidVolumeBox(mResolution, mBBoxMin, mBBoxMax)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FuseDepthVideo::UpdateFrame: resolution <= 0 || bboxMin above bboxMax");
    }
    return NotAvailable(Unavailable::FuseDepthVideo_UpdateFrame);
}

int FuseDepthVideo::ExtractPointCloud(IPointCloud* pointCloud) {
    SetProgress(0.0);
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FuseDepthVideo::ExtractPointCloud: pointCloud == NULL");
    }
    if (!IsValidVolumeBox(mResolution, mBBoxMin, mBBoxMax)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FuseDepthVideo::ExtractPointCloud: resolution <= 0 || bboxMin above "
                          "bboxMax");
    }
    return NotAvailable(Unavailable::FuseDepthVideo_ExtractPointCloud);
}

void FuseDepthVideo::Clear() {}

}  // namespace ZOL
