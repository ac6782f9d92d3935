// Run of the registration dump records: the three rigid operations are called again on
// the loaded clouds and points, and the ones this library does not provide are called to
// their answer.
#include <zol/dump/DumpRegistrationRecords.h>

#include <zol/registration/RegistratePointCloud.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

namespace {

// The cloud moved by a rigid pose, so that a replayed registration can be looked at
// over its ref cloud.
void MoveCloud(const PointCloud& from, const Matrix4x4& pose, PointCloud* moved) {
    *moved = from;
    for (int i = 0; i < moved->GetPointCount(); ++i) {
        moved->SetPointCoord(i, pose.TransformPoint(moved->GetPointCoord(i)));
        if (moved->HasNormal())
            moved->SetPointNormal(i, pose.RotateVector(moved->GetPointNormal(i)));
    }
}

std::vector<const IPointCloud*> ConstPointers(
    const std::vector<std::unique_ptr<PointCloud>>& owned) {
    std::vector<const IPointCloud*> out;
    for (const auto& p : owned) out.push_back(p.get());
    return out;
}

}  // namespace

int DumpPointCloudRegistrationAlignPointPair::Run() {
    mResult.Free();
    const Matrix4x4* init = Field<3>().IsEmpty() ? nullptr : &Field<3>();
    return Finish(RegistratePointCloud::_AlignPointPair(Field<0>(), Field<1>(),
                                                        Field<2>() ? &mResult : nullptr, init));
}

int DumpPointCloudRegistrationICP::Run() {
    mResult.Free();
    PointCloudInfo refInfo;
    PointCloudInfo fromInfo;
    const Matrix4x4* init = Field<5>().IsEmpty() ? nullptr : &Field<5>();
    // Ids given with a count of 0 are refused by the worker: an empty list still has to
    // reach it as a non-null pointer.
    static const int kNoId = 0;
    const auto& ids = Field<8>();
    const int* sampleIds = !ids ? nullptr : ids->empty() ? &kNoId : ids->data();
    const int status = RegistratePointCloud::_ICPRegistrate(
        Field<0>().get(), refInfo, OptionalField<1>(), Field<2>().get(), fromInfo,
        OptionalField<3>(), Field<4>() ? &mResult : nullptr, init, Field<6>(), Field<7>(),
        sampleIds, OptionalField<9>(), Field<10>());
    if (status == RESULT_OK && Field<4>()) {
        MoveCloud(*Field<2>(), init ? mResult * *init : mResult, AddResultCloud());
    }
    return Finish(status);
}

int DumpPointCloudRegistrationAlignPointCloud::Run() {
    mResult.Free();
    const int status = RegistratePointCloud::AlignPointCloud(
        Field<0>().get(), Field<1>().get(), Field<2>() ? &mResult : nullptr, Field<3>());
    if (status == RESULT_OK && Field<2>()) MoveCloud(*Field<1>(), mResult, AddResultCloud());
    return Finish(status);
}

int DumpPointCloudRegistrationAlignPointCloudByMark::Run() {
    Matrix4x4 result;
    return Finish(RegistratePointCloud::AlignPointCloudByMark(
        Field<0>().get(), Field<1>(), Field<2>().get(), Field<3>(), &result));
}

int DumpPointCloudRegistrationGlobal::Run() {
    std::vector<Matrix4x4> results;
    return Finish(RegistratePointCloud::GlobalRegistrate(ConstPointers(Field<0>()),
                                                         OptionalField<1>(), Field<2>(), &results));
}

int DumpNonRigidICP::Run() {
    std::vector<Vector3> deformed;
    const Matrix4x4* init = Field<2>().IsEmpty() ? nullptr : &Field<2>();
    return Finish(RegistratePointCloud::NonRigidICP(Field<0>().get(), Field<1>().get(), init,
                                                    Field<3>(), &deformed));
}

int DumpNonRigidGlobalRegistrate::Run() {
    LogLine(Field<1>() ? "DumpNonRigidGlobalRegistrate::Run: with initialization"
                       : "DumpNonRigidGlobalRegistrate::Run: no initialization");
    std::vector<Matrix4x4> results;
    std::vector<std::vector<Vector3>> deformed;
    return Finish(RegistratePointCloud::NonRigidGlobalRegistrate(
        ConstPointers(Field<0>()), OptionalField<1>(), Field<2>(), &results, &deformed));
}

}  // namespace ZOL
