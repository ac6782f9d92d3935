// Registration members this library declares without providing: alignment by marks,
// global registration of several scans and non-rigid registration. Each runs the API
// frame and its argument checks, then answers RESULT_NOT_AVAILABLE.
#include <zol/registration/RegistratePointCloud.h>

#include <cmath>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpRegistrationRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

namespace {

bool IsFiniteMark(const Vector3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

// Index of the first null scan, or -1.
int FirstNull(const std::vector<const IPointCloud*>& clouds) {
    for (size_t i = 0; i < clouds.size(); ++i)
        if (clouds[i] == nullptr) return static_cast<int>(i);
    return -1;
}

}  // namespace

int RegistratePointCloud::AlignPointCloudByMark(const IPointCloud* pointCloudRef,
                                                const std::vector<Vector3>& refMarks,
                                                const IPointCloud* pointCloudFrom,
                                                const std::vector<Vector3>& fromMarks,
                                                Matrix4x4* resultTransform) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudRegistrationAlignPointCloudByMark>(pointCloudRef, refMarks,
                                                              pointCloudFrom,
                                                              fromMarks);  // dump hook
    if (pointCloudRef == nullptr || pointCloudFrom == nullptr || resultTransform == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::AlignPointCloudByMark: pointCloudRef == NULL || "
                          "pointCloudFrom == NULL || resultTransform == NULL");
    }
    if (refMarks.size() < 3 || fromMarks.size() < 3) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::AlignPointCloudByMark: refMarks.size() < 3 || "
                          "fromMarks.size() < 3");
    }
    for (const std::vector<Vector3>* marks : {&refMarks, &fromMarks}) {
        for (const Vector3& mark : *marks) {
            if (!IsFiniteMark(mark)) {
                return LogFailure(RESULT_INVALID_INPUT,
                                  "RegistratePointCloud::AlignPointCloudByMark: non-finite mark");
            }
        }
    }
    return NotAvailable(Unavailable::RegistratePointCloud_AlignPointCloudByMark);
}

int RegistratePointCloud::GlobalRegistrate(const std::vector<const IPointCloud*>& pointCloudList,
                                           const std::vector<Matrix4x4>* initTransformList,
                                           int maxIterationCount,
                                           std::vector<Matrix4x4>* resultTransformList) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudRegistrationGlobal>(pointCloudList, initTransformList,
                                               maxIterationCount);  // dump hook
    if (pointCloudList.size() < 2) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::GlobalRegistrate: pointCloudList.size() < 2");
    }
    const int nullId = FirstNull(pointCloudList);
    if (nullId >= 0) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "RegistratePointCloud::GlobalRegistrate: pointCloud is NULL: cloudId = ", nullId);
    }
    if (resultTransformList == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::GlobalRegistrate: resultTransformList == NULL");
    }
    if (initTransformList && initTransformList->size() != pointCloudList.size()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::GlobalRegistrate: initTransformList size != "
                          "pointCloudList size");
    }
    if (maxIterationCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::GlobalRegistrate: maxIterationCount < 1");
    }
    return NotAvailable(Unavailable::RegistratePointCloud_GlobalRegistrate);
}

int RegistratePointCloud::NonRigidICP(const IPointCloud* pointCloudRef,
                                      const IPointCloud* pointCloudFrom,
                                      const Matrix4x4* initTransform,
                                      double stiffness,
                                      std::vector<Vector3>* deformedPoints) {
    SetProgress(0.0);
    DumpCall<DumpNonRigidICP>(pointCloudRef, pointCloudFrom, initTransform,
                              stiffness);  // dump hook
    if (pointCloudRef == nullptr || pointCloudFrom == nullptr || deformedPoints == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::NonRigidICP: pointCloudRef == NULL || "
                          "pointCloudFrom == NULL || deformedPoints == NULL");
    }
    if (pointCloudFrom->GetPointCount() < 3 || pointCloudRef->GetPointCount() < 3) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::NonRigidICP: fromPointCount < 3 || "
                          "refPointCount < 3");
    }
    if (!(stiffness > 0.0)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::NonRigidICP: invalid stiffness: ", stiffness);
    }
    return NotAvailable(Unavailable::RegistratePointCloud_NonRigidICP);
}

int RegistratePointCloud::NonRigidGlobalRegistrate(
    const std::vector<const IPointCloud*>& pointCloudList,
    const std::vector<Matrix4x4>* initTransformList,
    double stiffness,
    std::vector<Matrix4x4>* resultTransformList,
    std::vector<std::vector<Vector3>>* deformedPointsList) {
    SetProgress(0.0);
    DumpCall<DumpNonRigidGlobalRegistrate>(pointCloudList, initTransformList,
                                           stiffness);  // dump hook
    if (pointCloudList.size() < 2) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::NonRigidGlobalRegistrate: pointCloudList.size() "
                          "< 2");
    }
    const int nullId = FirstNull(pointCloudList);
    if (nullId >= 0) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "RegistratePointCloud::NonRigidGlobalRegistrate: pointCloud is NULL: cloudId = ",
            nullId);
    }
    if (resultTransformList == nullptr || deformedPointsList == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::NonRigidGlobalRegistrate: resultTransformList == "
                          "NULL || deformedPointsList == NULL");
    }
    if (initTransformList && initTransformList->size() != pointCloudList.size()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::NonRigidGlobalRegistrate: initTransformList size "
                          "!= pointCloudList size");
    }
    if (!(stiffness > 0.0)) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "RegistratePointCloud::NonRigidGlobalRegistrate: invalid stiffness: ", stiffness);
    }
    return NotAvailable(Unavailable::RegistratePointCloud_NonRigidGlobalRegistrate);
}

}  // namespace ZOL
