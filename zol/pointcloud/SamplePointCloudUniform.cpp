// Uniform (farthest-point) sampling of a cloud or a point list, including the two-stage
// path of the high quality: draw extra samples first, then thin them.
#include <zol/pointcloud/SamplePointCloud.h>

#include <algorithm>
#include <vector>

#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

// Extra first-stage samples of the high quality: 20 %, at most 10000.
const double kExtraShare = 0.2;
const int kMaxExtra = 10000;

bool IsValidQuality(SampleQuality quality) {
    return quality == SAMPLE_QUALITY_LOW || quality == SAMPLE_QUALITY_HIGH;
}

std::vector<int> AllPoints(int count) {
    std::vector<int> ids(count);
    for (int i = 0; i < count; ++i) ids[i] = i;
    return ids;
}

// High quality with room for extra samples: farthest-point samples of the whole list at
// the low thresholds, then sampleCount of those at the high ones. The result is the
// positions within the first stage's subset, as they come.
int SampleTwoStages(
    const IPointList* pointList, int sampleCount, int stageCount, int* sampleIndex, int seedId) {
    std::vector<int> firstStage;
    int status =
        SamplePointCloud::UniformSampleSubpart(pointList, AllPoints(pointList->GetPointCount()),
                                               stageCount, firstStage, seedId, SAMPLE_QUALITY_LOW);
    if (status != RESULT_OK) {
        return LogFailure(status, "SamplePointCloud::_UniformSamplePointList failed");
    }
    const SampledPointList subset(pointList, firstStage);
    std::vector<int> secondStage;
    status = SamplePointCloud::UniformSampleSubpart(&subset, AllPoints(stageCount), sampleCount,
                                                    secondStage, seedId, SAMPLE_QUALITY_HIGH);
    if (status != RESULT_OK) {
        return LogFailure(status, "SamplePointCloud::_UniformSamplePointList failed");
    }
    std::copy(secondStage.begin(), secondStage.begin() + sampleCount, sampleIndex);
    return RESULT_OK;
}

}  // namespace

int SamplePointCloud::UniformSample(const IPointCloud* pointCloud,
                                    int sampleCount,
                                    int* sampleIndex,
                                    int seedId,
                                    SampleQuality quality) {
    SetProgress(0.0);
    // dump hook
    const PointCloudPointList pointList(pointCloud);
    const int pointCount = pointList.GetPointCount();
    if (pointCount < 1 || sampleCount > pointCount) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::UniformSample pointCount < 1 || sampleCount > "
                          "pointCount ");
    }
    if (!IsValidQuality(quality)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::UniformSample: invalid quality parameter: ",
                          static_cast<int>(quality));
    }
    if (sampleCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::UniformSample: sampleCount < 1: ", sampleCount);
    }

    if (quality == SAMPLE_QUALITY_HIGH) {
        const int extra = std::min(static_cast<int>(kExtraShare * sampleCount), kMaxExtra);
        const int stageCount = sampleCount + extra;
        if (stageCount < pointCount && extra != 0) {
            if (!sampleIndex) {
                return LogFailure(RESULT_INVALID_INPUT,
                                  "SamplePointCloud::UniformSample sampleIndex is NULL");
            }
            return SampleTwoStages(&pointList, sampleCount, stageCount, sampleIndex, seedId);
        }
    }
    const int status =
        _UniformSamplePointList(&pointList, sampleCount, sampleIndex, seedId, quality);
    if (status != RESULT_OK) return LogFailure(status, "SamplePointCloud::UniformSample failed");
    return RESULT_OK;
}

int SamplePointCloud::_UniformSamplePointList(const IPointList* pointList,
                                              int sampleCount,
                                              int* sampleIndex,
                                              int seedId,
                                              SampleQuality quality) {
    if (!pointList) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::_UniformSamplePointList input pointList is NULL");
    }
    if (!IsValidQuality(quality)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::_UniformSamplePointList: invalid quality parameter: ",
                          static_cast<int>(quality));
    }
    const int pointCount = pointList->GetPointCount();
    if (pointCount < 1) {
        return LogFailure(
            RESULT_FAIL,
            "SamplePointCloud::_UniformSamplePointList invalid pointCount: ", pointCount);
    }
    // Deliberately lenient: once there is a point this never fires, and a count out of
    // range is left to UniformSampleSubpart.
    if (sampleCount < 1 && sampleCount > pointCount) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "SamplePointCloud::_UniformSamplePointList invalid sample count: ", sampleCount);
    }
    if (!sampleIndex) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::_UniformSamplePointList sampleIndex is NULL");
    }
    std::vector<int> samples;
    const int status = UniformSampleSubpart(pointList, AllPoints(pointCount), sampleCount, samples,
                                            seedId, quality);
    if (status != RESULT_OK) {
        return LogFailure(status, "SamplePointCloud::_UniformSamplePointList failed");
    }
    std::copy(samples.begin(), samples.begin() + sampleCount, sampleIndex);
    return RESULT_OK;
}

}  // namespace ZOL
