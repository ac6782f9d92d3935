// The dump records of curve and mapping operations on meshes (ApiName values 201 to 213)
// and of relief compression (300), one class per recorded API.
#pragma once

#include <vector>

#include <zol/core/ImageColorId.h>
#include <zol/core/PointOnFace.h>
#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>
#include <zol/dump/DumpRecord.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Records OptimiseCurve::SmoothCurveOnMesh.
class ZOL_API DumpOptimiseCurveSmoothCurveOnMesh final
    : public DumpRecord<DumpOptimiseCurveSmoothCurveOnMesh,
                        dumpfield::Mesh,
                        dumpfield::Value<int>,
                        dumpfield::Value<bool>,
                        dumpfield::OptVec<PointOnFace>> {
public:
    int Run() override;
};

/// Records OptimiseMapping::Interpolate.
class ZOL_API DumpOptimiseMappingInterpolate final
    : public DumpRecord<DumpOptimiseMappingInterpolate,
                        dumpfield::Mesh,
                        dumpfield::Vec<int>,
                        dumpfield::Vec<Vector3>> {
public:
    int Run() override;
};

/// Records OptimiseMapping::TransferToMesh.
class ZOL_API DumpOptimiseMappingTransferToMesh final
    : public DumpRecord<DumpOptimiseMappingTransferToMesh,
                        dumpfield::Mesh,
                        dumpfield::Vec<Vector3>,
                        dumpfield::Mesh> {
public:
    int Run() override;
};

/// Records OptimiseCurve::ApproximateOffset.
class ZOL_API DumpOptimiseCurveApproximateOffset final
    : public DumpRecord<DumpOptimiseCurveApproximateOffset,
                        dumpfield::Mesh,
                        dumpfield::Vec<PointOnFace>,
                        dumpfield::Value<bool>,
                        dumpfield::Value<double>> {
public:
    int Run() override;
};

/// Records OptimiseCurve::MakeBijective.
class ZOL_API DumpOptimiseCurveMakeBijective final
    : public DumpRecord<DumpOptimiseCurveMakeBijective,
                        dumpfield::Mesh,
                        dumpfield::Value<bool>,
                        dumpfield::OptVec<PointOnFace>> {
public:
    int Run() override;
};

/// Records OptimiseCurve::ConnectFacePointsOnMesh.
class ZOL_API DumpOptimiseCurveConnectFacePointsOnMesh final
    : public DumpRecord<DumpOptimiseCurveConnectFacePointsOnMesh,
                        dumpfield::Mesh,
                        dumpfield::Vec<PointOnFace>,
                        dumpfield::Value<bool>> {
public:
    int Run() override;
};

/// Records OptimiseCurve::ConnectFacePointsByCuttingPlane.
class ZOL_API DumpOptimiseCurveConnectFacePointsByCuttingPlane final
    : public DumpRecord<DumpOptimiseCurveConnectFacePointsByCuttingPlane,
                        dumpfield::Mesh,
                        dumpfield::Value<PointOnFace>,
                        dumpfield::Value<PointOnFace>,
                        dumpfield::Value<Vector3>> {
public:
    int Run() override;
};

/// Records OptimiseCurve::SmoothCurveCrossMesh.
class ZOL_API DumpOptimiseCurveSmoothCurveCrossMesh final
    : public DumpRecord<DumpOptimiseCurveSmoothCurveCrossMesh,
                        dumpfield::Mesh,
                        dumpfield::Value<int>,
                        dumpfield::Value<bool>,
                        dumpfield::OptVec<Vector3>> {
public:
    int Run() override;
};

/// Records OptimiseMapping::ProjectToMesh.
class ZOL_API DumpOptimiseMappingProjectToMesh final
    : public DumpRecord<DumpOptimiseMappingProjectToMesh,
                        dumpfield::Mesh,
                        dumpfield::Vec<Vector3>> {
public:
    int Run() override;
};

/// Records OptimiseMapping::FuseImageColorIds.
class ZOL_API DumpOptimiseMappingFuseImageColorIds final
    : public DumpRecord<DumpOptimiseMappingFuseImageColorIds,
                        dumpfield::Mesh,
                        dumpfield::Nested<ImageColorId>> {
public:
    int Run() override;
};

/// Records OptimiseMapping::InterpolateFaceImageColorIds (it writes under the tag of
/// image-colour-id fusion on purpose).
class ZOL_API DumpOptimiseMappingInterpolateFaceImageColorIds final
    : public DumpRecord<DumpOptimiseMappingInterpolateFaceImageColorIds,
                        dumpfield::Mesh,
                        dumpfield::Vec<ImageColorId>,
                        dumpfield::Value<int>> {
public:
    int Run() override;
};

/// Records the texture colour tuning of IntrinsicColor. The operation is declared later; until then
/// the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpTuneTextureImageColor final : public DumpRecord<DumpTuneTextureImageColor> {
public:
    int Run() override;
};

/// Records DigitalRelief::CompressHeightField.
class ZOL_API DumpDigitalReliefCompressHeightField final
    : public DumpRecord<DumpDigitalReliefCompressHeightField,
                        dumpfield::Vec<double>,
                        dumpfield::Value<int>,
                        dumpfield::Value<int>,
                        dumpfield::Value<double>> {
public:
    int Run() override;
};

}  // namespace ZOL
