// MeasureMesh: the API frame of sections, principal curvature and thickness, which this
// library declares for hosts but does not provide; each records its call and answers
// RESULT_NOT_AVAILABLE.
#include <cmath>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/mesh/MeasureMesh.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

namespace {

bool UsableNormal(const Vector3& n) {
    return std::isfinite(n.x) && std::isfinite(n.y) && std::isfinite(n.z) &&
           n.LengthSquared() > 0.0;
}

bool OnMesh(const ITriMesh* triMesh, const std::vector<PointOnFace>& points) {
    for (const PointOnFace& p : points) {
        if (p.mTriangleId < 0 || p.mTriangleId >= triMesh->GetTriangleCount()) return false;
    }
    return true;
}

// The checks of a section through a plane; RESULT_OK when they pass.
int CheckPlaneSection(const char* name, const ITriMesh* triMesh, const Vector3& planeNormal) {
    if (triMesh == nullptr) return LogFailure(RESULT_INVALID_INPUT, name, ": triMesh == NULL");
    if (!UsableNormal(planeNormal)) {
        return LogFailure(RESULT_INVALID_INPUT, name, ": invalid planeNormal");
    }
    return RESULT_OK;
}

// The checks of a section through points on the mesh; RESULT_OK when they pass.
int CheckPointSection(const char* name,
                      const ITriMesh* triMesh,
                      const std::vector<PointOnFace>& sectionPoints) {
    if (triMesh == nullptr) return LogFailure(RESULT_INVALID_INPUT, name, ": triMesh == NULL");
    if (sectionPoints.size() < 2) {
        return LogFailure(RESULT_INVALID_INPUT, name, ": sectionPoints size < 2");
    }
    if (!OnMesh(triMesh, sectionPoints)) {
        return LogFailure(RESULT_INVALID_INPUT, name, ": triangle id out of range");
    }
    return RESULT_OK;
}

}  // namespace

int MeasureMesh::ComputeSectionExact(const ITriMesh* triMesh,
                                     const Vector3& planePoint,
                                     const Vector3& planeNormal,
                                     bool convexHull,
                                     double& length,
                                     std::vector<Vector3>* curvePoints) {
    (void)length;
    (void)curvePoints;
    SetProgress(0.0);
    DumpCall<DumpMeshMeasureSectionExact>(triMesh, planePoint, planeNormal,
                                          convexHull);  // dump hook
    const int status = CheckPlaneSection("MeasureMesh::ComputeSectionExact", triMesh, planeNormal);
    return status != RESULT_OK ? status
                               : NotAvailable(Unavailable::MeasureMesh_ComputeSectionExact);
}

int MeasureMesh::ComputeSectionExact(const ITriMesh* triMesh,
                                     const std::vector<PointOnFace>& sectionPoints,
                                     double& length,
                                     std::vector<Vector3>* curvePoints) {
    (void)length;
    (void)curvePoints;
    SetProgress(0.0);
    DumpCall<DumpMeshMeasureSectionExact>(triMesh, sectionPoints);  // dump hook
    const int status =
        CheckPointSection("MeasureMesh::ComputeSectionExact", triMesh, sectionPoints);
    return status != RESULT_OK ? status
                               : NotAvailable(Unavailable::MeasureMesh_ComputeSectionExact);
}

int MeasureMesh::ComputeSectionApproximate(const ITriMesh* triMesh,
                                           const Vector3& planePoint,
                                           const Vector3& planeNormal,
                                           bool convexHull,
                                           double& length,
                                           std::vector<Vector3>* curvePoints) {
    (void)length;
    (void)curvePoints;
    SetProgress(0.0);
    DumpCall<DumpMeshMeasureSectionApproximate>(triMesh, planePoint, planeNormal,
                                                convexHull);  // dump hook
    const int status =
        CheckPlaneSection("MeasureMesh::ComputeSectionApproximate", triMesh, planeNormal);
    return status != RESULT_OK ? status
                               : NotAvailable(Unavailable::MeasureMesh_ComputeSectionApproximate);
}

int MeasureMesh::ComputeSectionApproximate(const ITriMesh* triMesh,
                                           const std::vector<PointOnFace>& sectionPoints,
                                           double& length,
                                           std::vector<Vector3>* curvePoints) {
    (void)length;
    (void)curvePoints;
    SetProgress(0.0);
    DumpCall<DumpMeshMeasureSectionApproximate>(triMesh, sectionPoints);  // dump hook
    const int status =
        CheckPointSection("MeasureMesh::ComputeSectionApproximate", triMesh, sectionPoints);
    return status != RESULT_OK ? status
                               : NotAvailable(Unavailable::MeasureMesh_ComputeSectionApproximate);
}

int MeasureMesh::ComputePrincipalCurvature(const ITriMesh* triMesh,
                                           std::vector<double>* minCurvature,
                                           std::vector<double>* maxCurvature,
                                           std::vector<Vector3>* minDirections,
                                           std::vector<Vector3>* maxDirections) {
    (void)minCurvature;
    (void)maxCurvature;
    (void)minDirections;
    (void)maxDirections;
    SetProgress(0.0);
    DumpCall<DumpMeshMeasurePrincipalCurvature>(triMesh);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "MeasureMesh::ComputePrincipalCurvature: triMesh == NULL");
    }
    if (triMesh->GetTriangleCount() < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "MeasureMesh::ComputePrincipalCurvature: triangleCount < 1");
    }
    return NotAvailable(Unavailable::MeasureMesh_ComputePrincipalCurvature);
}

int MeasureMesh::ComputeThickness(const ITriMesh* triMesh,
                                  double maxThickness,
                                  std::vector<double>* thickness) {
    SetProgress(0.0);
    DumpCall<DumpMeshMeasureThickness>(triMesh, maxThickness);  // dump hook
    if (triMesh == nullptr || thickness == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "MeasureMesh::ComputeThickness: triMesh == NULL || thickness == NULL");
    }
    if (!(maxThickness > 0.0)) {
        return LogFailure(RESULT_INVALID_INPUT, "MeasureMesh::ComputeThickness: maxThickness <= 0");
    }
    return NotAvailable(Unavailable::MeasureMesh_ComputeThickness);
}

}  // namespace ZOL
