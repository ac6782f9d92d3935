// Normal estimation of ConsolidatePointCloud: plane fits over k neighbours on the
// workers, orientation towards a known scanner side or along the neighbour graph,
// re-orientation and reversal of existing normals, and the re-estimation that keeps
// each point's old side (UpdatePointCloudNormal).
#include <zol/pointcloud/ConsolidatePointCloud.h>

#include <algorithm>
#include <cmath>

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
#include <zol/runtime/ParallelInternal.h>
#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

namespace {

const ParallelLines kFitLines = {"FitPointNormals",
                                 "FitPointNormals: ThreadPool InsertTask failed"};

bool IsValidDirection(const Vector3* direction) {
    if (direction == nullptr) return true;
    const double length = direction->Length();
    return std::isfinite(length) && length > REAL_TOL;
}

/// Builds the index and the neighbour lists of every point, then copies them into
/// \p ids, k per row (-1 where a list is shorter, which only an index built over
/// another cloud can cause). Progress 0.1 and 0.3.
int FindAllNeighbors(IPointCloud* cloud, PointCloudInfo& info, int k, std::vector<int>& ids) {
    int status = info.InitAnn(cloud, k);
    if (status != RESULT_OK) return status;
    SetProgress(0.1);
    status = info.FindNearestNeighbors(k, cloud, nullptr);
    if (status != RESULT_OK) return status;
    SetProgress(0.3);
    const int n = cloud->GetPointCount();
    ids.assign(static_cast<size_t>(n) * k, -1);
    std::vector<int> scratch;
    for (int i = 0; i < n; ++i) {
        const int* row = nullptr;
        int count = 0;
        status = ReadNeighborRow(info, i, k, scratch, row, count);
        if (status != RESULT_OK) return status;
        std::copy_n(row, std::min(count, k), &ids[static_cast<size_t>(i) * k]);
    }
    return RESULT_OK;
}

/// Plane-fit normals of every point on the workers; zero where the neighbours span no
/// plane. Each point's fit depends only on its own list, so the split does not matter.
int FitAllNormals(const std::vector<double>& xyz,
                  const std::vector<int>& ids,
                  int k,
                  std::vector<Vector3>& normals) {
    const int n = static_cast<int>(xyz.size() / 3);
    normals.assign(static_cast<size_t>(n), Vector3());
    return ParallelFor(
        ParallelTaskCount(n),
        [&](int t, int parts) {
            GeneralMatrixEigenSolver solver;
            const int end = SliceBegin(n, t + 1, parts);
            for (int i = SliceBegin(n, t, parts); i < end; ++i) {
                const int* row = &ids[static_cast<size_t>(i) * k];
                const int count = static_cast<int>(std::find(row, row + k, -1) - row);
                FitPlaneNormal(xyz.data(), row, count, normals[i], nullptr, &solver);
            }
        },
        kFitLines);
}

/// A point whose neighbours span no plane (duplicates, a line) takes the oriented
/// normal of its nearest neighbour that has one, in index order.
void FillMissingNormals(const std::vector<int>& ids, int k, std::vector<Vector3>& normals) {
    const int n = static_cast<int>(normals.size());
    for (int i = 0; i < n; ++i) {
        if (normals[i].LengthSquared() > 0.0) continue;
        for (int t = 1; t < k; ++t) {
            const int j = ids[static_cast<size_t>(i) * k + t];
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
    std::vector<int> ids;
    int status = FindAllNeighbors(pointCloud, info, k, ids);
    if (status != RESULT_OK) {
        return LogFailure(
            status, "ConsolidatePointCloud::CalculatePointCloudNormal: neighbor search failed ",
            status);
    }
    const std::vector<double> xyz = CopyCloudCoords(pointCloud);
    std::vector<Vector3> normals;
    status = FitAllNormals(xyz, ids, k, normals);
    if (status != RESULT_OK) return status;
    SetProgress(0.6);
    const std::vector<Vector3> references = ScannerReferences(pointCloud, xyz, cameraDirection);
    OrientNormals(xyz.data(), n, ids.data(), k, references.empty() ? nullptr : references.data(),
                  normals);
    FillMissingNormals(ids, k, normals);
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
    std::vector<int> ids;
    const int status = FindAllNeighbors(pointCloud, info, k, ids);
    if (status != RESULT_OK) {
        return LogFailure(status,
                          "ConsolidatePointCloud::OrientPointCloudNormal: neighbor search failed ",
                          status);
    }
    const std::vector<double> xyz = CopyCloudCoords(pointCloud);
    // Orient unit copies, so that long and short normals weigh alike, then flip the
    // originals that changed side.
    std::vector<Vector3> unit(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
        unit[i] = pointCloud->GetPointNormal(i);
        unit[i].Normalise();
    }
    const std::vector<Vector3> before = unit;
    SetProgress(0.6);
    const std::vector<Vector3> references = ScannerReferences(pointCloud, xyz, cameraDirection);
    OrientNormals(xyz.data(), n, ids.data(), k, references.empty() ? nullptr : references.data(),
                  unit);
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
    std::vector<int> ids;
    int status = FindAllNeighbors(pointCloud, info, k, ids);
    if (status != RESULT_OK) {
        return LogFailure(status, "UpdatePointCloudNormal: neighbor search failed ", status);
    }
    const std::vector<double> xyz = CopyCloudCoords(pointCloud);
    std::vector<Vector3> normals;
    status = FitAllNormals(xyz, ids, k, normals);
    if (status != RESULT_OK) return status;
    SetProgress(0.6);
    std::vector<Vector3> oldNormals(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) oldNormals[i] = pointCloud->GetPointNormal(i);
    OrientNormals(xyz.data(), n, ids.data(), k, oldNormals.data(), normals);
    // Where no plane is defined now, the old normal stays (made unit).
    for (int i = 0; i < n; ++i) {
        if (normals[i].LengthSquared() > 0.0) continue;
        Vector3 old = oldNormals[i];
        if (old.Normalise() > REAL_TOL) normals[i] = old;
    }
    FillMissingNormals(ids, k, normals);
    SetProgress(0.9);
    WriteNormals(pointCloud, normals);
    SetProgress(1.0);
    return RESULT_OK;
}

}  // namespace ZOL
