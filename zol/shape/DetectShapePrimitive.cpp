// DetectShape: the API frame of primitive detection and selection and of the cylinder and
// cone fits, which this library declares for hosts but does not provide.
#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>
#include <zol/shape/DetectShape.h>

namespace ZOL {

int DetectShape::DetectPrimitive(const IPointCloud* pointCloud,
                                 double distanceTol,
                                 double angleTol,
                                 int minPointCount,
                                 std::vector<int>* primitiveIds) {
    SetProgress(0.0);
    DumpCall<DumpDetectShapeDetectPrimitive>(pointCloud, distanceTol, angleTol,
                                             minPointCount);  // dump hook
    if (pointCloud == nullptr || primitiveIds == nullptr || !pointCloud->HasNormal()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "DetectShape::DetectPrimitive: pointCloud == NULL || primitiveIds == "
                          "NULL || !pointCloud->HasNormal()");
    }
    // Written as "not inside" so that NaN is refused too.
    if (!(distanceTol > 0.0) || !(angleTol > 0.0 && angleTol <= 90.0 * ONE_RADIAN)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "DetectShape::DetectPrimitive: distanceTol <= 0 || angleTol out of "
                          "(0, 90]");
    }
    if (minPointCount < 3) {
        return LogFailure(RESULT_INVALID_INPUT, "DetectShape::DetectPrimitive: minPointCount < 3");
    }
    return NotAvailable(Unavailable::DetectShape_DetectPrimitive);
}

int DetectShape::SelectPrimitive(const ITriMesh* triMesh,
                                 int selectFaceId,
                                 double distanceTol,
                                 std::vector<int>* faceIds) {
    SetProgress(0.0);
    DumpCall<DumpDetectShapeSelectPrimitive>(triMesh, selectFaceId, distanceTol);  // dump hook
    if (triMesh == nullptr || faceIds == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "DetectShape::SelectPrimitive: triMesh == NULL || faceIds == NULL");
    }
    if (selectFaceId < 0 || selectFaceId >= triMesh->GetTriangleCount()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "DetectShape::SelectPrimitive: invalid selectFaceId");
    }
    if (!(distanceTol > 0.0)) {
        return LogFailure(RESULT_INVALID_INPUT, "DetectShape::SelectPrimitive: distanceTol <= 0");
    }
    return NotAvailable(Unavailable::DetectShape_SelectPrimitive);
}

int DetectShape::FitCylinder(const std::vector<Vector3>& points,
                             const std::vector<Vector3>& normals,
                             Vector3& axisPoint,
                             Vector3& axisDirection,
                             double& radius) {
    (void)axisPoint;
    (void)axisDirection;
    (void)radius;
    SetProgress(0.0);
    // dump hook: cylinder fitting has no record.
    if (points.size() != normals.size() || points.size() < 3) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "DetectShape::FitCylinder: points.size() != normals.size() || "
                          "points.size() < 3");
    }
    return NotAvailable(Unavailable::DetectShape_FitCylinder);
}

int DetectShape::FitCone(const std::vector<Vector3>& points,
                         const std::vector<Vector3>& normals,
                         Vector3& apex,
                         Vector3& axisDirection,
                         double& halfAngle) {
    (void)apex;
    (void)axisDirection;
    (void)halfAngle;
    SetProgress(0.0);
    // dump hook: cone fitting has no record.
    if (points.size() != normals.size() || points.size() < 4) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "DetectShape::FitCone: points.size() != normals.size() || "
                          "points.size() < 4");
    }
    return NotAvailable(Unavailable::DetectShape_FitCone);
}

}  // namespace ZOL
