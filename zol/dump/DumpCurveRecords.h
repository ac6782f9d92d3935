// The dump records of curve and mapping operations on meshes (ApiName values 201 to 213)
// and of relief compression (300), one class per recorded API.
#pragma once

#include <vector>

#include <zol/core/Color4.h>
#include <zol/core/ImageColorId.h>
#include <zol/core/PointOnFace.h>
#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>
#include <zol/dump/DumpRecord.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Records OptimiseCurve::SmoothCurveOnMesh.
ZOL_DUMP_RECORD(OptimiseCurveSmoothCurveOnMesh,
                dumpfield::Mesh,
                dumpfield::Value<int>,
                dumpfield::Value<bool>,
                dumpfield::OptVec<PointOnFace>);

/// Records OptimiseMapping::Interpolate.
ZOL_DUMP_RECORD(OptimiseMappingInterpolate,
                dumpfield::Mesh,
                dumpfield::Vec<int>,
                dumpfield::Vec<Vector3>);

/// Records OptimiseMapping::TransferToMesh.
ZOL_DUMP_RECORD(OptimiseMappingTransferToMesh,
                dumpfield::Mesh,
                dumpfield::Vec<Vector3>,
                dumpfield::Mesh);

/// Records OptimiseCurve::ApproximateOffset.
ZOL_DUMP_RECORD(OptimiseCurveApproximateOffset,
                dumpfield::Mesh,
                dumpfield::Vec<PointOnFace>,
                dumpfield::Value<bool>,
                dumpfield::Value<double>);

/// Records OptimiseCurve::MakeBijective.
ZOL_DUMP_RECORD(OptimiseCurveMakeBijective,
                dumpfield::Mesh,
                dumpfield::Value<bool>,
                dumpfield::OptVec<PointOnFace>);

/// Records OptimiseCurve::ConnectFacePointsOnMesh.
ZOL_DUMP_RECORD(OptimiseCurveConnectFacePointsOnMesh,
                dumpfield::Mesh,
                dumpfield::Vec<PointOnFace>,
                dumpfield::Value<bool>);

/// Records OptimiseCurve::ConnectFacePointsByCuttingPlane.
ZOL_DUMP_RECORD(OptimiseCurveConnectFacePointsByCuttingPlane,
                dumpfield::Mesh,
                dumpfield::Value<PointOnFace>,
                dumpfield::Value<PointOnFace>,
                dumpfield::Value<Vector3>);

/// Records OptimiseCurve::SmoothCurveCrossMesh.
ZOL_DUMP_RECORD(OptimiseCurveSmoothCurveCrossMesh,
                dumpfield::Mesh,
                dumpfield::Value<int>,
                dumpfield::Value<bool>,
                dumpfield::OptVec<Vector3>);

/// Records OptimiseMapping::ProjectToMesh.
ZOL_DUMP_RECORD(OptimiseMappingProjectToMesh, dumpfield::Mesh, dumpfield::Vec<Vector3>);

/// Records OptimiseMapping::FuseImageColorIds.
ZOL_DUMP_RECORD(OptimiseMappingFuseImageColorIds, dumpfield::Mesh, dumpfield::Nested<ImageColorId>);

/// Records OptimiseMapping::InterpolateFaceImageColorIds (it writes under the tag of
/// image-colour-id fusion on purpose).
ZOL_DUMP_RECORD(OptimiseMappingInterpolateFaceImageColorIds,
                dumpfield::Mesh,
                dumpfield::Vec<ImageColorId>,
                dumpfield::Value<int>);

/// Records IntrinsicColor::TuneTextureImageColor: the mesh, the corner texture
/// coordinates, the triangle images, the image sizes and the images.
ZOL_DUMP_RECORD(TuneTextureImageColor,
                dumpfield::Mesh,
                dumpfield::Vec<Vector2>,
                dumpfield::Vec<int>,
                dumpfield::Vec<int>,
                dumpfield::Nested<Color4>);

/// Records DigitalRelief::CompressHeightField.
ZOL_DUMP_RECORD(DigitalReliefCompressHeightField,
                dumpfield::Vec<double>,
                dumpfield::Value<int>,
                dumpfield::Value<int>,
                dumpfield::Value<double>);

}  // namespace ZOL
