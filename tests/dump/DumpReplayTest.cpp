// Replay of recorded calls: every operation the library declares without providing it
// answers -8 with its line, and its dump file loads and runs to the same status while
// writing the very same file again (so every field came back exactly). Also the query
// tool on a real scan and `zol replay`.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <set>
#include <typeinfo>

#include <zol/dump/DumpHookInternal.h>
#include <zol/runtime/NotAvailableInternal.h>
#include <zol/zol.h>

#include "tests/common/DumpFiles.h"
#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

struct Operation {
    const char* name;  // as the registry names it
    std::function<int()> call;
    const char* note = "";  // a further line of the replay
};

}  // namespace

TEST(UnavailableOperations, AnswerMinus8AndReplayFromTheirDumps) {
    zoltest::DumpDirScope dir;
    TriMesh cube = zoltest::MakeUnitCube();
    TriMesh other = zoltest::MakeUnitCube();
    TriMesh out;
    PointCloud cloud(true, false, false);
    for (int i = 0; i < 8; ++i) cloud.InsertPoint(cube.GetVertexCoord(i), cube.GetVertexNormal(i));
    PointCloud grid(false, false, true);
    grid.InitGrid(2, 2);
    grid.SetGridCoord(0, 0, Vector3(0, 0, 1));
    PointCloud outCloud;
    Matrix4x4 pose;
    pose.InitIdentityTransform();
    const std::vector<Vector2> corners(36, Vector2(0.25, 0.75));
    const std::vector<Vector2> pins = {Vector2(0, 0), Vector2(1, 0)};
    std::vector<Vector2> cornersInOut = corners;
    std::vector<Vector2> vertexUV(8, Vector2(0.5, 1.0 / 3.0));
    const std::vector<PointOnFace> facePoints = {PointOnFace(0, Vector3(0.2, 0.3, 0.5)),
                                                 PointOnFace(5, Vector3(1, 0, 0))};
    std::vector<PointOnFace> curve = facePoints;
    std::vector<Vector3> polyline = {Vector3(0, 0, 2), Vector3(1, 1, 2)};
    const std::vector<ImageColorId> vertexIds(8, ImageColorId(1, 3, 4));
    const std::vector<int> seeds = {0, 7};
    const std::vector<double> fields(8, 0.1);
    std::vector<int> ints;
    std::vector<double> reals;
    std::vector<Vector2> uv;
    std::vector<Vector3> values;
    std::vector<Color4> image;
    std::vector<Color4> image8(8, Color4(10, 20, 30, 255));
    const std::vector<Vector3> polyline2(4, Vector3(0.5, 0, 1));
    std::vector<PointOnFace> pofs;
    std::vector<ImageColorId> colorIds;
    std::vector<std::vector<int>> lists;
    const std::vector<Vector3> marks = {Vector3(0, 0, 0), Vector3(1, 0, 0), Vector3(0, 1, 0)};
    std::vector<Matrix4x4> poses(2, pose), mats;
    poses[1].SetValue(3, 0.25);
    std::vector<std::vector<Vector3>> nested;
    SumPointCloud sum(0.5, Vector3(-1, -1, -1), Vector3(2, 2, 2));
    SignedDistanceFunction sdf(0.5, Vector3(-1, -1, -1), Vector3(2, 2, 2));
    FuseDepthVideo video(0.5, Vector3(-1, -1, -1), Vector3(2, 2, 2));
    DeformMesh deform;
    DeformCage cage;
    const Operation operations[] = {
        {"ConsolidateMesh::MakeTriMeshManifold",
         [&] { return ConsolidateMesh::MakeTriMeshManifold(&cube); }},
        {"ConsolidateMesh::ConsolidateGeometry",
         [&] { return ConsolidateMesh::ConsolidateGeometry(&cube, 0.1, 2.0); }},
        {"ConsolidateMesh::RemoveGeometryNoise",
         [&] { return ConsolidateMesh::RemoveGeometryNoise(&cube, 0.25); }},
        {"FillMeshHole::FindHoles", [&] { return FillMeshHole::FindHoles(&cube, &lists); }},
        {"FillMeshHole::FillHoles",
         [&] {
             return FillMeshHole::FillHoles(&cube, &seeds, FILL_MESH_HOLE_CURVATURE, &fields,
                                            &reals);
         }},
        {"FillMeshHole::BridgeEdges",
         [&] {
             return FillMeshHole::BridgeEdges(&cube, {0, 1, 6, 7}, 3);
         }},
        {"FilterMesh::LaplaceSmooth",
         [&] { return FilterMesh::LaplaceSmooth(&cube, 0.3, 5, &seeds); }},
        {"FilterMesh::EnhanceDetail", [&] { return FilterMesh::EnhanceDetail(&cube, 1.5, 3); }},
        {"UnfoldMesh::ConformalMap",
         [&] { return UnfoldMesh::ConformalMap(&cube, &seeds, &pins, &uv); }},
        {"UnfoldMesh::OptimizeIsometric",
         [&] { return UnfoldMesh::OptimizeIsometric(&cube, 4, &vertexUV); }},
        {"UnfoldMesh::GenerateUVAtlas",
         [&] { return UnfoldMesh::GenerateUVAtlas(&cube, 0.2, &uv); }},
        {"UnfoldMesh::PackUVAtlas",
         [&] { return UnfoldMesh::PackUVAtlas(&cube, 0.01, &cornersInOut); }},
        {"SubdivideMesh::LoopSubdivide", [&] { return SubdivideMesh::LoopSubdivide(&cube, 2); }},
        {"SubdivideMesh::Densify", [&] { return SubdivideMesh::Densify(&cube, 0.3); }},
        {"SubdivideMesh::InsertPointsOnMesh",
         [&] { return SubdivideMesh::InsertPointsOnMesh(&cube, facePoints, &ints); }},
        {"SimplifyMesh::QuadricSimplify", [&] { return SimplifyMesh::QuadricSimplify(&cube, 5); }},
        {"SimplifyMesh::QuadricSimplifyTextureCoord",
         [&] { return SimplifyMesh::QuadricSimplifyTextureCoord(&cube, 5, &cornersInOut); }},
        {"SimplifyMesh::RemoveVertices",
         [&] { return SimplifyMesh::RemoveVertices(&cube, seeds); }},
        {"SplitMesh::SplitByLines",
         [&] {
             return SplitMesh::SplitByLines(&cube, {{0, 1, 3, 2}, {4}}, &ints);
         }},
        {"SplitMesh::InsertSplitLineByEdgePoints",
         [&] {
             return SplitMesh::InsertSplitLineByEdgePoints(
                 &cube, {PointOnEdge(0, 1, 0.25), PointOnEdge(1, 3, 0.5)}, &ints);
         }},
        {"SplitMesh::SplitByPlane",
         [&] {
             return SplitMesh::SplitByPlane(&cube, Plane3(Vector3(0, 0, 0.5), Vector3(0, 0, 1)),
                                            &out, &out);
         }},
        {"SplitMesh::GenerateAtlasSplitLines",
         [&] { return SplitMesh::GenerateAtlasSplitLines(&cube, 3, &lists); }},
        {"SplitMesh::InsertSplitLinesByFacePoints",
         [&] {
             return SplitMesh::InsertSplitLinesByFacePoints(&cube, {facePoints, {}}, &lists);
         }},
        {"TextureImage::CreateByVertexColors",
         [&] {
             return TextureImage::CreateByVertexColors(
                 &cube, std::vector<Vector3>(8, Vector3(0.1, 0.2, 1)), corners, 16, 8, &image);
         }},
        {"TextureImage::CreateByRefImages",
         [&] {
             return TextureImage::CreateByRefImages(&cube, corners,
                                                    {std::vector<Color4>(4, Color4(9, 8, 7, 255))},
                                                    {2, 2}, vertexIds, 16, 16, &image);
         }},
        {"OffsetMesh::UniformApproximateOffset",
         [&] { return OffsetMesh::UniformApproximateOffset(&cube, -0.05, &out); }},
        {"SampleMesh::UniformSample",
         [&] { return SampleMesh::UniformSample(&cube, 100, &outCloud); }},
        {"Triangulation::ConstrainedDelaunayOptimization",
         [&] { return Triangulation::ConstrainedDelaunayOptimization(&cube, &seeds); }},
        {"Triangulation::MutualTessellation",
         [&] { return Triangulation::MutualTessellation(&cube, &other); }},
        {"Triangulation::CentroidVoronoiOptimization",
         [&] { return Triangulation::CentroidVoronoiOptimization(&cube, 3, nullptr); }},
        {"Triangulation::ConstrainedDelaunay2D",
         [&] {
             return Triangulation::ConstrainedDelaunay2D(
                 {Vector2(0, 0), Vector2(1, 0), Vector2(0, 1)}, {0, 2}, &out);
         }},
        {"Remesh::UniformRemesh", [&] { return Remesh::UniformRemesh(&cube, 0.2, 3); }},
        {"DeformMesh::Init", [&] { return deform.Init(&cube, {0}, {7}); }},
        {"DeformMesh::Deform", [&] { return deform.Deform({Vector3(1, 1, 1.5)}, &cube); }},
        {"DeformCage::Init", [&] { return cage.Init(&other, &cube); }},
        {"DeformCage::Deform", [&] { return cage.Deform(&other, &cube); }},
        {"MeshGeodesic::ComputeDistance",
         [&] { return MeshGeodesic::ComputeDistance(&cube, seeds, &reals); }},
        {"MeshGeodesic::ComputePath",
         [&] { return MeshGeodesic::ComputePath(&cube, facePoints[0], facePoints[1], &pofs); }},
        {"OptimiseCurve::SmoothCurveOnMesh",
         [&] { return OptimiseCurve::SmoothCurveOnMesh(&cube, 2, true, &curve); }},
        {"OptimiseCurve::ApproximateOffset",
         [&] { return OptimiseCurve::ApproximateOffset(&cube, facePoints, false, 0.1, &pofs); }},
        {"OptimiseCurve::MakeBijective",
         [&] { return OptimiseCurve::MakeBijective(&cube, true, &curve); }},
        {"OptimiseCurve::ConnectFacePointsOnMesh",
         [&] { return OptimiseCurve::ConnectFacePointsOnMesh(&cube, facePoints, false, &pofs); }},
        {"OptimiseCurve::ConnectFacePointsByCuttingPlane",
         [&] {
             return OptimiseCurve::ConnectFacePointsByCuttingPlane(
                 &cube, facePoints[0], facePoints[1], Vector3(0, 0, 1), &pofs);
         }},
        {"OptimiseCurve::SmoothCurveCrossMesh",
         [&] { return OptimiseCurve::SmoothCurveCrossMesh(&cube, 2, false, &polyline); }},
        {"OptimiseMapping::Interpolate",
         [&] {
             return OptimiseMapping::Interpolate(
                 &cube, seeds, {Vector3(1, 0, 0), Vector3(0, 1e-300, 0)}, &values);
         }},
        {"OptimiseMapping::TransferToMesh",
         [&] {
             return OptimiseMapping::TransferToMesh(
                 &cube, std::vector<Vector3>(8, Vector3(3, 2, 1)), &other, &values);
         }},
        {"OptimiseMapping::ProjectToMesh",
         [&] { return OptimiseMapping::ProjectToMesh(&cube, {Vector3(0.5, 0.5, 2)}, &pofs); }},
        {"OptimiseMapping::FuseImageColorIds",
         [&] {
             return OptimiseMapping::FuseImageColorIds(
                 &cube, std::vector<std::vector<ImageColorId>>(8, vertexIds), &colorIds);
         }},
        {"OptimiseMapping::InterpolateFaceImageColorIds",
         [&] {
             return OptimiseMapping::InterpolateFaceImageColorIds(&cube, vertexIds, 3, &colorIds);
         }},
        {"DigitalRelief::CompressHeightField",
         [&] {
             return DigitalRelief::CompressHeightField({1, 2, 3, 4, 5, 6.5}, 3, 2, 0.5, &reals);
         }},
        {"ReconstructMesh::Reconstruct",
         [&] { return ReconstructMesh::Reconstruct(&cloud, 6, &out); }},
        {"FitPointCloud::FitUniform",
         [&] { return FitPointCloud::FitUniform(&cloud, 0.1, &outCloud); }},
        {"SumPointCloud::UpdateSumFunction", [&] { return sum.UpdateSumFunction(&cloud, &pose); }},
        {"SumPointCloud::ExtractPointCloud", [&] { return sum.ExtractPointCloud(&outCloud); }},
        {"SignedDistanceFunction::UpdateFunction",
         [&] { return sdf.UpdateFunction(&cloud, Vector3(0, 0, 5)); }},
        {"SignedDistanceFunction::ExtractTriMesh", [&] { return sdf.ExtractTriMesh(&out); }},
        {"ConsolidateGrid::RemoveGridNoise",
         [&] { return ConsolidateGrid::RemoveGridNoise(&grid, 3); }},
        {"ConsolidateGrid::SmoothGrid", [&] { return ConsolidateGrid::SmoothGrid(&grid, 1, 2); }},
        {"FuseDepthVideo::UpdateFrame",
         [&] {
             return video.UpdateFrame({1, 0, 1, 1}, 2, 2, {500, 500, 1, 1}, pose);
         }},
        {"FuseDepthVideo::ExtractPointCloud", [&] { return video.ExtractPointCloud(&outCloud); }},
        {"DeformPointList::Deform",
         [&] { return DeformPointList::Deform(&cloud, {0}, {Vector3(0, 0, 1)}, 1.0); }},
        {"ConsolidatePointCloud::CalculateIsolation",
         [&] { return ConsolidatePointCloud::CalculateIsolation(&cloud, 6, &reals); }},
        {"ConsolidatePointCloud::CalculateUniformity",
         [&] { return ConsolidatePointCloud::CalculateUniformity(&cloud, 6, &reals); }},
        {"ConsolidatePointCloud::CalculateOutlier",
         [&] { return ConsolidatePointCloud::CalculateOutlier(&cloud, 6, &reals); }},
        {"ConsolidatePointCloud::ConsolidateRawScanData",
         [&] { return ConsolidatePointCloud::ConsolidateRawScanData(&cloud, 6, 1.2, nullptr); }},
        {"ConsolidatePointCloud::RemoveOverlap",
         [&] {
             return ConsolidatePointCloud::RemoveOverlap({&cloud, &grid}, 0.01, &lists);
         }},
        {"SamplePointCloud::Simplify",
         [&] { return SamplePointCloud::Simplify(&cloud, 4, &ints, nullptr); }},
        {"MeasurePointCloud::ComputeOneSideDistance",
         [&] { return MeasurePointCloud::ComputeOneSideDistance(&grid, &cloud, &reals); }},
        {"IntrinsicColor::TuneMeshColorFromMultiPatch",
         [&] {
             std::vector<Vector3> colors(8, Vector3(0.5, 0.25, 1));
             return IntrinsicColor::TuneMeshColorFromMultiPatch(&cube, {0, 0, 0, 0, 1, 1, 1, 1},
                                                                colors);
         }},
        {"IntrinsicColor::TuneColorFromMultiFrame",
         [&] {
             std::vector<std::vector<Vector3>> colors = {std::vector<Vector3>(8, Vector3(1, 0, 0)),
                                                         {Vector3(0, 0, 1)}};
             return IntrinsicColor::TuneColorFromMultiFrame({&cloud, &grid}, colors,
                                                            {Vector3(0, 0, 3), Vector3(3, 0, 0)});
         }},
        {"IntrinsicColor::TuneTextureImageByVertexColor",
         [&] {
             return IntrinsicColor::TuneTextureImageByVertexColor(
                 &cube, corners, std::vector<Vector3>(8, Vector3(0.1, 0.2, 0.3)), 4, 2, image8);
         }},
        {"IntrinsicColor::TuneImageByTriangleColor",
         [&] {
             return IntrinsicColor::TuneImageByTriangleColor(
                 &cube, corners, std::vector<Vector3>(12, Vector3(0.3, 0.2, 0.1)), 2, 4, image8);
         }},
        {"IntrinsicColor::TuneImageByPointColor",
         [&] {
             return IntrinsicColor::TuneImageByPointColor(
                 &cloud, std::vector<Vector3>(8, Vector3(1, 1, 0)), vertexUV, 8, 1, image8);
         }},
        {"IntrinsicColor::TuneTextureImageColor",
         [&] {
             std::vector<std::vector<Color4>> images = {image8, {Color4(1, 2, 3, 4)}};
             return IntrinsicColor::TuneTextureImageColor(&cube, corners, std::vector<int>(12, 1),
                                                          {4, 2, 1, 1}, images);
         }},
        {"MeasureMesh::ComputeSectionExact",
         [&] {
             double length = 0.0;
             return MeasureMesh::ComputeSectionExact(&cube, Vector3(0.5, 0.5, 0.5),
                                                     Vector3(0, 0, 1), true, length, nullptr);
         }},
        {"MeasureMesh::ComputeSectionApproximate",
         [&] {
             double length = 0.0;
             return MeasureMesh::ComputeSectionApproximate(&cube, facePoints, length, &values);
         }},
        {"MeasureMesh::ComputePrincipalCurvature",
         [&] {
             return MeasureMesh::ComputePrincipalCurvature(&cube, &reals, nullptr, nullptr,
                                                           &values);
         }},
        {"MeasureMesh::ComputeThickness",
         [&] { return MeasureMesh::ComputeThickness(&cube, 0.75, &reals); }},
        {"DetectShape::DetectPrimitive",
         [&] { return DetectShape::DetectPrimitive(&cloud, 0.01, 0.2, 5, &ints); }},
        {"DetectShape::SelectPrimitive",
         [&] { return DetectShape::SelectPrimitive(&cube, 11, 0.01, &ints); }},
        {"DetectShape::FitCylinder",
         [&] {
             Vector3 point, axis;
             double radius = 0.0;
             return DetectShape::FitCylinder(polyline2, polyline2, point, axis, radius);
         }},
        {"DetectShape::FitCone",
         [&] {
             Vector3 apex, axis;
             double angle = 0.0;
             return DetectShape::FitCone(polyline2, polyline2, apex, axis, angle);
         }},
        {"RegistratePointCloud::AlignPointCloudByMark",
         [&] {
             return RegistratePointCloud::AlignPointCloudByMark(&cloud, marks, &grid, polyline2,
                                                                &pose);
         }},
        {"RegistratePointCloud::GlobalRegistrate",
         [&] {
             return RegistratePointCloud::GlobalRegistrate({&cloud, &grid}, &poses, 5, &mats);
         }},
        {"RegistratePointCloud::NonRigidICP",
         [&] { return RegistratePointCloud::NonRigidICP(&cloud, &cloud, &pose, 0.5, &values); }},
        {"RegistratePointCloud::NonRigidGlobalRegistrate",
         [&] {
             return RegistratePointCloud::NonRigidGlobalRegistrate({&grid, &cloud}, nullptr, 2.0,
                                                                   &mats, &nested);
         },
         "DumpNonRigidGlobalRegistrate::Run: no initialization"},
        {"RegistratePointCloud::NonRigidGlobalRegistrate",
         [&] {
             return RegistratePointCloud::NonRigidGlobalRegistrate({&grid, &cloud}, &poses, 2.0,
                                                                   &mats, &nested);
         },
         "DumpNonRigidGlobalRegistrate::Run: with initialization"},
    };
    std::set<std::string> covered;
    int recorded = 0;
    for (const Operation& op : operations) {
        covered.insert(op.name);
        zoltest::LogCapture log;
        int status = 0;
        const auto files = zoltest::RecordCall(op.call, &status);
        TakeDumpOnce();  // operations without a record leave the switch armed
        EXPECT_EQ(status, RESULT_NOT_AVAILABLE) << op.name;
        EXPECT_TRUE(log.Contains(std::string(op.name) + ": not available in this library"))
            << op.name;
        ASSERT_LE(files.size(), 1u) << op.name;
        if (files.empty()) continue;
        ++recorded;
        zoltest::ExpectReplays(files[0], status, op.name, op.note);
    }
    EXPECT_EQ(recorded, 77);
    // Every operation the registry lists is called above, except the query tool's (below).
    for (int i = 0; i < static_cast<int>(Unavailable::Count); ++i) {
        const std::string name = UnavailableName(static_cast<Unavailable>(i));
        if (name.rfind("MeshQueryTool::", 0) == 0) continue;
        EXPECT_TRUE(covered.count(name)) << name;
    }
}

TEST(UnavailableOperations, ArgumentChecksLogTheirLineFirst) {
    const double kNaN = std::numeric_limits<double>::quiet_NaN();
    TriMesh cube = zoltest::MakeUnitCube();
    PointCloud bare;
    std::vector<Vector2> uv(3);
    std::vector<PointOnFace> pofs;
    SumPointCloud flat(0.0, Vector3(), Vector3(1, 1, 1));
    const struct {
        std::function<int()> call;
        const char* line;
    } cases[] = {
        {[&] {
             return FillMeshHole::FillHoles(nullptr, nullptr, FILL_MESH_HOLE_FLAT, nullptr,
                                            nullptr);
         },
         "FillMeshHole::FillHoles: triMesh == NULL"},
        {[&] {
             const std::vector<int> s = {8};
             return FillMeshHole::FillHoles(&cube, &s, FILL_MESH_HOLE_FLAT, nullptr, nullptr);
         },
         "FillMeshHole::FillHoles: boundarySeedId out of range"},
        {[&] {
             return FillMeshHole::FillHoles(&cube, nullptr, static_cast<FillMeshHoleType>(3),
                                            nullptr, nullptr);
         },
         "FillMeshHole::FillHoles: invalid type"},
        {[&] {
             const std::vector<double> f(5);
             return FillMeshHole::FillHoles(&cube, nullptr, FILL_MESH_HOLE_FLAT, &f, nullptr);
         },
         "FillMeshHole::FillHoles: vertexFields size is not a multiple of vertexCount"},
        {[&] { return SimplifyMesh::QuadricSimplifyTextureCoord(&cube, 5, &uv); },
         "SimplifyMesh::QuadricSimplifyTextureCoord: cornerTexCoords size != 3 * triangleCount"},
        {[&] {
             return SubdivideMesh::InsertPointsOnMesh(&cube, {PointOnFace(12, Vector3())}, nullptr);
         },
         "SubdivideMesh::InsertPointsOnMesh: triangle id out of range"},
        {[&] { return ReconstructMesh::Reconstruct(&bare, 6, &cube); },
         "ReconstructMesh::Reconstruct: pointCloud should has normal first"},
        {[&] { return flat.ExtractPointCloud(&bare); },
         "SumPointCloud::ExtractPointCloud: resolution <= 0 || bboxMin above bboxMax"},
        {[&] { return OptimiseCurve::SmoothCurveOnMesh(&cube, 2, false, &pofs); },
         "OptimiseCurve::SmoothCurveOnMesh: curve size < 2"},
        {[&] {
             return Triangulation::ConstrainedDelaunay2D({Vector2(), Vector2(1, 0), Vector2(0, 1)},
                                                         {0, 3}, &cube);
         },
         "Triangulation::ConstrainedDelaunay2D: invalid constrainedEdges"},
        {[&] {
             return ConsolidatePointCloud::RemoveOverlap({&bare, nullptr}, 0.1, nullptr);
         },
         "ConsolidatePointCloud::RemoveOverlap: pointCloud is NULL: cloudId = 1"},
        {[&] {
             std::vector<std::vector<Color4>> images(1, std::vector<Color4>(4));
             return IntrinsicColor::TuneTextureImageColor(&cube, std::vector<Vector2>(36),
                                                          std::vector<int>(12, 1), {2, 2}, images);
         },
         "TuneTextureImageColor: triangleImageId out of range: triangleId = 0"},
        {[&] {
             double length = 0.0;
             return MeasureMesh::ComputeSectionExact(&cube, Vector3(), Vector3(0, kNaN, 1), false,
                                                     length, nullptr);
         },
         "MeasureMesh::ComputeSectionExact: invalid planeNormal"},
        {[&] {
             Vector3 apex, axis;
             double angle = 0.0;
             return DetectShape::FitCone({Vector3(), Vector3(), Vector3()},
                                         {Vector3(), Vector3(), Vector3()}, apex, axis, angle);
         },
         "DetectShape::FitCone: points.size() != normals.size() || points.size() < 4"},
        {[&] {
             const std::vector<Vector3> marks = {Vector3(), Vector3(kNaN, 0, 0), Vector3()};
             Matrix4x4 pose;
             return RegistratePointCloud::AlignPointCloudByMark(&bare, marks, &bare, marks, &pose);
         },
         "RegistratePointCloud::AlignPointCloudByMark: non-finite mark"},
        {[&] {
             std::vector<Matrix4x4> poses;
             return RegistratePointCloud::GlobalRegistrate({&bare, nullptr}, nullptr, 1, &poses);
         },
         "RegistratePointCloud::GlobalRegistrate: pointCloud is NULL: cloudId = 1"},
        {[&] {
             std::vector<Vector3> points;
             return RegistratePointCloud::NonRigidICP(&bare, &bare, nullptr, 0.0, &points);
         },
         "RegistratePointCloud::NonRigidICP: fromPointCount < 3 || refPointCount < 3"},
    };
    for (const auto& c : cases) {
        zoltest::LogCapture log;
        EXPECT_EQ(c.call(), RESULT_INVALID_INPUT) << c.line;
        ASSERT_FALSE(log.Lines().empty()) << c.line;
        EXPECT_EQ(log.Lines().front(), c.line);
    }
    EXPECT_EQ(cube.GetVertexCount(), 8);
}

TEST(MeshQueryToolDump, QueriesOnARealScanRecordTheMeshExactly) {
    zoltest::DumpDirScope dir;
    std::unique_ptr<TriMesh> bunny(Parser::ImportTriMesh(zoltest::DataPath("meshes/bunny.off")));
    ASSERT_NE(bunny, nullptr);
    MeshQueryTool tool;
    ASSERT_EQ(tool.Init(bunny.get()), RESULT_OK);
    const std::vector<Vector3> points = {Vector3(0.01, 0.1, 0.02), Vector3(-0.05, 0.15, 0.0)};
    const std::function<int()> queries[] = {
        [&] { return tool.QueryNearestTriangle(points[0], nullptr, nullptr); },
        [&] { return tool.QueryNearestTriangles(points, nullptr, nullptr); },
        [&] {
            return tool.RayIntersections(points[0], Vector3(0, 0, 1), 4, nullptr, nullptr, nullptr);
        },
    };
    for (const auto& query : queries) {
        int status = 0;
        const auto files = zoltest::RecordCall(query, &status);
        ASSERT_EQ(files.size(), 1u);
        EXPECT_EQ(status, RESULT_NOT_AVAILABLE);
        std::unique_ptr<DumpBase> record(CreateDumpMeshQueryTool());
        ASSERT_EQ(record->LoadDumpFile(files[0]), RESULT_OK);
        const TriMesh* loaded = record->GetTriMesh(0);
        ASSERT_NE(loaded, nullptr);
        ASSERT_EQ(loaded->GetVertexCount(), bunny->GetVertexCount());
        ASSERT_EQ(loaded->GetTriangleCount(), bunny->GetTriangleCount());
        for (int v = 0; v < bunny->GetVertexCount(); ++v) {
            const Vector3& a = loaded->GetVertexCoordRef(v);
            const Vector3& b = bunny->GetVertexCoordRef(v);
            ASSERT_TRUE(a.x == b.x && a.y == b.y && a.z == b.z) << v;
        }
        for (int t = 0; t < bunny->GetTriangleCount(); ++t) {
            for (int k = 0; k < 3; ++k) {
                ASSERT_EQ(loaded->GetTriangleVertexIdsRef(t)[k],
                          bunny->GetTriangleVertexIdsRef(t)[k]);
            }
        }
        zoltest::ExpectReplays(files[0], status, files[0]);
    }
}

TEST(ZolTool, ReplayRunsTheFileAndWritesItsMesh) {
    const std::filesystem::path tool = std::filesystem::path(ZOL_BINARY_DIR) / "tools" / "zol";
    if (!std::filesystem::exists(tool)) GTEST_SKIP() << "the zol tool is not built";
    zoltest::DumpDirScope dir;
    TriMesh cube = zoltest::MakeUnitCube();
    int status = 0;
    const auto files =
        zoltest::RecordCall([&] { return SimplifyMesh::QuadricSimplify(&cube, 6); }, &status);
    ASSERT_EQ(files.size(), 1u);
    const std::string out = zoltest::ScratchPath("replayed.off");
    const std::string command = tool.string() + " replay " + files[0] + " --out " + out + " > " +
                                zoltest::ScratchPath("stdout.txt");
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
    EXPECT_EQ(zoltest::ReadLines(zoltest::ScratchPath("stdout.txt")).front(),
              "ApiName 11: status -8");
    std::unique_ptr<TriMesh> written(Parser::ImportTriMesh(out));
    ASSERT_NE(written, nullptr);
    EXPECT_EQ(written->GetVertexCount(), 8);
    EXPECT_EQ(written->GetTriangleCount(), 12);
}
