// Free point-cloud utilities: viewing direction and grazing-angle points of a scan,
// deletion by two-ended compaction, copy, rigid transform and bounding box.
#include <zol/pointcloud/PointCloudUtility.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <zol/pointcloud/SamplePointCloud.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

// Cell size for thinning normal directions (points on and near the unit sphere).
const double kNormalGridInterval = 0.05;
// A scan needs at least this many points before its boundary is looked for.
const int kMinBoundaryPointCount = 3;

bool IsFinite(const Vector3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

}  // namespace

int EstimateCameraDirection(const IPointCloud* depthData,
                            const std::vector<int>* selectIndex,
                            Vector3& direction) {
    SetProgress(0.0);
    if (!depthData || !depthData->HasNormal()) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "EstimateCameraDirection: depthData == NULL || depthData->HasNormal() == false");
    }
    const int pointCount = depthData->GetPointCount();
    if (selectIndex) {
        for (int id : *selectIndex) {
            if (id < 0 || id >= pointCount) {
                return LogFailure(RESULT_INVALID_INPUT,
                                  "EstimateCameraDirection: selectIndex out of range: ", id);
            }
        }
    }

    std::vector<double> normals;
    const PointCloudPointList pointList(depthData);
    CopyPointListNormals(&pointList, &normals);
    const int useCount = selectIndex ? static_cast<int>(selectIndex->size()) : pointCount;
    PointCloud directions;
    directions.ReservePoint(useCount);
    for (int t = 0; t < useCount; ++t) {
        const size_t id = static_cast<size_t>(selectIndex ? (*selectIndex)[t] : t);
        directions.InsertPoint(Vector3(normals[3 * id], normals[3 * id + 1], normals[3 * id + 2]));
    }
    std::vector<int> sampled;
    int status;
    {
        ProgressSuspendScope suspend;
        status = SamplePointCloud::GridSample(&directions, kNormalGridInterval, sampled);
    }
    if (status != RESULT_OK) return LogFailure(status, "EstimateCameraDirection: sample failed");

    // The sampled positions index the temporary cloud; they are read as point indices of
    // the input cloud on purpose, also when a selection reordered the points.
    Vector3 sum;
    for (int position : sampled) {
        if (position >= pointCount) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "EstimateCameraDirection: sampled position out of range: ", position);
        }
        const size_t id = static_cast<size_t>(position);
        sum += Vector3(normals[3 * id], normals[3 * id + 1], normals[3 * id + 2]);
    }
    direction = -sum;
    direction.Normalise();
    return RESULT_OK;
}

int DetectBoundaryPointByZAngle(IPointCloud* pointCloud,
                                double maxZAngle,
                                const Vector3* cameraDirection,
                                std::vector<int>& boundaryIndex) {
    SetProgress(0.0);
    if (!pointCloud || !pointCloud->HasNormal() ||
        !(maxZAngle >= 0.0 && maxZAngle <= 90.0 * ONE_RADIAN)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RemoveBoundaryPoint invalid input: pointCloud == NULL || "
                          "(!pointCloud->HasNormal()) || maxZAngle < 0 || maxZAngle > 90.0");
    }
    const int pointCount = pointCloud->GetPointCount();
    if (pointCount < kMinBoundaryPointCount) return RESULT_OK;
    Vector3 direction;
    if (cameraDirection) {
        direction = *cameraDirection;
    } else {
        ProgressSuspendScope suspend;
        const int status = EstimateCameraDirection(pointCloud, nullptr, direction);
        if (status != RESULT_OK) return status;
    }
    std::vector<double> normals;
    const PointCloudPointList pointList(pointCloud);
    CopyPointListNormals(&pointList, &normals);
    boundaryIndex.clear();
    const double limit = std::cos(maxZAngle);
    for (int i = 0; i < pointCount; ++i) {
        const double* n = normals.data() + 3 * static_cast<size_t>(i);
        const double cosine = n[0] * direction.x + n[1] * direction.y + n[2] * direction.z;
        if (std::fabs(cosine) < limit) boundaryIndex.push_back(i);
    }
    return RESULT_OK;
}

int DeletePointCloudElements(IPointCloud* pointCloud, const std::vector<int>& deleteIndex) {
    SetProgress(0.0);
    if (!pointCloud) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "DeletePointCloudElements: input point cloud is null");
    }
    if (deleteIndex.empty()) return RESULT_OK;
    const int pointCount = pointCloud->GetPointCount();
    for (int id : deleteIndex) {
        if (id < 0 || id >= pointCount) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "DeletePointCloudElements: deleteIndex out of range: ", id);
        }
    }
    std::vector<char> keep(pointCount, 1);
    int deleteCount = 0;
    for (int id : deleteIndex) {
        if (keep[id]) {
            keep[id] = 0;
            ++deleteCount;
        }
    }
    // Each point to delete below the last survivor takes that survivor's place.
    int last = pointCount - 1;
    while (last >= 0 && !keep[last]) --last;
    for (int i = 0; i < last; ++i) {
        if (keep[i]) continue;
        pointCloud->SwapPoint(i, last);
        keep[i] = 1;
        keep[last] = 0;
        while (last >= 0 && !keep[last]) --last;
    }
    pointCloud->PopbackPoints(deleteCount);
    return RESULT_OK;
}

int CopyPointCloud(const IPointCloud* pointCloud, IPointCloud* copyCloud) {
    SetProgress(0.0);
    if (!pointCloud || !copyCloud) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "CopyPointCloud: pointCloud == NULL || copyCloud == NULL");
    }
    if (pointCloud == copyCloud) return RESULT_OK;
    IPointCloud* source = const_cast<IPointCloud*>(pointCloud);
    const int pointCount = source->GetPointCount();
    const bool hasNormal = source->HasNormal();
    copyCloud->Clear();
    copyCloud->SetHasNormal(hasNormal);
    if (auto* cloud = dynamic_cast<PointCloud*>(copyCloud)) cloud->ReservePoint(pointCount);
    for (int i = 0; i < pointCount; ++i) {
        if (hasNormal) {
            copyCloud->InsertPoint(source->GetPointCoord(i), source->GetPointNormal(i));
        } else {
            copyCloud->InsertPoint(source->GetPointCoord(i));
        }
    }
    return RESULT_OK;
}

PointCloud* CopyPointCloud(const PointCloud* pointCloud) {
    SetProgress(0.0);
    if (!pointCloud) {
        LogLine("CopyPointCloud: pointCloud == NULL");
        return nullptr;
    }
    PointCloud* copy = new PointCloud;
    ProgressSuspendScope suspend;
    CopyPointCloud(static_cast<const IPointCloud*>(pointCloud), static_cast<IPointCloud*>(copy));
    return copy;
}

void TransformPointCloud(IPointCloud* pointCloud, const Matrix4x4& transform) {
    SetProgress(0.0);
    if (!pointCloud) {
        LogLine("TransformPointCloud: pointCloud is NULL");
        return;
    }
    const int pointCount = pointCloud->GetPointCount();
    const bool hasNormal = pointCloud->HasNormal();
    for (int i = 0; i < pointCount; ++i) {
        pointCloud->SetPointCoord(i, transform.TransformPoint(pointCloud->GetPointCoord(i)));
        if (hasNormal) {
            pointCloud->SetPointNormal(i, transform.RotateVector(pointCloud->GetPointNormal(i)));
        }
    }
}

int CalculatePointListBoundingBox(const IPointList* pointList, Vector3& bboxMin, Vector3& bboxMax) {
    SetProgress(0.0);
    if (!pointList) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "CalculatePointCloudBoundingBox: pointList is NULL");
    }
    const int pointCount = pointList->GetPointCount();
    if (pointCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "CalculatePointCloudBoundingBox: pointCount is 0");
    }
    IPointList* list = const_cast<IPointList*>(pointList);
    Vector3 lower = list->GetPointCoord(0);
    Vector3 upper = lower;
    for (int i = 0; i < pointCount; ++i) {
        const Vector3 p = list->GetPointCoord(i);
        if (!IsFinite(p)) {
            return LogFailure(RESULT_INVALID_INPUT, "CalculatePointCloudBoundingBox: point ", i,
                              " has a non-finite coordinate");
        }
        lower = Vector3(std::min(lower.x, p.x), std::min(lower.y, p.y), std::min(lower.z, p.z));
        upper = Vector3(std::max(upper.x, p.x), std::max(upper.y, p.y), std::max(upper.z, p.z));
    }
    bboxMin = lower;
    bboxMax = upper;
    return RESULT_OK;
}

}  // namespace ZOL
