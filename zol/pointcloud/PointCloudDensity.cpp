// Point spacing: per-point mean distances to the nearest other points, computed on the
// workers in slices, and their lower median. Two entries: any point list with an index
// of its own, and a cloud through the caller's neighbour context.
#include <zol/pointcloud/PointCloudDensity.h>

#include <algorithm>
#include <cmath>

#include <zol/pointcloud/PointCloudAccessInternal.h>
#include <zol/pointcloud/PointSelectionInternal.h>
#include <zol/runtime/Ann.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ParallelInternal.h>
#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

namespace {

const ParallelLines kMeanLines = {"CalculatePointListDensity",
                                  "CalculatePointListDensity: ThreadPool InsertTask failed"};

/// Mean of the square roots of one row of squared distances, divided by k - 1: the
/// first entry is the point itself at distance 0. A lone point (k = 1) gives 0 / 0.
double RowMean(const double* squaredDistances, int count, int k) {
    double sum = 0.0;
    for (int t = 0; t < count; ++t) sum += std::sqrt(squaredDistances[t]);
    return sum / (k - 1);
}

/// The element of rank ceil(m / 2) - 1 (the lower median); reorders \p values.
double LowerMedian(std::vector<double>& values) {
    const size_t rank = (values.size() + 1) / 2 - 1;
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(rank),
                     values.end());
    return values[rank];
}

}  // namespace

int CalculatePointListDensity(const IPointList* pointList, int neighborCount, double& density) {
    SetProgress(0.0);
    if (pointList == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "CalculatePointListDensity: invalid input");
    }
    const int n = pointList->GetPointCount();
    if (n < 1 || neighborCount < 2) {
        return LogFailure(RESULT_FAIL, "CalculatePointListDensity invalid pointCount: ", n,
                          " neighborCount: ", neighborCount);
    }
    Ann ann;
    int status = ann.Init(pointList, nullptr);
    if (status != RESULT_OK) {
        return LogFailure(status, "CalculatePointListDensity: Ann initialize failed");
    }
    const int k = std::min(n, neighborCount);
    std::vector<double> distances(static_cast<size_t>(n) * k);
    status = ann.FindNearestNeighbors(pointList, k, nullptr, distances.data());
    if (status != RESULT_OK) {
        return LogFailure(status, "CalculatePointListDensity Ann find nearest neighbor failed");
    }
    std::vector<double> means(static_cast<size_t>(n));
    status = ParallelFor(
        ParallelTaskCount(n),
        [&](int t, int parts) {
            const int end = SliceBegin(n, t + 1, parts);
            for (int i = SliceBegin(n, t, parts); i < end; ++i) {
                means[i] = RowMean(&distances[static_cast<size_t>(i) * k], k, k);
            }
        },
        kMeanLines);
    if (status != RESULT_OK) return status;
    density = LowerMedian(means);
    return RESULT_OK;
}

int _CalculatePointListDensity(const IPointCloud* pointCloud,
                               PointCloudInfo& info,
                               int neighborCount,
                               double& density,
                               const std::vector<int>* selectIndex) {
    SetProgress(0.0);
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "CalculatePointListDensity: invalid input");
    }
    const int n = pointCloud->GetPointCount();
    if (n < 1 || neighborCount < 2) {
        return LogFailure(RESULT_FAIL, "CalculatePointListDensity invalid pointCount: ", n,
                          " neighborCount: ", neighborCount);
    }
    if (selectIndex != nullptr && selectIndex->empty()) {
        return LogFailure(RESULT_INVALID_INPUT, "CalculatePointListDensity: selectIndex is empty");
    }
    std::vector<bool> marks;
    int badIndex = 0;
    if (!MarkPointSelection(selectIndex, n, true, marks, badIndex)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "CalculatePointListDensity: invalid selectIndex: ", badIndex);
    }
    if (HoldsIndexOfOtherCloud(info, n)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "CalculatePointListDensity: info holds the index of another cloud");
    }
    int status = info.InitAnn(pointCloud, neighborCount);
    if (status != RESULT_OK) {
        return LogFailure(status, "CalculatePointListDensity: Ann initialize failed");
    }
    const int k = std::min(n, neighborCount);
    std::vector<int> selected;
    std::vector<int> missing;
    for (int i = 0; i < n; ++i) {
        if (!marks[i]) continue;
        selected.push_back(i);
        if (info.GetCachedNeighborCount(i) < k) missing.push_back(i);
    }
    if (!missing.empty()) {
        // Fill the lists the cache lacks in one parallel search instead of one locked
        // search per point.
        status = info.FindNearestNeighbors(k, pointCloud, &missing);
        if (status != RESULT_OK) {
            return LogFailure(status, "CalculatePointListDensity Ann find nearest neighbor failed");
        }
    }
    const int m = static_cast<int>(selected.size());
    std::vector<double> means(selected.size());
    std::vector<int> rowStatus(static_cast<size_t>(ParallelTaskCount(m)), RESULT_OK);
    status = ParallelFor(
        static_cast<int>(rowStatus.size()),
        [&](int t, int parts) {
            std::vector<double> row;
            const int end = SliceBegin(m, t + 1, parts);
            for (int s = SliceBegin(m, t, parts); s < end; ++s) {
                const int p = selected[s];
                if (info.GetCachedNeighborCount(p) >= k) {
                    means[s] = RowMean(info.GetCachedNeighborDistances(p), k, k);
                    continue;
                }
                const int got = info.GetNeighbor(p, k, nullptr, &row);
                if (got != RESULT_OK) {
                    rowStatus[t] = got;
                    return;
                }
                means[s] = RowMean(row.data(), static_cast<int>(row.size()), k);
            }
        },
        kMeanLines);
    if (status != RESULT_OK) return status;
    for (int got : rowStatus) {
        if (got != RESULT_OK) {
            return LogFailure(got, "CalculatePointListDensity Ann find nearest neighbor failed");
        }
    }
    density = LowerMedian(means);
    return RESULT_OK;
}

}  // namespace ZOL
