// The dump records of point-cloud, registration, colour and shape operations (ApiName
// values 101 to 141), one class per recorded API, fields in the API's parameter order.
#pragma once

#include <vector>

#include <zol/core/ImageColorId.h>
#include <zol/core/PointOnFace.h>
#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>
#include <zol/dump/DumpRecord.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Records the normal smoothing of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudConsolidationNormalSmoothing final
    : public DumpRecord<DumpPointCloudConsolidationNormalSmoothing> {
public:
    int Run() override;
};

/// Records the normal calculation of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudConsolidationNormalCalculation final
    : public DumpRecord<DumpPointCloudConsolidationNormalCalculation> {
public:
    int Run() override;
};

/// Records the smoothing of geometry by normals of ConsolidatePointCloud. The operation is declared
/// later; until then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudConsolidationSmoothByNormal final
    : public DumpRecord<DumpPointCloudConsolidationSmoothByNormal> {
public:
    int Run() override;
};

/// Records the isolation measure of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudConsolidationCalculateIsolation final
    : public DumpRecord<DumpPointCloudConsolidationCalculateIsolation> {
public:
    int Run() override;
};

/// Records ReconstructMesh::Reconstruct.
class ZOL_API DumpPointCloudReconstructMesh final
    : public DumpRecord<DumpPointCloudReconstructMesh, dumpfield::Cloud, dumpfield::Value<int>> {
public:
    int Run() override;
};

/// Records the point-pair alignment of RegistratePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudRegistrationAlignPointPair final
    : public DumpRecord<DumpPointCloudRegistrationAlignPointPair> {
public:
    int Run() override;
};

/// Records the ICP registration of RegistratePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudRegistrationICP final
    : public DumpRecord<DumpPointCloudRegistrationICP> {
public:
    int Run() override;
};

/// Records the coarse alignment of RegistratePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudRegistrationAlignPointCloud final
    : public DumpRecord<DumpPointCloudRegistrationAlignPointCloud> {
public:
    int Run() override;
};

/// Records the uniform sampling of SamplePointCloud. The operation is declared later; until then
/// the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudSamplingUniform final
    : public DumpRecord<DumpPointCloudSamplingUniform> {
public:
    int Run() override;
};

/// Records the alignment by marks of RegistratePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudRegistrationAlignPointCloudByMark final
    : public DumpRecord<DumpPointCloudRegistrationAlignPointCloudByMark> {
public:
    int Run() override;
};

/// Records the one-side distance between point clouds. The operation is declared later; until then
/// the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudMeasureOneSideDistance final
    : public DumpRecord<DumpPointCloudMeasureOneSideDistance> {
public:
    int Run() override;
};

/// Records the uniformity measure of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudConsolidationCalculateUniformity final
    : public DumpRecord<DumpPointCloudConsolidationCalculateUniformity> {
public:
    int Run() override;
};

/// Records the raw-scan consolidation of ConsolidatePointCloud. The operation is declared later;
/// until then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudConsolidationRawScanData final
    : public DumpRecord<DumpPointCloudConsolidationRawScanData> {
public:
    int Run() override;
};

/// Records the global registration of RegistratePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudRegistrationGlobal final
    : public DumpRecord<DumpPointCloudRegistrationGlobal> {
public:
    int Run() override;
};

/// Records FusePointCloud::UpdateFuseFunction. The operation is declared later; until then the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpFusePointCloudUpdate final : public DumpRecord<DumpFusePointCloudUpdate> {
public:
    int Run() override;
};

/// Records FusePointCloud::ExtractPointCloud. The operation is declared later; until then the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpFusePointCloudExtract final : public DumpRecord<DumpFusePointCloudExtract> {
public:
    int Run() override;
};

/// Records the normal reversal of ConsolidatePointCloud (it writes under the tag of
/// normal calculation on purpose). The operation is declared later; until then the record holds no
/// fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudConsolidationNormalReversing final
    : public DumpRecord<DumpPointCloudConsolidationNormalReversing> {
public:
    int Run() override;
};

/// Records SumPointCloud::UpdateSumFunction with the sum's box: resolution, box minimum and
/// maximum, the cloud and the transform.
class ZOL_API DumpSumPointCloudUpdate final : public DumpRecord<DumpSumPointCloudUpdate,
                                                                dumpfield::Value<double>,
                                                                dumpfield::Value<Vector3>,
                                                                dumpfield::Value<Vector3>,
                                                                dumpfield::Cloud,
                                                                dumpfield::OptMatrix> {
public:
    int Run() override;
};

/// Records SumPointCloud::ExtractPointCloud with the sum's box: resolution, box minimum
/// and maximum.
class ZOL_API DumpSumPointCloudExtract final : public DumpRecord<DumpSumPointCloudExtract,
                                                                 dumpfield::Value<double>,
                                                                 dumpfield::Value<Vector3>,
                                                                 dumpfield::Value<Vector3>> {
public:
    int Run() override;
};

/// Records IntrinsicColor::TuneColorFromSingleLight. The operation is declared later; until then
/// the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpTuneColorFromSingleLight final : public DumpRecord<DumpTuneColorFromSingleLight> {
public:
    int Run() override;
};

/// Records the geometry sampling of SamplePointCloud. The operation is declared later; until then
/// the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudSamplingGeometry final
    : public DumpRecord<DumpPointCloudSamplingGeometry> {
public:
    int Run() override;
};

/// Records FitPointCloud::FitUniform.
class ZOL_API DumpFitPointCloudUniform final
    : public DumpRecord<DumpFitPointCloudUniform, dumpfield::Cloud, dumpfield::Value<double>> {
public:
    int Run() override;
};

/// Records SignedDistanceFunction::UpdateFunction with the grid's box: resolution, box
/// minimum and maximum, the scan and the view point.
class ZOL_API DumpSignedDistanceFunctionUpdate final
    : public DumpRecord<DumpSignedDistanceFunctionUpdate,
                        dumpfield::Value<double>,
                        dumpfield::Value<Vector3>,
                        dumpfield::Value<Vector3>,
                        dumpfield::Cloud,
                        dumpfield::Value<Vector3>> {
public:
    int Run() override;
};

/// Records SignedDistanceFunction::ExtractTriMesh with the grid's box: resolution, box
/// minimum and maximum.
class ZOL_API DumpSignedDistanceFunctionExtract final
    : public DumpRecord<DumpSignedDistanceFunctionExtract,
                        dumpfield::Value<double>,
                        dumpfield::Value<Vector3>,
                        dumpfield::Value<Vector3>> {
public:
    int Run() override;
};

/// Records the geometry smoothing of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudConsolidationGeometrySmoothing final
    : public DumpRecord<DumpPointCloudConsolidationGeometrySmoothing> {
public:
    int Run() override;
};

/// Records the texture tuning by vertex colour of IntrinsicColor. The operation is declared later;
/// until then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpTuneTextureImageByVertexColor final
    : public DumpRecord<DumpTuneTextureImageByVertexColor> {
public:
    int Run() override;
};

/// Records the multi-frame colour tuning of IntrinsicColor. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpTuneColorFromMultiFrame final : public DumpRecord<DumpTuneColorFromMultiFrame> {
public:
    int Run() override;
};

/// Records the simplification of SamplePointCloud. The operation is declared later; until then the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudSimplify final : public DumpRecord<DumpPointCloudSimplify> {
public:
    int Run() override;
};

/// Records the outlier measure of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudConsolidationCalculateOutlier final
    : public DumpRecord<DumpPointCloudConsolidationCalculateOutlier> {
public:
    int Run() override;
};

/// Records Triangulation::ConstrainedDelaunay2D.
class ZOL_API DumpTriangulationConstrainedDelaunay2D final
    : public DumpRecord<DumpTriangulationConstrainedDelaunay2D,
                        dumpfield::Vec<Vector2>,
                        dumpfield::Vec<int>> {
public:
    int Run() override;
};

/// Records the image tuning by triangle colour of IntrinsicColor. The operation is declared later;
/// until then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpTuneImageByTriangleColor final : public DumpRecord<DumpTuneImageByTriangleColor> {
public:
    int Run() override;
};

/// Records the image tuning by point colour of IntrinsicColor. The operation is declared later;
/// until then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpTuneImageByPointColor final : public DumpRecord<DumpTuneImageByPointColor> {
public:
    int Run() override;
};

/// Records the grid sampling of SamplePointCloud. The operation is declared later; until then the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudSamplingGrid final : public DumpRecord<DumpPointCloudSamplingGrid> {
public:
    int Run() override;
};

/// Records the overlap removal of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudConsolidationRemoveOverlap final
    : public DumpRecord<DumpPointCloudConsolidationRemoveOverlap> {
public:
    int Run() override;
};

/// Records the non-rigid ICP of RegistratePointCloud. The operation is declared later; until then
/// the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpNonRigidICP final : public DumpRecord<DumpNonRigidICP> {
public:
    int Run() override;
};

/// Records the non-rigid global registration of RegistratePointCloud. The operation is declared
/// later; until then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpNonRigidGlobalRegistrate final : public DumpRecord<DumpNonRigidGlobalRegistrate> {
public:
    int Run() override;
};

/// Records DeformPointList::Deform.
class ZOL_API DumpDeformPointListDeform final : public DumpRecord<DumpDeformPointListDeform,
                                                                  dumpfield::Cloud,
                                                                  dumpfield::Vec<int>,
                                                                  dumpfield::Vec<Vector3>,
                                                                  dumpfield::Value<double>> {
public:
    int Run() override;
};

/// Records the normal orientation of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpPointCloudConsolidationNormalOrient final
    : public DumpRecord<DumpPointCloudConsolidationNormalOrient> {
public:
    int Run() override;
};

/// Records the primitive detection of DetectShape. The operation is declared later; until then the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpDetectShapeDetectPrimitive final
    : public DumpRecord<DumpDetectShapeDetectPrimitive> {
public:
    int Run() override;
};

/// Records the primitive selection of DetectShape. The operation is declared later; until then the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpDetectShapeSelectPrimitive final
    : public DumpRecord<DumpDetectShapeSelectPrimitive> {
public:
    int Run() override;
};

}  // namespace ZOL
