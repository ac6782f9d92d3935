// Run of the point-cloud dump records of operations this library declares without
// providing. Consolidation, sampling, fusion and colour tuning run elsewhere.
#include <zol/dump/DumpPointRecords.h>

#include <zol/mesh/Triangulation.h>
#include <zol/pointcloud/ConsolidatePointCloud.h>
#include <zol/pointcloud/DeformPointList.h>
#include <zol/pointcloud/FitPointCloud.h>
#include <zol/pointcloud/IntrinsicColor.h>
#include <zol/pointcloud/MeasurePointCloud.h>
#include <zol/pointcloud/ReconstructMesh.h>
#include <zol/pointcloud/SamplePointCloud.h>
#include <zol/pointcloud/SignedDistanceFunction.h>
#include <zol/pointcloud/SumPointCloud.h>
#include <zol/runtime/Constants.h>
#include <zol/shape/DetectShape.h>

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

int DumpPointCloudConsolidationCalculateIsolation::Run() {
    std::vector<double> isolation;
    return Finish(
        ConsolidatePointCloud::CalculateIsolation(Field<0>().get(), Field<1>(), &isolation));
}

int DumpPointCloudConsolidationCalculateUniformity::Run() {
    std::vector<double> uniformity;
    return Finish(
        ConsolidatePointCloud::CalculateUniformity(Field<0>().get(), Field<1>(), &uniformity));
}

int DumpPointCloudConsolidationCalculateOutlier::Run() {
    std::vector<double> outlierValues;
    return Finish(
        ConsolidatePointCloud::CalculateOutlier(Field<0>().get(), Field<1>(), &outlierValues));
}

int DumpPointCloudConsolidationRawScanData::Run() {
    std::vector<int> removeIndex;
    return Finish(ConsolidatePointCloud::ConsolidateRawScanData(Field<0>().get(), Field<1>(),
                                                                Field<2>(), &removeIndex));
}

int DumpPointCloudConsolidationRemoveOverlap::Run() {
    std::vector<IPointCloud*> clouds;
    for (const auto& cloud : Field<0>()) clouds.push_back(cloud.get());
    std::vector<std::vector<int>> removeIndexList;
    return Finish(ConsolidatePointCloud::RemoveOverlap(clouds, Field<1>(), &removeIndexList));
}

int DumpPointCloudSimplify::Run() {
    std::vector<int> sampleIndex;
    double interval = 0.0;
    return Finish(
        SamplePointCloud::Simplify(Field<0>().get(), Field<1>(), &sampleIndex, &interval));
}

int DumpPointCloudMeasureOneSideDistance::Run() {
    std::vector<double> distances;
    return Finish(
        MeasurePointCloud::ComputeOneSideDistance(Field<0>().get(), Field<1>().get(), &distances));
}

int DumpTuneColorFromMultiFrame::Run() {
    std::vector<IPointCloud*> clouds;
    for (const auto& cloud : Field<0>()) clouds.push_back(cloud.get());
    return Finish(IntrinsicColor::TuneColorFromMultiFrame(clouds, Field<1>(), Field<2>()));
}

int DumpTuneTextureImageByVertexColor::Run() {
    return Finish(IntrinsicColor::TuneTextureImageByVertexColor(
        Field<0>().get(), Field<1>(), Field<2>(), Field<3>(), Field<4>(), Field<5>()));
}

int DumpTuneImageByTriangleColor::Run() {
    return Finish(IntrinsicColor::TuneImageByTriangleColor(Field<0>().get(), Field<1>(), Field<2>(),
                                                           Field<3>(), Field<4>(), Field<5>()));
}

int DumpTuneImageByPointColor::Run() {
    return Finish(IntrinsicColor::TuneImageByPointColor(Field<0>().get(), Field<1>(), Field<2>(),
                                                        Field<3>(), Field<4>(), Field<5>()));
}

int DumpDetectShapeDetectPrimitive::Run() {
    std::vector<int> primitiveIds;
    return Finish(DetectShape::DetectPrimitive(Field<0>().get(), Field<1>(), Field<2>(), Field<3>(),
                                               &primitiveIds));
}

int DumpDetectShapeSelectPrimitive::Run() {
    std::vector<int> faceIds;
    return Finish(DetectShape::SelectPrimitive(Field<0>().get(), Field<1>(), Field<2>(), &faceIds));
}

}  // namespace ZOL
