// Run of the point-cloud dump records: each calls its API again with the loaded members.
// Records of operations that are declared later answer RESULT_NOT_AVAILABLE until then.
#include <zol/dump/DumpPointRecords.h>

#include <zol/mesh/Triangulation.h>
#include <zol/pointcloud/DeformPointList.h>
#include <zol/pointcloud/FitPointCloud.h>
#include <zol/pointcloud/ReconstructMesh.h>
#include <zol/pointcloud/SignedDistanceFunction.h>
#include <zol/pointcloud/SumPointCloud.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

int DumpPointCloudReconstructMesh::Run() {
    TriMesh* mesh = AddResultMesh();
    return Finish(ReconstructMesh::Reconstruct(Field<0>().get(), Field<1>(), mesh));
}

int DumpSumPointCloudUpdate::Run() {
    SumPointCloud sum(Field<0>(), Field<1>(), Field<2>());
    const Matrix4x4* transform = Field<4>().IsEmpty() ? nullptr : &Field<4>();
    return Finish(sum.UpdateSumFunction(Field<3>().get(), transform));
}

int DumpSumPointCloudExtract::Run() {
    SumPointCloud sum(Field<0>(), Field<1>(), Field<2>());
    return Finish(sum.ExtractPointCloud(AddResultCloud()));
}

int DumpFitPointCloudUniform::Run() {
    PointCloud* fitted = AddResultCloud();
    return Finish(FitPointCloud::FitUniform(Field<0>().get(), Field<1>(), fitted));
}

int DumpSignedDistanceFunctionUpdate::Run() {
    SignedDistanceFunction sdf(Field<0>(), Field<1>(), Field<2>());
    return Finish(sdf.UpdateFunction(Field<3>().get(), Field<4>()));
}

int DumpSignedDistanceFunctionExtract::Run() {
    SignedDistanceFunction sdf(Field<0>(), Field<1>(), Field<2>());
    return Finish(sdf.ExtractTriMesh(AddResultMesh()));
}

int DumpTriangulationConstrainedDelaunay2D::Run() {
    TriMesh* mesh = AddResultMesh();
    return Finish(Triangulation::ConstrainedDelaunay2D(Field<0>(), Field<1>(), mesh));
}

int DumpDeformPointListDeform::Run() {
    return Finish(DeformPointList::Deform(Field<0>().get(), Field<1>(), Field<2>(), Field<3>()));
}

int DumpPointCloudConsolidationNormalSmoothing::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudConsolidationNormalCalculation::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudConsolidationSmoothByNormal::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudConsolidationCalculateIsolation::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudRegistrationAlignPointPair::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudRegistrationICP::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudRegistrationAlignPointCloud::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudSamplingUniform::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudRegistrationAlignPointCloudByMark::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudMeasureOneSideDistance::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudConsolidationCalculateUniformity::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudConsolidationRawScanData::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudRegistrationGlobal::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpFusePointCloudUpdate::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpFusePointCloudExtract::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudConsolidationNormalReversing::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpTuneColorFromSingleLight::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudSamplingGeometry::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudConsolidationGeometrySmoothing::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpTuneTextureImageByVertexColor::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpTuneColorFromMultiFrame::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudSimplify::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudConsolidationCalculateOutlier::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpTuneImageByTriangleColor::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpTuneImageByPointColor::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudSamplingGrid::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudConsolidationRemoveOverlap::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpNonRigidICP::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpNonRigidGlobalRegistrate::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpPointCloudConsolidationNormalOrient::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpDetectShapeDetectPrimitive::Run() { return Finish(RESULT_NOT_AVAILABLE); }

int DumpDetectShapeSelectPrimitive::Run() { return Finish(RESULT_NOT_AVAILABLE); }

}  // namespace ZOL
