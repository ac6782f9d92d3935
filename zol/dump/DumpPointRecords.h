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
ZOL_DUMP_RECORD_PENDING(PointCloudConsolidationNormalSmoothing);

/// Records the normal calculation of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudConsolidationNormalCalculation);

/// Records the smoothing of geometry by normals of ConsolidatePointCloud. The operation is declared
/// later; until then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudConsolidationSmoothByNormal);

/// Records the isolation measure of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudConsolidationCalculateIsolation);

/// Records ReconstructMesh::Reconstruct.
ZOL_DUMP_RECORD(PointCloudReconstructMesh, dumpfield::Cloud, dumpfield::Value<int>);

/// Records the point-pair alignment of RegistratePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudRegistrationAlignPointPair);

/// Records the ICP registration of RegistratePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudRegistrationICP);

/// Records the coarse alignment of RegistratePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudRegistrationAlignPointCloud);

/// Records the uniform sampling of SamplePointCloud. The operation is declared later; until then
/// the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudSamplingUniform);

/// Records the alignment by marks of RegistratePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudRegistrationAlignPointCloudByMark);

/// Records the one-side distance between point clouds. The operation is declared later; until then
/// the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudMeasureOneSideDistance);

/// Records the uniformity measure of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudConsolidationCalculateUniformity);

/// Records the raw-scan consolidation of ConsolidatePointCloud. The operation is declared later;
/// until then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudConsolidationRawScanData);

/// Records the global registration of RegistratePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudRegistrationGlobal);

/// Records FusePointCloud::UpdateFuseFunction. The operation is declared later; until then the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(FusePointCloudUpdate);

/// Records FusePointCloud::ExtractPointCloud. The operation is declared later; until then the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(FusePointCloudExtract);

/// Records the normal reversal of ConsolidatePointCloud (it writes under the tag of
/// normal calculation on purpose). The operation is declared later; until then the record holds no
/// fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudConsolidationNormalReversing);

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

/// Records IntrinsicColor::TuneColorFromSingleLight. The operation is declared later; until then
/// the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(TuneColorFromSingleLight);

/// Records the geometry sampling of SamplePointCloud. The operation is declared later; until then
/// the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudSamplingGeometry);

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

/// Records the geometry smoothing of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudConsolidationGeometrySmoothing);

/// Records the texture tuning by vertex colour of IntrinsicColor. The operation is declared later;
/// until then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(TuneTextureImageByVertexColor);

/// Records the multi-frame colour tuning of IntrinsicColor. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(TuneColorFromMultiFrame);

/// Records the simplification of SamplePointCloud. The operation is declared later; until then the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudSimplify);

/// Records the outlier measure of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudConsolidationCalculateOutlier);

/// Records Triangulation::ConstrainedDelaunay2D.
ZOL_DUMP_RECORD(TriangulationConstrainedDelaunay2D, dumpfield::Vec<Vector2>, dumpfield::Vec<int>);

/// Records the image tuning by triangle colour of IntrinsicColor. The operation is declared later;
/// until then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(TuneImageByTriangleColor);

/// Records the image tuning by point colour of IntrinsicColor. The operation is declared later;
/// until then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(TuneImageByPointColor);

/// Records the grid sampling of SamplePointCloud. The operation is declared later; until then the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudSamplingGrid);

/// Records the overlap removal of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudConsolidationRemoveOverlap);

/// Records the non-rigid ICP of RegistratePointCloud. The operation is declared later; until then
/// the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(NonRigidICP);

/// Records the non-rigid global registration of RegistratePointCloud. The operation is declared
/// later; until then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(NonRigidGlobalRegistrate);

/// Records DeformPointList::Deform.
ZOL_DUMP_RECORD(DeformPointListDeform,
                dumpfield::Cloud,
                dumpfield::Vec<int>,
                dumpfield::Vec<Vector3>,
                dumpfield::Value<double>);

/// Records the normal orientation of ConsolidatePointCloud. The operation is declared later; until
/// then the record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(PointCloudConsolidationNormalOrient);

/// Records the primitive detection of DetectShape. The operation is declared later; until then the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(DetectShapeDetectPrimitive);

/// Records the primitive selection of DetectShape. The operation is declared later; until then the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
ZOL_DUMP_RECORD_PENDING(DetectShapeSelectPrimitive);

}  // namespace ZOL
