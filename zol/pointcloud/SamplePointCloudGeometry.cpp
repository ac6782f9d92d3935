// Sampling by geometry: a share of the samples goes to points whose normals vary in
// their neighbourhood (CalculateFlatness above 0.01), the rest is spread uniformly over
// the other points. Both shares are farthest-point samples.
#include <zol/pointcloud/SamplePointCloud.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <zol/runtime/Ann.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

namespace {

// Points whose flatness exceeds this count as features.
const double kFeatureFlatness = 0.01;

// Farthest-point samples of the listed points of pointList, as point indices.
int SampleAmong(const IPointList* pointList,
                const std::vector<int>& pointIds,
                int sampleCount,
                int seedId,
                SampleQuality quality,
                int* sampleIndex) {
    const SampledPointList subset(pointList, pointIds);
    const int status = SamplePointCloud::_UniformSamplePointList(&subset, sampleCount, sampleIndex,
                                                                 seedId, quality);
    if (status != RESULT_OK) return status;
    for (int i = 0; i < sampleCount; ++i) sampleIndex[i] = pointIds[sampleIndex[i]];
    return RESULT_OK;
}

}  // namespace

int CalculateFlatness(const IPointList* pointList,
                      int neighborCount,
                      std::vector<double>* flatness) {
    SetProgress(0.0);
    if (!pointList || !flatness) {
        return LogFailure(RESULT_INVALID_INPUT, "CalculateFlatness: invalid input");
    }
    const int pointCount = pointList->GetPointCount();
    if (pointCount < 1) {
        return LogFailure(RESULT_FAIL, "CalculateFlatness invalid pointCount: ", pointCount);
    }
    if (neighborCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "CalculateFlatness: neighborCount < 1: ", neighborCount);
    }
    const int k = std::min(pointCount, neighborCount);
    Ann ann;
    int status = ann.Init(pointList, nullptr);
    if (status != RESULT_OK) return LogFailure(status, "CalculateFlatness: Ann initialize failed");
    std::vector<int> neighbors(static_cast<size_t>(pointCount) * k);
    status = ann.FindNearestNeighbors(pointList, k, neighbors.data(), nullptr);
    if (status != RESULT_OK) {
        return LogFailure(status, "CalculateFlatness Ann find nearest neighbor failed");
    }
    std::vector<double> normals;
    CopyPointListNormals(pointList, &normals);

    std::vector<double> values(pointCount);
    auto body = [&](int t, int taskCount) {
        const int end = SliceBegin(pointCount, t + 1, taskCount);
        for (int i = SliceBegin(pointCount, t, taskCount); i < end; ++i) {
            const double* ni = normals.data() + 3 * static_cast<size_t>(i);
            const int* row = neighbors.data() + static_cast<size_t>(i) * k;
            double sum = 0.0;
            for (int j = 0; j < k; ++j) {
                const double* nj = normals.data() + 3 * static_cast<size_t>(row[j]);
                sum += std::fabs(ni[0] * nj[0] + ni[1] * nj[1] + ni[2] * nj[2]);
            }
            values[i] = 1.0 - sum / k;
        }
    };
    status = ParallelFor(ParallelTaskCount(pointCount), body,
                         {"CalculateFlatness", "CalculateFlatness: InsertTask FunctionMT Failed"});
    if (status != RESULT_OK) return status;
    flatness->swap(values);
    return RESULT_OK;
}

int SamplePointCloud::GeometrySample(const IPointCloud* pointCloud,
                                     int sampleCount,
                                     int* sampleIndex,
                                     double uniformWeight,
                                     int neighborCount,
                                     int seedId,
                                     SampleQuality quality) {
    SetProgress(0.0);
    // dump hook
    if (!pointCloud || !pointCloud->HasNormal()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::GeometrySample: pointCloud == NULL || "
                          "pointCloud->HasNormal() == false");
    }
    const PointCloudPointList pointList(pointCloud);
    return _GeometrySamplePointList(&pointList, sampleCount, sampleIndex, uniformWeight,
                                    neighborCount, seedId, quality);
}

int SamplePointCloud::_GeometrySamplePointList(const IPointList* pointList,
                                               int sampleCount,
                                               int* sampleIndex,
                                               double uniformWeight,
                                               int neighborCount,
                                               int seedId,
                                               SampleQuality quality) {
    if (!pointList) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::_GeometrySamplePointList input pointList is NULL");
    }
    const int pointCount = pointList->GetPointCount();
    if (pointCount < 1) {
        return LogFailure(
            RESULT_FAIL,
            "SamplePointCloud::_GeometrySamplePointList invalid pointCount: ", pointCount);
    }
    // Deliberately lenient, as in _UniformSamplePointList.
    if (sampleCount < 1 && sampleCount > pointCount) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "SamplePointCloud::_GeometrySamplePointList invalid sample count: ", sampleCount);
    }
    if (!sampleIndex) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::_GeometrySamplePointList sampleIndex is NULL");
    }
    if (!(uniformWeight >= 0.0 && uniformWeight <= 1.0)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::_GeometrySamplePointList uniformWeight < 0 || "
                          "uniformWeight > 1");
    }

    int uniformCount = static_cast<int>(sampleCount * uniformWeight);
    int featureCount = sampleCount - uniformCount;
    if (featureCount == 0) {
        return _UniformSamplePointList(pointList, sampleCount, sampleIndex, seedId, quality);
    }
    std::vector<double> flatness;
    int status;
    {
        ProgressSuspendScope suspend;
        status = CalculateFlatness(pointList, neighborCount, &flatness);
    }
    if (status != RESULT_OK) {
        return LogFailure(status,
                          "SamplePointCloud::_GeometrySamplePointList CalculateFlatness Failed");
    }
    std::vector<int> features;
    for (int i = 0; i < pointCount; ++i) {
        if (flatness[i] > kFeatureFlatness) features.push_back(i);
    }
    if (features.empty()) {
        return _UniformSamplePointList(pointList, sampleCount, sampleIndex, seedId, quality);
    }
    if (featureCount > static_cast<int>(features.size())) {
        featureCount = static_cast<int>(features.size());
        uniformCount = sampleCount - featureCount;
    }

    status = SampleAmong(pointList, features, featureCount, seedId, quality, sampleIndex);
    if (status != RESULT_OK) {
        return LogFailure(
            status, "SamplePointCloud::_GeometrySamplePointList Geometry Sample Process Failed");
    }
    if (uniformCount > 0) {
        std::vector<char> taken(pointCount, 0);
        for (int i = 0; i < featureCount; ++i) taken[sampleIndex[i]] = 1;
        std::vector<int> others;
        others.reserve(pointCount - featureCount);
        for (int i = 0; i < pointCount; ++i) {
            if (!taken[i]) others.push_back(i);
        }
        status = SampleAmong(pointList, others, uniformCount, seedId, quality,
                             sampleIndex + featureCount);
        if (status != RESULT_OK) {
            return LogFailure(
                status, "SamplePointCloud::_GeometrySamplePointList Uniform Sample Process Failed");
        }
    }
    return RESULT_OK;
}

}  // namespace ZOL
