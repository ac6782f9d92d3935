// Run of the curve, mapping, texture-colour and relief dump records: each calls its API
// again with the loaded members.
#include <zol/dump/DumpCurveRecords.h>

#include <zol/mesh/DigitalRelief.h>
#include <zol/mesh/OptimiseCurve.h>
#include <zol/mesh/OptimiseMapping.h>
#include <zol/pointcloud/IntrinsicColor.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

int DumpOptimiseCurveSmoothCurveOnMesh::Run() {
    return Finish(OptimiseCurve::SmoothCurveOnMesh(Field<0>().get(), Field<1>(), Field<2>(),
                                                   OptionalField<3>()));
}

int DumpOptimiseMappingInterpolate::Run() {
    std::vector<Vector3> values;
    return Finish(OptimiseMapping::Interpolate(Field<0>().get(), Field<1>(), Field<2>(), &values));
}

int DumpOptimiseMappingTransferToMesh::Run() {
    std::vector<Vector3> values;
    return Finish(
        OptimiseMapping::TransferToMesh(Field<0>().get(), Field<1>(), Field<2>().get(), &values));
}

int DumpOptimiseCurveApproximateOffset::Run() {
    std::vector<PointOnFace> offsetCurve;
    return Finish(OptimiseCurve::ApproximateOffset(Field<0>().get(), Field<1>(), Field<2>(),
                                                   Field<3>(), &offsetCurve));
}

int DumpOptimiseCurveMakeBijective::Run() {
    return Finish(OptimiseCurve::MakeBijective(Field<0>().get(), Field<1>(), OptionalField<2>()));
}

int DumpOptimiseCurveConnectFacePointsOnMesh::Run() {
    std::vector<PointOnFace> curve;
    return Finish(
        OptimiseCurve::ConnectFacePointsOnMesh(Field<0>().get(), Field<1>(), Field<2>(), &curve));
}

int DumpOptimiseCurveConnectFacePointsByCuttingPlane::Run() {
    std::vector<PointOnFace> curve;
    return Finish(OptimiseCurve::ConnectFacePointsByCuttingPlane(Field<0>().get(), Field<1>(),
                                                                 Field<2>(), Field<3>(), &curve));
}

int DumpOptimiseCurveSmoothCurveCrossMesh::Run() {
    return Finish(OptimiseCurve::SmoothCurveCrossMesh(Field<0>().get(), Field<1>(), Field<2>(),
                                                      OptionalField<3>()));
}

int DumpOptimiseMappingProjectToMesh::Run() {
    std::vector<PointOnFace> facePoints;
    return Finish(OptimiseMapping::ProjectToMesh(Field<0>().get(), Field<1>(), &facePoints));
}

int DumpOptimiseMappingFuseImageColorIds::Run() {
    std::vector<ImageColorId> ids;
    return Finish(OptimiseMapping::FuseImageColorIds(Field<0>().get(), Field<1>(), &ids));
}

int DumpOptimiseMappingInterpolateFaceImageColorIds::Run() {
    std::vector<ImageColorId> ids;
    return Finish(OptimiseMapping::InterpolateFaceImageColorIds(Field<0>().get(), Field<1>(),
                                                                Field<2>(), &ids));
}

// Texture colour tuning belongs to IntrinsicColor, whose remaining members are declared
// later; the record answers as the operation will until then.
int DumpTuneTextureImageColor::Run() {
    return Finish(IntrinsicColor::TuneTextureImageColor(Field<0>().get(), Field<1>(), Field<2>(),
                                                        Field<3>(), Field<4>()));
}

int DumpDigitalReliefCompressHeightField::Run() {
    std::vector<double> compressed;
    return Finish(DigitalRelief::CompressHeightField(Field<0>(), Field<1>(), Field<2>(), Field<3>(),
                                                     &compressed));
}

}  // namespace ZOL
