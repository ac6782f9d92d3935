// Normal estimation of ConsolidatePointCloud: plane fits over k neighbours on the
// workers, orientation towards a known scanner side or along the neighbour graph,
// re-orientation and reversal of existing normals, and the re-estimation that keeps
// each point's old side (UpdatePointCloudNormal).
#include <zol/pointcloud/ConsolidatePointCloud.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include <zol/core/IPointList.h>
#include <zol/core/PointCloud.h>
#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/pointcloud/NormalEstimationInternal.h>
#include <zol/pointcloud/NormalOrientationInternal.h>
#include <zol/pointcloud/PointCloudAccessInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NeighborBatchSearchInternal.h>
#include <zol/runtime/ParallelInternal.h>
#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

namespace {

bool IsValidDirection(const Vector3* direction) {
    if (direction == nullptr) return true;
    const double length = direction->Length();
    return std::isfinite(length) && length > REAL_TOL;
}

/// The neighbour lists of all points, read in place from the cache of a PointCloudInfo:
/// k ids per point at a distance of \p stride ids from one point to the next.
struct NeighborRows {
    const int* ids = nullptr;
    int stride = 0;
};

/// Plane fits of each batch of points on the worker that has just found their
/// neighbours. A fit depends only on its own row, so the split does not matter.
class FitNormalsVisitor : public NeighborBatchVisitor {
public:
    FitNormalsVisitor(const PointCloudInfo& info, const double* xyz, int k, Vector3* normals)
        : mInfo(info), mXyz(xyz), mK(k), mNormals(normals) {}

    void Visit(int, const int* points, int count) override {
        GeneralMatrixEigenSolver solver;  // allocates once per batch, not per point
        for (int q = 0; q < count; ++q) {
            const int p = points[q];
            FitPlaneNormal(mXyz, mInfo.GetCachedNeighborIds(p), mK, mNormals[p], nullptr, &solver);
        }
    }

private:
    const PointCloudInfo& mInfo;
    const double* mXyz;
    int mK;
    Vector3* mNormals;
};

/// Builds the index and finds the \p k nearest of every point; with \p normals, also
/// fits every point's plane normal as its row comes in (zero where the neighbours span
/// no plane). Progress 0.1 and 0.6.
int FindAllNeighbors(IPointCloud* cloud,
                     PointCloudInfo& info,
                     int k,
                     const std::vector<double>& xyz,
                     std::vector<Vector3>* normals,
                     NeighborRows& rows) {
    int status = info.InitAnn(cloud, k);
    if (status != RESULT_OK) return status;
    SetProgress(0.1);
    const int n = cloud->GetPointCount();
    std::unique_ptr<FitNormalsVisitor> fit;
    if (normals) {
        normals->assign(static_cast<size_t>(n), Vector3());
        fit.reset(new FitNormalsVisitor(info, xyz.data(), k, normals->data()));
    }
    status = NeighborBatchSearch::Run(info, k, cloud, nullptr, fit.get());
    if (status != RESULT_OK) return status;
    // Every row holds k entries: the index covers this cloud, which has at least k points.
    rows.ids = info.GetCachedNeighborIds(0);
    rows.stride = info.GetNeighborCount();
    if (rows.ids == nullptr || info.GetCachedNeighborCount(n - 1) < k) return RESULT_FAIL;
    SetProgress(0.6);
    return RESULT_OK;
}

/// A point whose neighbours span no plane (duplicates, a line) takes the oriented
/// normal of its nearest neighbour that has one, in index order.
void FillMissingNormals(const NeighborRows& rows, int k, std::vector<Vector3>& normals) {
    const int n = static_cast<int>(normals.size());
    for (int i = 0; i < n; ++i) {
        if (normals[i].LengthSquared() > 0.0) continue;
        for (int t = 1; t < k; ++t) {
            const int j = rows.ids[static_cast<size_t>(i) * rows.stride + t];
            if (j >= 0 && normals[j].LengthSquared() > 0.0) {
                normals[i] = normals[j];
                break;
            }
        }
    }
}

/// The side references of a cloud: the scanner side when a camera direction is given or
/// the cloud is a range image; none otherwise (the graph and centroids then decide).
std::vector<Vector3> ScannerReferences(IPointCloud* cloud,
                                       const std::vector<double>& xyz,
                                       const Vector3* cameraDirection) {
    const int n = cloud->GetPointCount();
    std::vector<Vector3> references;
    if (cameraDirection != nullptr) {
        Vector3 towardsScanner = -*cameraDirection;
        towardsScanner.Normalise();
        references.assign(static_cast<size_t>(n), towardsScanner);
        return references;
    }
    const PointCloud* grid = dynamic_cast<const PointCloud*>(cloud);
    if (grid == nullptr || !ComputeGridReferences(*grid, xyz.data(), references))
        references.clear();
    return references;
}

void WriteNormals(IPointCloud* cloud, const std::vector<Vector3>& normals) {
    if (!cloud->HasNormal()) cloud->SetHasNormal(true);
    const int n = static_cast<int>(normals.size());
    for (int i = 0; i < n; ++i) cloud->SetPointNormal(i, normals[i]);
}

}  // namespace

int ConsolidatePointCloud::CalculatePointCloudNormal(IPointCloud* pointCloud,
                                                     int neighborCount,
                                                     const Vector3* cameraDirection) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudConsolidationNormalCalculation>(pointCloud, neighborCount,
                                                           cameraDirection);  // dump hook
    PointCloudInfo info;
    return _CalculatePointCloudNormal(pointCloud, info, neighborCount, cameraDirection);
}

int ConsolidatePointCloud::_CalculatePointCloudNormal(IPointCloud* pointCloud,
                                                      PointCloudInfo& info,
                                                      int neighborCount,
                                                      const Vector3* cameraDirection) {
    SetProgress(0.0);
    if (pointCloud == nullptr || neighborCount < 4) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::CalculatePointCloudNormal: pointCloud == NULL || "
                          "neighborCount < 4");
    }
    if (!IsValidDirection(cameraDirection)) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "ConsolidatePointCloud::CalculatePointCloudNormal: invalid cameraDirection");
    }
    const int n = pointCloud->GetPointCount();
    if (n < 3) {
        return LogFailure(
            RESULT_FAIL,
            "ConsolidatePointCloud::CalculatePointCloudNormal invalid pointCount: ", n);
    }
    if (HoldsIndexOfOtherCloud(info, n)) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "ConsolidatePointCloud::CalculatePointCloudNormal: info holds the index of "
            "another cloud");
    }
    const int k = std::min(n, neighborCount);
    const std::vector<double> xyz = CopyCloudCoords(pointCloud);
    std::vector<Vector3> normals;
    NeighborRows rows;
    const int status = FindAllNeighbors(pointCloud, info, k, xyz, &normals, rows);
    if (status != RESULT_OK) {
        return LogFailure(
            status, "ConsolidatePointCloud::CalculatePointCloudNormal: neighbor search failed ",
            status);
    }
    const std::vector<Vector3> references = ScannerReferences(pointCloud, xyz, cameraDirection);
    OrientNormals(xyz.data(), n, rows.ids, k, rows.stride,
                  references.empty() ? nullptr : references.data(), normals);
    FillMissingNormals(rows, k, normals);
    SetProgress(0.9);
    WriteNormals(pointCloud, normals);
    SetProgress(1.0);
    return RESULT_OK;
}

int ConsolidatePointCloud::OrientPointCloudNormal(IPointCloud* pointCloud,
                                                  int neighborCount,
                                                  const Vector3* cameraDirection) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudConsolidationNormalOrient>(pointCloud, neighborCount,
                                                      cameraDirection);  // dump hook
    if (pointCloud == nullptr || neighborCount < 4) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::OrientPointCloudNormal: pointCloud == NULL || "
                          "neighborCount < 4");
    }
    if (!pointCloud->HasNormal()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::OrientPointCloudNormal: pointCloud should have "
                          "normal first");
    }
    if (!IsValidDirection(cameraDirection)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::OrientPointCloudNormal: invalid cameraDirection");
    }
    const int n = pointCloud->GetPointCount();
    if (n < 1) {
        return LogFailure(RESULT_FAIL,
                          "ConsolidatePointCloud::OrientPointCloudNormal invalid pointCount: ", n);
    }
    const int k = std::min(n, neighborCount);
    PointCloudInfo info;
    const std::vector<double> xyz = CopyCloudCoords(pointCloud);
    NeighborRows rows;
    const int status = FindAllNeighbors(pointCloud, info, k, xyz, nullptr, rows);
    if (status != RESULT_OK) {
        return LogFailure(status,
                          "ConsolidatePointCloud::OrientPointCloudNormal: neighbor search failed ",
                          status);
    }
    // Orient unit copies, so that long and short normals weigh alike, then flip the
    // originals that changed side.
    std::vector<Vector3> unit(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
        unit[i] = pointCloud->GetPointNormal(i);
        unit[i].Normalise();
    }
    const std::vector<Vector3> before = unit;
    const std::vector<Vector3> references = ScannerReferences(pointCloud, xyz, cameraDirection);
    OrientNormals(xyz.data(), n, rows.ids, k, rows.stride,
                  references.empty() ? nullptr : references.data(), unit);
    SetProgress(0.9);
    for (int i = 0; i < n; ++i) {
        if (unit[i] * before[i] < 0.0)
            pointCloud->SetPointNormal(i, -pointCloud->GetPointNormal(i));
    }
    SetProgress(1.0);
    return RESULT_OK;
}

int ConsolidatePointCloud::ReversePointCloudNormal(IPointCloud* pointCloud) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudConsolidationNormalReversing>(pointCloud);  // dump hook
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::ReversePointCloudNormal: pointCloud == NULL");
    }
    if (!pointCloud->HasNormal()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::ReversePointCloudNormal: pointCloud should have "
                          "normal first");
    }
    const int n = pointCloud->GetPointCount();
    for (int i = 0; i < n; ++i) pointCloud->SetPointNormal(i, -pointCloud->GetPointNormal(i));
    SetProgress(1.0);
    return RESULT_OK;
}

int UpdatePointCloudNormal(IPointCloud* pointCloud, int neighborCount) {
    SetProgress(0.0);
    if (pointCloud == nullptr || neighborCount < 4) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "UpdatePointCloudNormal: pointCloud == NULL || neighborCount < 4");
    }
    if (!pointCloud->HasNormal()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "UpdatePointCloudNormal: pointCloud should has normal first");
    }
    const int n = pointCloud->GetPointCount();
    if (n < 3) return LogFailure(RESULT_FAIL, "UpdatePointCloudNormal invalid pointCount: ", n);
    const int k = std::min(n, neighborCount);
    PointCloudInfo info;
    const std::vector<double> xyz = CopyCloudCoords(pointCloud);
    std::vector<Vector3> normals;
    NeighborRows rows;
    const int status = FindAllNeighbors(pointCloud, info, k, xyz, &normals, rows);
    if (status != RESULT_OK) {
        return LogFailure(status, "UpdatePointCloudNormal: neighbor search failed ", status);
    }
    std::vector<Vector3> oldNormals(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) oldNormals[i] = pointCloud->GetPointNormal(i);
    OrientNormals(xyz.data(), n, rows.ids, k, rows.stride, oldNormals.data(), normals);
    // Where no plane is defined now, the old normal stays (made unit).
    for (int i = 0; i < n; ++i) {
        if (normals[i].LengthSquared() > 0.0) continue;
        Vector3 old = oldNormals[i];
        if (old.Normalise() > REAL_TOL) normals[i] = old;
    }
    FillMissingNormals(rows, k, normals);
    SetProgress(0.9);
    WriteNormals(pointCloud, normals);
    SetProgress(1.0);
    return RESULT_OK;
}

}  // namespace ZOL
