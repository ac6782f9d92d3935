// Geometry smoothing of ConsolidatePointCloud: projection onto the neighbourhood plane
// or bilateral displacement along its normal (PlaneProjectMT tasks on the workers), and
// feature-preserving smoothing along each point's own normal.
#include <zol/pointcloud/ConsolidatePointCloud.h>

#include <algorithm>
#include <cmath>

#include <zol/core/IPointList.h>
#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/pointcloud/NormalEstimationInternal.h>
#include <zol/pointcloud/PointCloudAccessInternal.h>
#include <zol/pointcloud/PointCloudDensity.h>
#include <zol/pointcloud/PointSelectionInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ParallelInternal.h>
#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

namespace {

/// How a worker's slice ended: the failing step's status, else 0 in both.
struct TaskStatus {
    int neighbors = RESULT_OK;
    int eigen = RESULT_OK;
};

/// One slice of a plane-projection pass: points threadIndex, threadIndex + threadCount,
/// ... move onto their neighbourhood plane (quality 0) or along its normal by bilateral
/// weights (quality 1). Reads the positions of the previous pass from a flat copy and
/// writes only its own entries of the new positions.
class PlaneProjectMT : public TaskBase {
public:
    PlaneProjectMT(IPointCloud* pointCloud,
                   const PointCloudInfo* info,
                   double density,
                   int neighborCount,
                   const std::vector<bool>* selected,
                   std::vector<Vector3>* newCoords,
                   int threadIndex,
                   int threadCount,
                   ConsolidatePointCloud::SmoothQuality quality,
                   const std::vector<double>* coords,
                   TaskStatus* status)
        : mpPointCloud(pointCloud),
          mpInfo(info),
          mDensity(density),
          mNeighborCount(neighborCount),
          mpSelected(selected),
          mpNewCoords(newCoords),
          mThreadIndex(threadIndex),
          mThreadCount(threadCount),
          mQuality(quality),
          mpCoords(coords),
          mpStatus(status) {}

    void Run() override {
        const std::vector<double>& xyz = *mpCoords;
        std::vector<Vector3>& out = *mpNewCoords;
        const int n = static_cast<int>(out.size());
        const int k = std::min(mNeighborCount, n);
        const double sigmaC = 2.0 * mDensity * mDensity;
        const double sigmaS = 1.5 * mDensity * mDensity;  // sin^2(60 deg) * 2 rho^2
        GeneralMatrixEigenSolver solver;
        GeneralMatrix3 scatter;
        std::vector<int> scratch;
        for (int i = mThreadIndex; i < n; i += mThreadCount) {
            const Vector3 p = FlatPoint(xyz, i);
            if (!(*mpSelected)[i]) {
                out[i] = p;
                continue;
            }
            const int* row = nullptr;
            int count = 0;
            int status = ReadNeighborRow(*mpInfo, i, k, scratch, row, count);
            if (status != RESULT_OK) {
                mpStatus->neighbors = status;
                return;
            }
            Vector3 centroid;
            ComputeScatter(xyz.data(), row, count, centroid, scatter);
            status = solver.Compute(scatter);
            if (status != RESULT_OK) {
                mpStatus->eigen = status;
                return;
            }
            const Vector3 normal = solver.GetEigenVector(0);
            if (mQuality == ConsolidatePointCloud::SMOOTH_QUALITY_PLANE) {
                out[i] = p + normal * ((centroid - p) * normal);
            } else if (mQuality != ConsolidatePointCloud::SMOOTH_QUALITY_BILATERAL) {
                out[i] = p;
            } else {
                double sum = 0.0, weights = 0.0;
                for (int t = 0; t < count; ++t) {
                    const Vector3 q = FlatPoint(xyz, row[t]);
                    const double h = (q - p) * normal;
                    const double w =
                        std::exp(-p.DistanceSquared(q) / sigmaC) * std::exp(-h * h / sigmaS);
                    sum += w * h;
                    weights += w;
                }
                // A zero spacing (all points on one spot) leaves the point in place.
                const double shift = sum / weights;
                out[i] = std::isfinite(shift) ? p + normal * shift : p;
            }
        }
    }

private:
    // The cloud the task smooths; its coordinates are read from the flat copy instead.
    [[maybe_unused]] IPointCloud* mpPointCloud;
    const PointCloudInfo* mpInfo;
    double mDensity;
    int mNeighborCount;
    const std::vector<bool>* mpSelected;
    std::vector<Vector3>* mpNewCoords;
    int mThreadIndex;
    int mThreadCount;
    ConsolidatePointCloud::SmoothQuality mQuality;
    const std::vector<double>* mpCoords;
    TaskStatus* mpStatus;
};

}  // namespace

int ConsolidatePointCloud::SmoothGeometry(IPointCloud* pointCloud,
                                          int neighborCount,
                                          int iterationCount,
                                          const std::vector<int>* selectIndex) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudConsolidationGeometrySmoothing>(pointCloud, neighborCount,
                                                           iterationCount,
                                                           selectIndex);  // dump hook
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::SmoothGeometry: input pointCloud is NULL");
    }
    if (neighborCount < 3 || iterationCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::SmoothGeometry: neighborCount < 3 || "
                          "iterationCount < 1");
    }
    const int n = pointCloud->GetPointCount();
    if (n < neighborCount || n < 3) return RESULT_OK;
    PointCloudInfo info;
    return _SmoothGeometry(pointCloud, info, neighborCount, iterationCount, selectIndex,
                           SMOOTH_QUALITY_PLANE);
}

int ConsolidatePointCloud::_SmoothGeometry(IPointCloud* pointCloud,
                                           PointCloudInfo& info,
                                           int neighborCount,
                                           int iterationCount,
                                           const std::vector<int>* selectIndex,
                                           SmoothQuality quality) {
    if (pointCloud != nullptr && HoldsIndexOfOtherCloud(info, pointCloud->GetPointCount())) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "_SmoothGeometry: info holds the index of another cloud");
    }
    int status = info.InitAnn(pointCloud, neighborCount);
    if (status != RESULT_OK) return LogFailure(status, "_SmoothGeometry: InitAnn Failed ", status);
    SetProgress(0.1);
    const int n = pointCloud->GetPointCount();
    // An empty selection is no error: no point moves, and the passes still run.
    std::vector<bool> selected;
    int badIndex = 0;
    if (!MarkPointSelection(selectIndex, n, true, selected, badIndex)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::SmoothGeometry: invalid selectIndex: ", badIndex);
    }
    status = info.FindNearestNeighbors(neighborCount, pointCloud, selectIndex);
    if (status != RESULT_OK) {
        return LogFailure(status, "_SmoothGeometry: ComputeNeighbors Failed ", status);
    }
    SetProgress(0.175);
    double density = 0.0;
    if (quality == SMOOTH_QUALITY_BILATERAL) {
        ProgressSuspendScope nested;
        status = _CalculatePointListDensity(pointCloud, info, neighborCount, density, nullptr);
        if (status != RESULT_OK) {
            return LogFailure(status, "_SmoothGeometry: _CalculatePointListDensity Failed ",
                              status);
        }
    }
    SetProgress(0.2);
    std::vector<Vector3> newCoords(static_cast<size_t>(n));
    const int taskCount = ParallelTaskCount(n);
    for (int it = 0; it < iterationCount; ++it) {
        SetProgress(0.2 + 0.8 * it / iterationCount);
        const std::vector<double> xyz = CopyCloudCoords(pointCloud);
        std::vector<TaskStatus> taskStatus(static_cast<size_t>(taskCount));
        status = RunTasks(
            taskCount,
            [&](int t, int parts) -> TaskBase* {
                return new PlaneProjectMT(pointCloud, &info, density, neighborCount, &selected,
                                          &newCoords, t, parts, quality, &xyz, &taskStatus[t]);
            },
            {"ConsolidatePointCloud::SmoothGeometry",
             "ConsolidatePointCloud::SmoothGeometry: ThreadPool InsertTask PlaneProjectMT Failed"});
        if (status != RESULT_OK) return status;
        for (const TaskStatus& task : taskStatus) {
            if (task.eigen != RESULT_OK) {
                return LogFailure(task.eigen,
                                  "ConsolidatePointCloud::SmoothGeometry::EigenSolver failed");
            }
            if (task.neighbors != RESULT_OK) {
                return LogFailure(task.neighbors, "_SmoothGeometry: GetNeighbor Failed ",
                                  task.neighbors);
            }
        }
        for (int i = 0; i < n; ++i) pointCloud->SetPointCoord(i, newCoords[i]);
    }
    SetProgress(1.0);
    return RESULT_OK;
}

int ConsolidatePointCloud::_SmoothGeometryByNormal(IPointCloud* pointCloud,
                                                   PointCloudInfo& info,
                                                   int neighborCount,
                                                   double sharpAngle,
                                                   int iterationCount,
                                                   const std::vector<int>* selectIndex) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudConsolidationSmoothByNormal>(pointCloud, neighborCount, sharpAngle,
                                                        iterationCount, selectIndex);  // dump hook
    if (pointCloud == nullptr) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "ConsolidatePointCloud::SmoothGeometryByNormal: input pointCloud is NULL");
    }
    const int n = pointCloud->GetPointCount();
    if (n < 1) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "ConsolidatePointCloud::SmoothGeometryByNormal: invalid point count: ", n);
    }
    if (!pointCloud->HasNormal()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::SmoothGeometryByNormal: input pointCloud should "
                          "have normal first");
    }
    if (iterationCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::SmoothGeometryByNormal: invalid iterationCount: ",
                          iterationCount);
    }
    if (neighborCount < 4) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::SmoothGeometryByNormal: invalid neighborCount: ",
                          neighborCount);
    }
    if (sharpAngle > 180 * ONE_RADIAN || sharpAngle < 0 || std::isnan(sharpAngle)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::SmoothGeometryByNormal: invalid sharpAngle, "
                          "sharpAngle > 180 * ONE_RADIAN || sharpAngle < 0 - ",
                          sharpAngle);
    }
    if (selectIndex != nullptr && selectIndex->empty()) {
        return LogFailure(RESULT_INVALID_INPUT, "SmoothGeometryByNormal: selectIndex is empty");
    }
    std::vector<bool> selected;
    int badIndex = 0;
    if (!MarkPointSelection(selectIndex, n, true, selected, badIndex)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SmoothGeometryByNormal: invalid selectIndex: ", badIndex);
    }
    const int k = std::min(n, neighborCount);
    if (HoldsIndexOfOtherCloud(info, n)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SmoothGeometryByNormal: info holds the index of another cloud");
    }
    int status = info.InitAnn(pointCloud, k);
    if (status != RESULT_OK)
        return LogFailure(status, "SmoothGeometryByNormal: InitAnn Failed ", status);
    SetProgress(0.1);
    status = info.FindNearestNeighbors(k, pointCloud, nullptr);
    if (status != RESULT_OK) {
        return LogFailure(status, "SmoothGeometryByNormal Ann find nearest neighbor failed ",
                          status);
    }
    SetProgress(0.3);
    const double c = std::cos(sharpAngle);
    const double s = 1.0 / (1.0 - c);
    const std::vector<double> normals = CopyCloudNormals(pointCloud);
    std::vector<Vector3> newCoords(static_cast<size_t>(n));
    const int taskCount = ParallelTaskCount(n);
    for (int it = 0; it < iterationCount; ++it) {
        SetProgress(0.3 + 0.7 * it / iterationCount);
        const std::vector<double> xyz = CopyCloudCoords(pointCloud);
        std::vector<int> taskStatus(static_cast<size_t>(taskCount), RESULT_OK);
        status = ParallelFor(
            taskCount,
            [&](int t, int parts) {
                std::vector<int> scratch;
                const int end = SliceBegin(n, t + 1, parts);
                for (int i = SliceBegin(n, t, parts); i < end; ++i) {
                    const Vector3 p = FlatPoint(xyz, i);
                    if (!selected[i]) {
                        newCoords[i] = p;
                        continue;
                    }
                    const int* row = nullptr;
                    int count = 0;
                    const int got = ReadNeighborRow(info, i, k, scratch, row, count);
                    if (got != RESULT_OK) {
                        taskStatus[t] = got;
                        return;
                    }
                    const Vector3 normal = FlatPoint(normals, i);
                    Vector3 sum = p;
                    double weights = 1.0;
                    for (int e = 1; e < count; ++e) {
                        const double w = (normal * FlatPoint(normals, row[e]) - c) * s;
                        if (w > 0.0) {
                            weights += w;
                            sum += FlatPoint(xyz, row[e]) * w;
                        }
                    }
                    const Vector3 mean = sum / weights;
                    newCoords[i] = p + normal * ((mean - p) * normal);
                }
            },
            {"SmoothGeometryByNormal", "SmoothGeometryByNormal: ThreadPool InsertTask failed"});
        if (status != RESULT_OK) return status;
        for (int failed : taskStatus) {
            if (failed != RESULT_OK) {
                return LogFailure(failed, "SmoothGeometryByNormal: info GetNeighbor Failed ",
                                  failed);
            }
        }
        for (int i = 0; i < n; ++i) pointCloud->SetPointCoord(i, newCoords[i]);
    }
    SetProgress(1.0);
    return RESULT_OK;
}

}  // namespace ZOL
