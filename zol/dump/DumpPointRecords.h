// The dump records of point-cloud, colour and shape operations (ApiName values 101 to
// 141 outside registration), one class per recorded API, fields in parameter order.
#pragma once

#include <memory>
#include <vector>

#include <zol/core/Color4.h>
#include <zol/core/ImageColorId.h>
#include <zol/core/PointOnFace.h>
#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>
#include <zol/dump/DumpPointFields.h>
#include <zol/dump/DumpRecord.h>
#include <zol/pointcloud/FusePointCloud.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Records ConsolidatePointCloud::SmoothNormal (written by _SmoothNormal): the cloud, the
/// normal weight, the neighbour count and the fixed points. Run smooths the loaded cloud
/// (GetPointCloud(0)) in a neighbour context of its own.
ZOL_DUMP_RECORD(PointCloudConsolidationNormalSmoothing,
                dumpfield::Cloud,
                dumpfield::Value<double>,
                dumpfield::Value<int>,
                dumpfield::OptVec<int>);

/// Records ConsolidatePointCloud::CalculatePointCloudNormal: the cloud with its grid, the
/// neighbour count and the camera direction. Run estimates the normals of the loaded cloud
/// (GetPointCloud(0)).
ZOL_DUMP_RECORD(PointCloudConsolidationNormalCalculation,
                dumpfield::GridCloud,
                dumpfield::Value<int>,
                dumpfield::OptValue<Vector3>);

/// Records ConsolidatePointCloud::_SmoothGeometryByNormal: the cloud, the neighbour count,
/// the sharp angle, the iteration count and the selection (the caller's neighbour context
/// is not recorded; Run builds one). Run smooths the loaded cloud (GetPointCloud(0)).
ZOL_DUMP_RECORD(PointCloudConsolidationSmoothByNormal,
                dumpfield::Cloud,
                dumpfield::Value<int>,
                dumpfield::Value<double>,
                dumpfield::Value<int>,
                dumpfield::OptVec<int>);

/// Records ConsolidatePointCloud::CalculateIsolation: the cloud and the neighbour count.
ZOL_DUMP_RECORD(PointCloudConsolidationCalculateIsolation, dumpfield::Cloud, dumpfield::Value<int>);

/// Records ReconstructMesh::Reconstruct.
ZOL_DUMP_RECORD(PointCloudReconstructMesh, dumpfield::Cloud, dumpfield::Value<int>);

/// Records SamplePointCloud::UniformSample: the cloud, the sample count, whether an output
/// array was given, the seed and the quality. Run samples into an array of its own
/// (GetSampleIndex) and gives the sampled points as GetPointCloud(0).
class ZOL_API DumpPointCloudSamplingUniform final : public DumpRecord<DumpPointCloudSamplingUniform,
                                                                      dumpfield::Cloud,
                                                                      dumpfield::Value<int>,
                                                                      dumpfield::Given,
                                                                      dumpfield::Value<int>,
                                                                      dumpfield::Value<int>> {
public:
    /// \return the indices the last Run produced (empty before Run or after a failure).
    const std::vector<int>& GetSampleIndex() const { return mSampleIndex; }
    int Run() override;

private:
    std::vector<int> mSampleIndex;
};

/// Records MeasurePointCloud::ComputeOneSideDistance: the measured cloud and the reference.
ZOL_DUMP_RECORD(PointCloudMeasureOneSideDistance, dumpfield::Cloud, dumpfield::Cloud);

/// Records ConsolidatePointCloud::CalculateUniformity: the cloud and the neighbour count.
ZOL_DUMP_RECORD(PointCloudConsolidationCalculateUniformity,
                dumpfield::Cloud,
                dumpfield::Value<int>);

/// Records ConsolidatePointCloud::ConsolidateRawScanData: the scan, the neighbour count and
/// the grazing angle.
ZOL_DUMP_RECORD(PointCloudConsolidationRawScanData,
                dumpfield::Cloud,
                dumpfield::Value<int>,
                dumpfield::Value<double>);

/// Records FusePointCloud::UpdateFuseFunction with the object it updates: the grid (the
/// three resolutions, box minimum and maximum, whether normals are fused) on one line, the
/// fused state before the call, then the cloud, the transform and the attributes. Run
/// restores the fusion, repeats the update and gives the fusion's extraction after it as
/// GetPointCloud(0); without a state it notes "DumpFusePointCloudUpdate::Run: fuse is
/// NULL" and updates a fusion without a grid, as the call did.
class ZOL_API DumpFusePointCloudUpdate final : public DumpRecord<DumpFusePointCloudUpdate,
                                                                 dumpfield::Value<int>,
                                                                 dumpfield::Value<int>,
                                                                 dumpfield::Value<int>,
                                                                 dumpfield::Value<Vector3>,
                                                                 dumpfield::Value<Vector3>,
                                                                 dumpfield::Value<bool>,
                                                                 dumpfield::FuseState,
                                                                 dumpfield::Cloud,
                                                                 dumpfield::OptMatrix,
                                                                 dumpfield::OptVec<double>> {
public:
    /// \return the fusion Run updates: the loaded state, or the fusion without a grid that
    ///         the last Run made when the file held none; owned by the record.
    const FusePointCloud* GetFusePointCloud() const;
    /// \return the attributes extracted with GetPointCloud(0).
    const std::vector<double>& GetPointAttributes() const { return mAttributes; }
    int Run() override;

private:
    std::unique_ptr<FusePointCloud> mFuse;
    std::vector<double> mAttributes;
};

/// Records FusePointCloud::ExtractPointCloud with the object it reads: the grid line and
/// the fused state as for the update, then the target cloud (null, or its points when it
/// was not blank) and whether attributes were asked for. Run extracts into the loaded
/// target (GetPointCloud(0)); without a state it notes "DumpFusePointCloudExtract::Run:
/// fuse is NULL" and extracts from a fusion without a grid, as the call did.
class ZOL_API DumpFusePointCloudExtract final : public DumpRecord<DumpFusePointCloudExtract,
                                                                  dumpfield::Value<int>,
                                                                  dumpfield::Value<int>,
                                                                  dumpfield::Value<int>,
                                                                  dumpfield::Value<Vector3>,
                                                                  dumpfield::Value<Vector3>,
                                                                  dumpfield::Value<bool>,
                                                                  dumpfield::FuseState,
                                                                  dumpfield::Cloud,
                                                                  dumpfield::Given> {
public:
    /// \return the attributes the last Run extracted.
    const std::vector<double>& GetPointAttributes() const { return mAttributes; }
    int Run() override;

private:
    std::vector<double> mAttributes;
};

/// Records ConsolidatePointCloud::ReversePointCloudNormal (it writes under the tag of
/// normal calculation on purpose). Run reverses the loaded cloud's normals
/// (GetPointCloud(0)).
ZOL_DUMP_RECORD(PointCloudConsolidationNormalReversing, dumpfield::Cloud);

/// Records SumPointCloud::UpdateSumFunction with the sum's box: resolution, box minimum and
/// maximum, the cloud and the transform.
ZOL_DUMP_RECORD(SumPointCloudUpdate,
                dumpfield::Value<double>,
                dumpfield::Value<Vector3>,
                dumpfield::Value<Vector3>,
                dumpfield::Cloud,
                dumpfield::OptMatrix);

/// Records SumPointCloud::ExtractPointCloud with the sum's box: resolution, box minimum
/// and maximum.
ZOL_DUMP_RECORD(SumPointCloudExtract,
                dumpfield::Value<double>,
                dumpfield::Value<Vector3>,
                dumpfield::Value<Vector3>);

/// Records IntrinsicColor::TuneColorFromSingleLight: the clouds, their colour lists, the
/// flag, the point density and whether the two optional outputs were given. Run tunes the
/// loaded colour lists in place (GetColorList) with outputs of its own where the call gave
/// them; after a success GetPointCloud(c) is scan c with its tuned colours.
class ZOL_API DumpTuneColorFromSingleLight final : public DumpRecord<DumpTuneColorFromSingleLight,
                                                                     dumpfield::CloudList,
                                                                     dumpfield::Nested<Vector3>,
                                                                     dumpfield::Value<bool>,
                                                                     dumpfield::OptValue<double>,
                                                                     dumpfield::Given,
                                                                     dumpfield::Given> {
public:
    /// \return the colour lists: as loaded, and tuned after a successful Run.
    const std::vector<std::vector<Vector3>>& GetColorList() const { return Field<1>(); }
    /// \return the colour gains of the last Run (empty when the call gave no output).
    const std::vector<Vector3>& GetColorGains() const { return mColorGains; }
    /// \return the overlap errors of the last Run (empty when the call gave no output).
    const std::vector<double>& GetOverlapErrors() const { return mOverlapErrors; }
    int Run() override;

private:
    std::vector<Vector3> mColorGains;
    std::vector<double> mOverlapErrors;
};

/// Records SamplePointCloud::GeometrySample: the cloud, the sample count, whether an output
/// array was given, the uniform weight, the neighbour count, the seed and the quality. Run
/// samples into an array of its own (GetSampleIndex) and gives the sampled points as
/// GetPointCloud(0).
class ZOL_API DumpPointCloudSamplingGeometry final
    : public DumpRecord<DumpPointCloudSamplingGeometry,
                        dumpfield::Cloud,
                        dumpfield::Value<int>,
                        dumpfield::Given,
                        dumpfield::Value<double>,
                        dumpfield::Value<int>,
                        dumpfield::Value<int>,
                        dumpfield::Value<int>> {
public:
    /// \return the indices the last Run produced (empty before Run or after a failure).
    const std::vector<int>& GetSampleIndex() const { return mSampleIndex; }
    int Run() override;

private:
    std::vector<int> mSampleIndex;
};

/// Records FitPointCloud::FitUniform.
ZOL_DUMP_RECORD(FitPointCloudUniform, dumpfield::Cloud, dumpfield::Value<double>);

/// Records SignedDistanceFunction::UpdateFunction with the grid's box: resolution, box
/// minimum and maximum, the scan and the view point.
ZOL_DUMP_RECORD(SignedDistanceFunctionUpdate,
                dumpfield::Value<double>,
                dumpfield::Value<Vector3>,
                dumpfield::Value<Vector3>,
                dumpfield::Cloud,
                dumpfield::Value<Vector3>);

/// Records SignedDistanceFunction::ExtractTriMesh with the grid's box: resolution, box
/// minimum and maximum.
ZOL_DUMP_RECORD(SignedDistanceFunctionExtract,
                dumpfield::Value<double>,
                dumpfield::Value<Vector3>,
                dumpfield::Value<Vector3>);

/// Records ConsolidatePointCloud::SmoothGeometry: the cloud, the neighbour count, the
/// iteration count and the selection. Run smooths the loaded cloud (GetPointCloud(0)).
ZOL_DUMP_RECORD(PointCloudConsolidationGeometrySmoothing,
                dumpfield::Cloud,
                dumpfield::Value<int>,
                dumpfield::Value<int>,
                dumpfield::OptVec<int>);

/// Records IntrinsicColor::TuneTextureImageByVertexColor: the mesh, the corner texture
/// coordinates, the vertex colours, the image size and the image.
ZOL_DUMP_RECORD(TuneTextureImageByVertexColor,
                dumpfield::Mesh,
                dumpfield::Vec<Vector2>,
                dumpfield::Vec<Vector3>,
                dumpfield::Value<int>,
                dumpfield::Value<int>,
                dumpfield::Vec<Color4>);

/// Records IntrinsicColor::TuneColorFromMultiFrame: the frames, their colour lists and the
/// camera positions.
ZOL_DUMP_RECORD(TuneColorFromMultiFrame,
                dumpfield::CloudList,
                dumpfield::Nested<Vector3>,
                dumpfield::Vec<Vector3>);

/// Records SamplePointCloud::Simplify: the cloud and the target count.
ZOL_DUMP_RECORD(PointCloudSimplify, dumpfield::Cloud, dumpfield::Value<int>);

/// Records ConsolidatePointCloud::CalculateOutlier: the cloud and the neighbour count.
ZOL_DUMP_RECORD(PointCloudConsolidationCalculateOutlier, dumpfield::Cloud, dumpfield::Value<int>);

/// Records Triangulation::ConstrainedDelaunay2D.
ZOL_DUMP_RECORD(TriangulationConstrainedDelaunay2D, dumpfield::Vec<Vector2>, dumpfield::Vec<int>);

/// Records IntrinsicColor::TuneImageByTriangleColor: the mesh, the corner texture
/// coordinates, the triangle colours, the image size and the image.
ZOL_DUMP_RECORD(TuneImageByTriangleColor,
                dumpfield::Mesh,
                dumpfield::Vec<Vector2>,
                dumpfield::Vec<Vector3>,
                dumpfield::Value<int>,
                dumpfield::Value<int>,
                dumpfield::Vec<Color4>);

/// Records IntrinsicColor::TuneImageByPointColor: the cloud, the point colours, their image
/// positions, the image size and the image.
ZOL_DUMP_RECORD(TuneImageByPointColor,
                dumpfield::Cloud,
                dumpfield::Vec<Vector3>,
                dumpfield::Vec<Vector2>,
                dumpfield::Value<int>,
                dumpfield::Value<int>,
                dumpfield::Vec<Color4>);

/// Records SamplePointCloud::GridSample: the cloud and the interval. Run samples into a
/// vector of its own (GetSampleIndex) and gives the sampled points as GetPointCloud(0).
class ZOL_API DumpPointCloudSamplingGrid final
    : public DumpRecord<DumpPointCloudSamplingGrid, dumpfield::Cloud, dumpfield::Value<double>> {
public:
    /// \return the indices the last Run produced (empty before Run or after a failure).
    const std::vector<int>& GetSampleIndex() const { return mSampleIndex; }
    int Run() override;

private:
    std::vector<int> mSampleIndex;
};

/// Records ConsolidatePointCloud::RemoveOverlap: the scans and the overlap distance.
ZOL_DUMP_RECORD(PointCloudConsolidationRemoveOverlap,
                dumpfield::CloudList,
                dumpfield::Value<double>);

/// Records DeformPointList::Deform.
ZOL_DUMP_RECORD(DeformPointListDeform,
                dumpfield::Cloud,
                dumpfield::Vec<int>,
                dumpfield::Vec<Vector3>,
                dumpfield::Value<double>);

/// Records ConsolidatePointCloud::OrientPointCloudNormal: the cloud with its grid, the
/// neighbour count and the camera direction. Run orients the loaded cloud's normals
/// (GetPointCloud(0)).
ZOL_DUMP_RECORD(PointCloudConsolidationNormalOrient,
                dumpfield::GridCloud,
                dumpfield::Value<int>,
                dumpfield::OptValue<Vector3>);

/// Records DetectShape::DetectPrimitive: the cloud, the distance and angle tolerances and
/// the smallest primitive.
ZOL_DUMP_RECORD(DetectShapeDetectPrimitive,
                dumpfield::Cloud,
                dumpfield::Value<double>,
                dumpfield::Value<double>,
                dumpfield::Value<int>);

/// Records DetectShape::SelectPrimitive: the mesh, the seed triangle and the tolerance.
ZOL_DUMP_RECORD(DetectShapeSelectPrimitive,
                dumpfield::Mesh,
                dumpfield::Value<int>,
                dumpfield::Value<double>);

}  // namespace ZOL
