// The preparation steps of ICP: fast samplers that thin a dense cloud on a grid before
// farthest-point sampling, normals of the samples, the pairing distance unit derived
// from the ref spacing, and the spacing of landmark marks.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include <zol/core/IPointList.h>
#include <zol/pointcloud/NormalEstimationInternal.h>
#include <zol/pointcloud/PointCloudUtility.h>
#include <zol/pointcloud/SamplePointCloud.h>
#include <zol/registration/RegistrationInternal.h>
#include <zol/runtime/Ann.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ParallelInternal.h>
#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

namespace {

/// Cells along the diagonal above which a finer grid would keep every point anyway.
constexpr int kMaxReduceResolution = 1 << 20;
/// Points of the sampling subset per sample wanted.
constexpr int kSubsetPerSample = 4;
/// Neighbours of a sample for its plane-fit normal.
constexpr int kSampleNormalNeighbors = 10;

/// One point per occupied cell of a grid of cell size \p cell anchored at \p boxMin: the
/// point nearest the cell centre (lower id on a tie). Ids come out ascending.
void GridPass(const std::vector<double>& xyz,
              const Vector3& boxMin,
              double cell,
              std::vector<int>* kept) {
    const int count = static_cast<int>(xyz.size() / 3);
    // Open addressing over packed cell keys (21 bits per axis suffice for 2^20 cells).
    size_t tableSize = 1;
    while (tableSize < 2 * static_cast<size_t>(count)) tableSize <<= 1;
    std::vector<uint64_t> keys(tableSize, UINT64_MAX);
    std::vector<int> best(tableSize, -1);
    std::vector<double> bestScore(tableSize, 0.0);
    for (int i = 0; i < count; ++i) {
        uint64_t key = 0;
        double score = 0.0;
        for (int a = 0; a < 3; ++a) {
            const double u = (xyz[3 * i + a] - boxMin[a]) / cell;
            const double cellIndex = std::floor(u);
            key = (key << 21) | static_cast<uint64_t>(cellIndex);
            score += (u - cellIndex - 0.5) * (u - cellIndex - 0.5);
        }
        size_t slot = (key * 0x9E3779B97F4A7C15ull) >> 20 & (tableSize - 1);
        while (keys[slot] != UINT64_MAX && keys[slot] != key) slot = (slot + 1) & (tableSize - 1);
        if (keys[slot] == UINT64_MAX || score < bestScore[slot]) {
            keys[slot] = key;
            best[slot] = i;
            bestScore[slot] = score;
        }
    }
    kept->clear();
    for (size_t s = 0; s < tableSize; ++s) {
        if (best[s] >= 0) kept->push_back(best[s]);
    }
    std::sort(kept->begin(), kept->end());
}

/// The subset that the fast samplers sample from: one point per cell of a grid with
/// cell = diagonal / resolution. Farthest-point and flatness costs grow with the
/// subset, so a subset still far larger than the samples need (a dense scan at the
/// default resolution keeps half its points) is thinned by a coarser grid to about
/// kSubsetPerSample points per sample; that keeps the spread of the cloud at the
/// spacing of the samples, which is all that sampling can see.
/// \return the bounding box's status, or RESULT_OK.
int ReduceOnGrid(const IPointCloud* pointCloud,
                 int resolution,
                 int sampleCount,
                 std::vector<int>* kept) {
    PointCloudPointList list(pointCloud);
    Vector3 boxMin, boxMax;
    int status;
    {
        // A library operation of its own: its progress reset must not show inside ICP.
        ProgressSuspendScope suspend;
        status = CalculatePointListBoundingBox(&list, boxMin, boxMax);
    }
    if (status != RESULT_OK) return status;
    std::vector<double> xyz;
    CopyPointListCoords(&list, &xyz);
    double cell = (boxMax - boxMin).Length() / std::min(resolution, kMaxReduceResolution);
    if (!(cell > REAL_TOL)) {  // all points at one spot
        kept->assign(1, 0);
        return RESULT_OK;
    }
    GridPass(xyz, boxMin, cell, kept);
    const double wanted = static_cast<double>(kSubsetPerSample) * sampleCount;
    if (kept->size() > 2 * wanted) {
        // Occupied cells of a surface fall with the square of the cell size.
        cell *= std::sqrt(kept->size() / wanted);
        GridPass(xyz, boxMin, cell, kept);
    }
    return RESULT_OK;
}

/// Repeats the first \p got ids cyclically up to \p sampleCount and maps them through
/// \p subset to point ids of the cloud.
void FillAndMapBack(const std::vector<int>& subset,
                    const std::vector<int>& picked,
                    int got,
                    int sampleCount,
                    std::vector<int>* sampleIds) {
    sampleIds->resize(sampleCount);
    for (int i = 0; i < sampleCount; ++i) (*sampleIds)[i] = subset[picked[i % got]];
}

}  // namespace

int FastUniformSample(const IPointCloud* pointCloud,
                      int sampleCount,
                      std::vector<int>* sampleIds,
                      int resolution) {
    if (resolution < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "FastUniformSample: invalid resolution ",
                          resolution);
    }
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "FastUniformSample: pointCloud is NULL");
    }
    if (pointCloud->GetPointCount() < 1 || sampleCount < 1 || sampleIds == nullptr) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "FastUniformSample: empty pointCloud || sampleCount < 1 || sampleIds == NULL");
    }
    std::vector<int> subset;
    int status = ReduceOnGrid(pointCloud, resolution, sampleCount, &subset);
    if (status != RESULT_OK) return status;
    const int got = std::min(static_cast<int>(subset.size()), sampleCount);
    PointCloudPointList list(pointCloud);
    SampledPointList reduced(&list, subset);
    std::vector<int> picked(got);
    {
        ProgressSuspendScope suspend;
        status = SamplePointCloud::_UniformSamplePointList(&reduced, got, picked.data(), 0,
                                                           SAMPLE_QUALITY_LOW);
    }
    if (status != RESULT_OK) return status;
    FillAndMapBack(subset, picked, got, sampleCount, sampleIds);
    return RESULT_OK;
}

int FastGeometrySample(const IPointCloud* pointCloud,
                       int sampleCount,
                       std::vector<int>* sampleIds,
                       int resolution,
                       double sharpPercent,
                       int neighborCount,
                       int flag) {
    if (resolution < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "FastGeometrySample: invalid resolution ",
                          resolution);
    }
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "FastGeometrySample: pointCloud is NULL");
    }
    if (!pointCloud->HasNormal() || pointCloud->GetPointCount() < 1 || sampleCount < 1 ||
        sampleIds == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FastGeometrySample: no normal || empty pointCloud || sampleCount < "
                          "1 || sampleIds == NULL");
    }
    std::vector<int> subset;
    int status = ReduceOnGrid(pointCloud, resolution, sampleCount, &subset);
    if (status != RESULT_OK) return status;
    const int got = std::min(static_cast<int>(subset.size()), sampleCount);
    PointCloudPointList list(pointCloud);
    SampledPointList reduced(&list, subset);
    std::vector<int> picked(got);
    {
        ProgressSuspendScope suspend;
        status = SamplePointCloud::_GeometrySamplePointList(&reduced, got, picked.data(),
                                                            sharpPercent, neighborCount, 0,
                                                            static_cast<SampleQuality>(flag));
    }
    if (status != RESULT_OK) return status;
    FillAndMapBack(subset, picked, got, sampleCount, sampleIds);
    return RESULT_OK;
}

int ComputeSamplePointNormal(const IPointCloud* pointCloud,
                             PointCloudInfo& pointCloudInfo,
                             int sampleCount,
                             const int* sampleIds,
                             std::vector<Vector3>* normals) {
    if (pointCloud == nullptr || sampleIds == nullptr || normals == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ComputeSamplePointNormal: pointCloud == NULL || sampleIndex == NULL");
    }
    const int pointCount = pointCloud->GetPointCount();
    for (int i = 0; i < sampleCount; ++i) {
        if (sampleIds[i] < 0 || sampleIds[i] >= pointCount) {
            return LogFailure(RESULT_INVALID_INPUT, "ComputeSamplePointNormal: invalid sample id ",
                              sampleIds[i]);
        }
    }
    int status = pointCloudInfo.InitAnn(pointCloud, kSampleNormalNeighbors);
    if (status != RESULT_OK) {
        return LogFailure(status, "ComputeSamplePointNormal: neighbor search failed ", status);
    }
    std::vector<Vector3> result(std::max(sampleCount, 0));
    std::vector<int> failures(ParallelTaskCount(sampleCount), RESULT_OK);
    IPointCloud* cloud = const_cast<IPointCloud*>(pointCloud);
    const auto body = [&](int t, int n) {
        const int end = SliceBegin(sampleCount, t + 1, n);
        for (int i = SliceBegin(sampleCount, t, n); i < end; ++i) {
            const int code = EstimatePointNormal(cloud, pointCloudInfo, sampleIds[i],
                                                 kSampleNormalNeighbors, result[i]);
            // A sample whose neighbours span no plane keeps a zero normal and adds no
            // pull; only a failed neighbour read fails the step.
            if (code != RESULT_OK && code != RESULT_FAIL) failures[t] = code;
        }
    };
    if (sampleCount > 0) {
        status = ParallelFor(
            static_cast<int>(failures.size()), body,
            {"ComputeSamplePointNormal", "ComputeSamplePointNormal: ThreadPool InsertTask Failed"});
        if (status != RESULT_OK) return status;
    }
    for (int code : failures) {
        if (code != RESULT_OK) {
            return LogFailure(code, "ComputeSamplePointNormal: neighbor search failed ", code);
        }
    }
    normals->swap(result);
    return RESULT_OK;
}

int FastCalculateDistanceTol(const IPointCloud* pointCloudRef,
                             PointCloudInfo& refInfo,
                             int neighborCount,
                             double* distanceTol) {
    if (pointCloudRef == nullptr || distanceTol == nullptr || refInfo.GetAnn() == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FastCalculateDistanceTol: pointCloudRef == NULL || distanceTol == "
                          "NULL || no index");
    }
    PointCloudPointList list(pointCloudRef);
    Vector3 boxMin, boxMax;
    int status;
    {
        ProgressSuspendScope suspend;
        status = CalculatePointListBoundingBox(&list, boxMin, boxMax);
    }
    if (status != RESULT_OK) return status;
    const double resolution = (boxMax - boxMin).Length() / 200.0;
    if (resolution < REAL_TOL) {
        return LogFailure(RESULT_FAIL,
                          "FastCalculateDistanceTol: pointCloudRef is a singular point");
    }
    std::vector<int> ids;
    {
        ProgressSuspendScope suspend;
        status = SamplePointCloud::GridSample(pointCloudRef, resolution, ids);
    }
    if (status != RESULT_OK) {
        return LogFailure(status,
                          "RegistratePointCloud::FastCalculateDistanceTol: "
                          "SamplePointCloud::GridSample Failed: ",
                          status);
    }
    Ann* ann = refInfo.GetAnn();
    const int k = std::max(1, std::min(neighborCount, ann->GetPointCount()));
    std::vector<double> sampleXyz;
    sampleXyz.reserve(3 * ids.size());
    for (int id : ids) {
        const Vector3 p = list.GetPointCoord(id);
        sampleXyz.insert(sampleXyz.end(), {p.x, p.y, p.z});
    }
    const int sampleCount = static_cast<int>(sampleXyz.size() / 3);
    std::vector<double> distances(static_cast<size_t>(sampleCount) * k);
    status = ann->FindNearestNeighbors(sampleXyz.data(), sampleCount, k, nullptr, distances.data());
    if (status != RESULT_OK) return status;
    double sum = 0.0;
    for (double d : distances) sum += std::sqrt(d);
    *distanceTol = sum / (static_cast<double>(sampleCount) * k);
    LogAt(LOG_TRACE, "CalculateDistanceTol: distanceTol=", *distanceTol);
    return RESULT_OK;
}

double CalculateMarkSpacing(const std::vector<Vector3>& marks) {
    const size_t n = marks.size();
    if (n == 0) return 0.0;
    std::vector<double> nearest(n);
    for (size_t i = 0; i < n; ++i) {
        double best = REAL_LARGE;
        for (size_t j = 0; j < n; ++j) {
            if (j != i) best = std::min(best, marks[i].DistanceSquared(marks[j]));
        }
        nearest[i] = std::sqrt(best);
    }
    const size_t middle = (n - 1) / 2;
    std::nth_element(nearest.begin(), nearest.begin() + middle, nearest.end());
    return nearest[middle];
}

}  // namespace ZOL
