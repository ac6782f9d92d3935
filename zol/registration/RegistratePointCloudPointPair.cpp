// The exact rigid fit to one, two or three and more point pairs: the closed-form step
// that coarse alignment applies to every candidate triangle, and the entry point with
// its argument checks.
#include <zol/registration/RegistratePointCloud.h>

#include <cmath>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpRegistrationRecords.h>
#include <zol/registration/RegistrationInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

Matrix4x4 Translation(const Vector3& t) {
    Matrix4x4 m;
    m.GenerateTranslation(t);
    return m;
}

Vector3 Centroid(const Vector3* points, int count) {
    Vector3 sum;
    for (int i = 0; i < count; ++i) sum += points[i];
    return sum / static_cast<double>(count);
}

bool IsFinite(const Vector3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

}  // namespace

void AlignPointPairCore(const Vector3* pointsRef,
                        const Vector3* pointsFrom,
                        int count,
                        const Matrix4x4* initTransform,
                        Matrix4x4& resultTransform) {
    if (count == 1) {
        const Vector3 from =
            initTransform ? initTransform->TransformPoint(pointsFrom[0]) : pointsFrom[0];
        resultTransform = Translation(pointsRef[0] - from);
        return;
    }
    if (count == 2) {
        const Vector3 midRef = (pointsRef[0] + pointsRef[1]) * 0.5;
        Vector3 midFrom = (pointsFrom[0] + pointsFrom[1]) * 0.5;
        Vector3 dirRef = pointsRef[0] - pointsRef[1];
        dirRef.Normalise();
        Vector3 dirFrom = pointsFrom[0] - pointsFrom[1];
        if (initTransform) {
            midFrom = initTransform->TransformPoint(midFrom);
            dirFrom = initTransform->RotateVector(dirFrom);
        }
        dirFrom.Normalise();
        Matrix4x4 rotation;
        rotation.GenerateVectorToVectorRotation(dirFrom, dirRef);
        resultTransform = Translation(midRef) * rotation * Translation(-midFrom);
        return;
    }
    // Three or more pairs: the frame of (centroid, first point, plane normal through the
    // centroid and the first two points) on each side. The initial transform is not used.
    const Vector3 centerRef = Centroid(pointsRef, count);
    const Vector3 centerFrom = Centroid(pointsFrom, count);
    const Vector3 normalFrom =
        centerFrom + (pointsFrom[0] - centerFrom).CrossProduct(pointsFrom[1] - centerFrom);
    const Vector3 normalRef =
        centerRef + (pointsRef[0] - centerRef).CrossProduct(pointsRef[1] - centerRef);
    Matrix4x4 rotation;
    rotation.GenerateLShapeRotation(centerFrom, pointsFrom[0], normalFrom, centerRef, pointsRef[0],
                                    normalRef);
    resultTransform = Translation(centerRef) * rotation * Translation(-centerFrom);
}

int RegistratePointCloud::_AlignPointPair(const std::vector<Vector3>& pointsRef,
                                          const std::vector<Vector3>& pointsFrom,
                                          Matrix4x4* resultTransform,
                                          const Matrix4x4* initTransform) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudRegistrationAlignPointPair>(pointsRef, pointsFrom, resultTransform,
                                                       initTransform);  // dump hook
    if (pointsRef.size() != pointsFrom.size()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::_AlignPointPair: pointsRef.size() != "
                          "pointsFrom.size()");
    }
    if (pointsRef.empty()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::_AlignPointPair: pointCount == 0 ");
    }
    if (resultTransform == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "RegistratePointCloud::_AlignPointPair: resultTransform == NULL");
    }
    for (size_t i = 0; i < pointsRef.size(); ++i) {
        if (!IsFinite(pointsRef[i]) || !IsFinite(pointsFrom[i])) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "RegistratePointCloud::_AlignPointPair: non-finite point");
        }
    }
    AlignPointPairCore(pointsRef.data(), pointsFrom.data(), static_cast<int>(pointsRef.size()),
                       initTransform, *resultTransform);
    return RESULT_OK;
}

}  // namespace ZOL
