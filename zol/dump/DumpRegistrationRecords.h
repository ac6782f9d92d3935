// The dump records of registration (ApiName values 106 to 110, 114, 136 and 137): the
// point-pair fit, ICP and coarse alignment replay the call and give its transform; the
// members this library does not provide replay to their answer.
#pragma once

#include <vector>

#include <zol/core/Matrix4x4.h>
#include <zol/core/PointCloud.h>
#include <zol/core/Vector3.h>
#include <zol/dump/DumpPointFields.h>
#include <zol/dump/DumpRecord.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Records RegistratePointCloud::_AlignPointPair: the ref and from points, whether a
/// result was given and the initial transform. Run fits into a transform of its own
/// (GetResultTransform), or passes null as the call did.
class ZOL_API DumpPointCloudRegistrationAlignPointPair final
    : public DumpRecord<DumpPointCloudRegistrationAlignPointPair,
                        dumpfield::Vec<Vector3>,
                        dumpfield::Vec<Vector3>,
                        dumpfield::Given,
                        dumpfield::OptMatrix> {
public:
    /// \return the transform of the last Run; empty before Run or when no result was given.
    const Matrix4x4& GetResultTransform() const { return mResult; }
    int Run() override;

private:
    Matrix4x4 mResult;
};

/// Records RegistratePointCloud::_ICPRegistrate (ICPRegistrate writes it through its
/// worker): the ref cloud, its marks, the from cloud, its marks, whether a result was
/// given, the initial transform, hasNormal, the sample count, the sample ids, the distance
/// tolerance and the try count. The neighbour contexts are not recorded: Run builds fresh
/// ones, as ICPRegistrate does. After a success GetResultTransform is the correction and
/// GetPointCloud(0) the from cloud moved by it after the initial transform.
class ZOL_API DumpPointCloudRegistrationICP final : public DumpRecord<DumpPointCloudRegistrationICP,
                                                                      dumpfield::Cloud,
                                                                      dumpfield::OptVec<Vector3>,
                                                                      dumpfield::Cloud,
                                                                      dumpfield::OptVec<Vector3>,
                                                                      dumpfield::Given,
                                                                      dumpfield::OptMatrix,
                                                                      dumpfield::Value<bool>,
                                                                      dumpfield::Value<int>,
                                                                      dumpfield::IdArray,
                                                                      dumpfield::OptValue<double>,
                                                                      dumpfield::Value<int>> {
public:
    /// \return the transform of the last Run; empty before Run or when no result was given.
    const Matrix4x4& GetResultTransform() const { return mResult; }
    int Run() override;

private:
    Matrix4x4 mResult;
};

/// Records RegistratePointCloud::AlignPointCloud: the ref cloud, the from cloud, whether a
/// result was given and the accuracy. After a success GetResultTransform is the pose found
/// and GetPointCloud(0) the from cloud moved by it.
class ZOL_API DumpPointCloudRegistrationAlignPointCloud final
    : public DumpRecord<DumpPointCloudRegistrationAlignPointCloud,
                        dumpfield::Cloud,
                        dumpfield::Cloud,
                        dumpfield::Given,
                        dumpfield::Value<double>> {
public:
    /// \return the transform of the last Run; empty before Run or when no result was given.
    const Matrix4x4& GetResultTransform() const { return mResult; }
    int Run() override;

private:
    Matrix4x4 mResult;
};

/// Records RegistratePointCloud::AlignPointCloudByMark: the ref cloud, its marks, the from
/// cloud and its marks.
ZOL_DUMP_RECORD(PointCloudRegistrationAlignPointCloudByMark,
                dumpfield::Cloud,
                dumpfield::Vec<Vector3>,
                dumpfield::Cloud,
                dumpfield::Vec<Vector3>);

/// Records RegistratePointCloud::GlobalRegistrate: the scans, their starting poses and
/// the iteration count.
ZOL_DUMP_RECORD(PointCloudRegistrationGlobal,
                dumpfield::ConstCloudList,
                dumpfield::OptVec<Matrix4x4>,
                dumpfield::Value<int>);

/// Records RegistratePointCloud::NonRigidICP: the ref cloud, the from cloud, the initial
/// transform and the stiffness.
ZOL_DUMP_RECORD(NonRigidICP,
                dumpfield::Cloud,
                dumpfield::Cloud,
                dumpfield::OptMatrix,
                dumpfield::Value<double>);

/// Records RegistratePointCloud::NonRigidGlobalRegistrate: the scans, their starting
/// poses and the stiffness. Run notes "DumpNonRigidGlobalRegistrate::Run: no
/// initialization" or "DumpNonRigidGlobalRegistrate::Run: with initialization" by whether
/// starting poses were recorded.
ZOL_DUMP_RECORD(NonRigidGlobalRegistrate,
                dumpfield::ConstCloudList,
                dumpfield::OptVec<Matrix4x4>,
                dumpfield::Value<double>);

}  // namespace ZOL
