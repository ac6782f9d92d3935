// OptimiseCurve: the API frame of curve editing on meshes, which this library does not
// provide.
#include <zol/mesh/OptimiseCurve.h>

#include <zol/dump/DumpCurveRecords.h>
#include <zol/dump/DumpHookInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int OptimiseCurve::SmoothCurveOnMesh(const ITriMesh* triMesh,
                                     int iterationCount,
                                     bool isClosed,
                                     std::vector<PointOnFace>* curve) {
    SetProgress(0.0);
    DumpCall<DumpOptimiseCurveSmoothCurveOnMesh>(triMesh, iterationCount, isClosed,
                                                 curve);  // dump hook
    if (triMesh == nullptr || curve == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseCurve::SmoothCurveOnMesh: triMesh == NULL || curve == NULL");
    }
    if (iterationCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseCurve::SmoothCurveOnMesh: iterationCount < 1");
    }
    if (curve->size() < 2) {
        return LogFailure(RESULT_INVALID_INPUT, "OptimiseCurve::SmoothCurveOnMesh: curve size < 2");
    }
    return NotAvailable(Unavailable::OptimiseCurve_SmoothCurveOnMesh);
}

int OptimiseCurve::ApproximateOffset(const ITriMesh* triMesh,
                                     const std::vector<PointOnFace>& curve,
                                     bool isClosed,
                                     double offsetDistance,
                                     std::vector<PointOnFace>* offsetCurve) {
    SetProgress(0.0);
    DumpCall<DumpOptimiseCurveApproximateOffset>(triMesh, curve, isClosed,
                                                 offsetDistance);  // dump hook
    if (triMesh == nullptr || offsetCurve == nullptr) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "OptimiseCurve::ApproximateOffset: triMesh == NULL || offsetCurve == NULL");
    }
    if (curve.size() < 2) {
        return LogFailure(RESULT_INVALID_INPUT, "OptimiseCurve::ApproximateOffset: curve size < 2");
    }
    return NotAvailable(Unavailable::OptimiseCurve_ApproximateOffset);
}

int OptimiseCurve::MakeBijective(const ITriMesh* triMesh,
                                 bool isClosed,
                                 std::vector<PointOnFace>* curve) {
    SetProgress(0.0);
    DumpCall<DumpOptimiseCurveMakeBijective>(triMesh, isClosed, curve);  // dump hook
    if (triMesh == nullptr || curve == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseCurve::MakeBijective: triMesh == NULL || curve == NULL");
    }
    return NotAvailable(Unavailable::OptimiseCurve_MakeBijective);
}

int OptimiseCurve::ConnectFacePointsOnMesh(const ITriMesh* triMesh,
                                           const std::vector<PointOnFace>& facePoints,
                                           bool isClosed,
                                           std::vector<PointOnFace>* curve) {
    SetProgress(0.0);
    DumpCall<DumpOptimiseCurveConnectFacePointsOnMesh>(triMesh, facePoints,
                                                       isClosed);  // dump hook
    if (triMesh == nullptr || curve == nullptr) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "OptimiseCurve::ConnectFacePointsOnMesh: triMesh == NULL || curve == NULL");
    }
    if (facePoints.size() < 2) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseCurve::ConnectFacePointsOnMesh: facePoints size < 2");
    }
    return NotAvailable(Unavailable::OptimiseCurve_ConnectFacePointsOnMesh);
}

int OptimiseCurve::ConnectFacePointsByCuttingPlane(const ITriMesh* triMesh,
                                                   const PointOnFace& start,
                                                   const PointOnFace& end,
                                                   const Vector3& planeNormal,
                                                   std::vector<PointOnFace>* curve) {
    SetProgress(0.0);
    DumpCall<DumpOptimiseCurveConnectFacePointsByCuttingPlane>(triMesh, start, end,
                                                               planeNormal);  // dump hook
    if (triMesh == nullptr || curve == nullptr) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "OptimiseCurve::ConnectFacePointsByCuttingPlane: triMesh == NULL || curve == NULL");
    }
    if (!(planeNormal.Length() > REAL_TOL)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseCurve::ConnectFacePointsByCuttingPlane: planeNormal is zero");
    }
    return NotAvailable(Unavailable::OptimiseCurve_ConnectFacePointsByCuttingPlane);
}

int OptimiseCurve::SmoothCurveCrossMesh(const ITriMesh* triMesh,
                                        int iterationCount,
                                        bool isClosed,
                                        std::vector<Vector3>* curve) {
    SetProgress(0.0);
    DumpCall<DumpOptimiseCurveSmoothCurveCrossMesh>(triMesh, iterationCount, isClosed,
                                                    curve);  // dump hook
    if (triMesh == nullptr || curve == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseCurve::SmoothCurveCrossMesh: triMesh == NULL || curve == NULL");
    }
    if (iterationCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "OptimiseCurve::SmoothCurveCrossMesh: iterationCount < 1");
    }
    return NotAvailable(Unavailable::OptimiseCurve_SmoothCurveCrossMesh);
}

}  // namespace ZOL
