// Replay of recorded calls: every operation the library declares without providing it
// answers -8 with its line, and its dump file loads and runs to the same status while
// writing the very same file again (so every field came back exactly). Also `zol replay`.
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

// A row calling Class::Method(args) or object.Method(args), named by the call's own
// spelling; NOTED adds a further line the replay must log.
// clang-format off
#define OP(method, ...) Operation{#method, [&] { return method(__VA_ARGS__); }}
#define MEMBER(object, Class, method, ...) \
    Operation{#Class "::" #method, [&] { return object.method(__VA_ARGS__); }}
#define NOTED(note, method, ...) Operation{#method, [&] { return method(__VA_ARGS__); }, note}
// A refused call and the first line it must log.
#define REFUSED(line, ...) {line, [&] { return __VA_ARGS__; }}
// clang-format on

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
    std::vector<Vector3> patchColors(8, Vector3(0.5, 0.25, 1));
    Vector3 point, axis;
    std::vector<std::vector<Vector3>> frameColors = {std::vector<Vector3>(8, Vector3(1, 0, 0)),
                                                     {Vector3(0, 0, 1)}};
    std::vector<std::vector<Color4>> images = {image8, {Color4(1, 2, 3, 4)}};
    double length = 0.0;
    const Operation operations[] = {
        OP(ConsolidateMesh::MakeTriMeshManifold, &cube),
        OP(ConsolidateMesh::ConsolidateGeometry, &cube, 0.1, 2.0),
        OP(ConsolidateMesh::RemoveGeometryNoise, &cube, 0.25),
        OP(FillMeshHole::FindHoles, &cube, &lists),
        OP(FillMeshHole::FillHoles, &cube, &seeds, FILL_MESH_HOLE_CURVATURE, &fields, &reals),
        OP(FillMeshHole::BridgeEdges, &cube, {0, 1, 6, 7}, 3),
        OP(FilterMesh::LaplaceSmooth, &cube, 0.3, 5, &seeds),
        OP(FilterMesh::EnhanceDetail, &cube, 1.5, 3),
        OP(UnfoldMesh::ConformalMap, &cube, &seeds, &pins, &uv),
        OP(UnfoldMesh::OptimizeIsometric, &cube, 4, &vertexUV),
        OP(UnfoldMesh::GenerateUVAtlas, &cube, 0.2, &uv),
        OP(UnfoldMesh::PackUVAtlas, &cube, 0.01, &cornersInOut),
        OP(SubdivideMesh::LoopSubdivide, &cube, 2),
        OP(SubdivideMesh::Densify, &cube, 0.3),
        OP(SubdivideMesh::InsertPointsOnMesh, &cube, facePoints, &ints),
        OP(SimplifyMesh::QuadricSimplify, &cube, 5),
        OP(SimplifyMesh::QuadricSimplifyTextureCoord, &cube, 5, &cornersInOut),
        OP(SimplifyMesh::RemoveVertices, &cube, seeds),
        OP(SplitMesh::SplitByLines, &cube, {{0, 1, 3, 2}, {4}}, &ints),
        OP(SplitMesh::InsertSplitLineByEdgePoints, &cube,
           {PointOnEdge(0, 1, 0.25), PointOnEdge(1, 3, 0.5)}, &ints),
        OP(SplitMesh::SplitByPlane, &cube, Plane3(Vector3(0, 0, 0.5), Vector3(0, 0, 1)), &out,
           &out),
        OP(SplitMesh::GenerateAtlasSplitLines, &cube, 3, &lists),
        OP(SplitMesh::InsertSplitLinesByFacePoints, &cube, {facePoints, {}}, &lists),
        OP(TextureImage::CreateByVertexColors, &cube, std::vector<Vector3>(8, Vector3(0.1, 0.2, 1)),
           corners, 16, 8, &image),
        OP(TextureImage::CreateByRefImages, &cube, corners,
           {std::vector<Color4>(4, Color4(9, 8, 7, 255))}, {2, 2}, vertexIds, 16, 16, &image),
        OP(OffsetMesh::UniformApproximateOffset, &cube, -0.05, &out),
        OP(SampleMesh::UniformSample, &cube, 100, &outCloud),
        OP(Triangulation::ConstrainedDelaunayOptimization, &cube, &seeds),
        OP(Triangulation::MutualTessellation, &cube, &other),
        OP(Triangulation::CentroidVoronoiOptimization, &cube, 3, nullptr),
        OP(Triangulation::ConstrainedDelaunay2D, {Vector2(0, 0), Vector2(1, 0), Vector2(0, 1)},
           {0, 2}, &out),
        OP(Remesh::UniformRemesh, &cube, 0.2, 3),
        MEMBER(deform, DeformMesh, Init, &cube, {0}, {7}),
        MEMBER(deform, DeformMesh, Deform, {Vector3(1, 1, 1.5)}, &cube),
        MEMBER(cage, DeformCage, Init, &other, &cube),
        MEMBER(cage, DeformCage, Deform, &other, &cube),
        OP(MeshGeodesic::ComputeDistance, &cube, seeds, &reals),
        OP(MeshGeodesic::ComputePath, &cube, facePoints[0], facePoints[1], &pofs),
        OP(OptimiseCurve::SmoothCurveOnMesh, &cube, 2, true, &curve),
        OP(OptimiseCurve::ApproximateOffset, &cube, facePoints, false, 0.1, &pofs),
        OP(OptimiseCurve::MakeBijective, &cube, true, &curve),
        OP(OptimiseCurve::ConnectFacePointsOnMesh, &cube, facePoints, false, &pofs),
        OP(OptimiseCurve::ConnectFacePointsByCuttingPlane, &cube, facePoints[0], facePoints[1],
           Vector3(0, 0, 1), &pofs),
        OP(OptimiseCurve::SmoothCurveCrossMesh, &cube, 2, false, &polyline),
        OP(OptimiseMapping::Interpolate, &cube, seeds, {Vector3(1, 0, 0), Vector3(0, 1e-300, 0)},
           &values),
        OP(OptimiseMapping::TransferToMesh, &cube, std::vector<Vector3>(8, Vector3(3, 2, 1)),
           &other, &values),
        OP(OptimiseMapping::ProjectToMesh, &cube, {Vector3(0.5, 0.5, 2)}, &pofs),
        OP(OptimiseMapping::FuseImageColorIds, &cube,
           std::vector<std::vector<ImageColorId>>(8, vertexIds), &colorIds),
        OP(OptimiseMapping::InterpolateFaceImageColorIds, &cube, vertexIds, 3, &colorIds),
        OP(DigitalRelief::CompressHeightField, {1, 2, 3, 4, 5, 6.5}, 3, 2, 0.5, &reals),
        OP(ReconstructMesh::Reconstruct, &cloud, 6, &out),
        OP(FitPointCloud::FitUniform, &cloud, 0.1, &outCloud),
        MEMBER(sum, SumPointCloud, UpdateSumFunction, &cloud, &pose),
        MEMBER(sum, SumPointCloud, ExtractPointCloud, &outCloud),
        MEMBER(sdf, SignedDistanceFunction, UpdateFunction, &cloud, Vector3(0, 0, 5)),
        MEMBER(sdf, SignedDistanceFunction, ExtractTriMesh, &out),
        OP(ConsolidateGrid::RemoveGridNoise, &grid, 3),
        OP(ConsolidateGrid::SmoothGrid, &grid, 1, 2),
        MEMBER(video, FuseDepthVideo, UpdateFrame, {1, 0, 1, 1}, 2, 2, {500, 500, 1, 1}, pose),
        MEMBER(video, FuseDepthVideo, ExtractPointCloud, &outCloud),
        OP(DeformPointList::Deform, &cloud, {0}, {Vector3(0, 0, 1)}, 1.0),
        OP(ConsolidatePointCloud::CalculateIsolation, &cloud, 6, &reals),
        OP(ConsolidatePointCloud::CalculateUniformity, &cloud, 6, &reals),
        OP(ConsolidatePointCloud::CalculateOutlier, &cloud, 6, &reals),
        OP(ConsolidatePointCloud::ConsolidateRawScanData, &cloud, 6, 1.2, nullptr),
        OP(ConsolidatePointCloud::RemoveOverlap, {&cloud, &grid}, 0.01, &lists),
        OP(SamplePointCloud::Simplify, &cloud, 4, &ints, nullptr),
        OP(MeasurePointCloud::ComputeOneSideDistance, &grid, &cloud, &reals),
        OP(IntrinsicColor::TuneMeshColorFromMultiPatch, &cube, {0, 0, 0, 0, 1, 1, 1, 1},
           patchColors),
        OP(IntrinsicColor::TuneColorFromMultiFrame, {&cloud, &grid}, frameColors,
           {Vector3(0, 0, 3), Vector3(3, 0, 0)}),
        OP(IntrinsicColor::TuneTextureImageByVertexColor, &cube, corners,
           std::vector<Vector3>(8, Vector3(0.1, 0.2, 0.3)), 4, 2, image8),
        OP(IntrinsicColor::TuneImageByTriangleColor, &cube, corners,
           std::vector<Vector3>(12, Vector3(0.3, 0.2, 0.1)), 2, 4, image8),
        OP(IntrinsicColor::TuneImageByPointColor, &cloud, std::vector<Vector3>(8, Vector3(1, 1, 0)),
           vertexUV, 8, 1, image8),
        OP(IntrinsicColor::TuneTextureImageColor, &cube, corners, std::vector<int>(12, 1),
           {4, 2, 1, 1}, images),
        OP(MeasureMesh::ComputeSectionExact, &cube, Vector3(0.5, 0.5, 0.5), Vector3(0, 0, 1), true,
           length, nullptr),
        OP(MeasureMesh::ComputeSectionApproximate, &cube, facePoints, length, &values),
        OP(MeasureMesh::ComputePrincipalCurvature, &cube, &reals, nullptr, nullptr, &values),
        OP(MeasureMesh::ComputeThickness, &cube, 0.75, &reals),
        OP(DetectShape::DetectPrimitive, &cloud, 0.01, 0.2, 5, &ints),
        OP(DetectShape::SelectPrimitive, &cube, 11, 0.01, &ints),
        OP(DetectShape::FitCylinder, polyline2, polyline2, point, axis, length),
        OP(DetectShape::FitCone, polyline2, polyline2, point, axis, length),
        OP(RegistratePointCloud::AlignPointCloudByMark, &cloud, marks, &grid, polyline2, &pose),
        OP(RegistratePointCloud::GlobalRegistrate, {&cloud, &grid}, &poses, 5, &mats),
        OP(RegistratePointCloud::NonRigidICP, &cloud, &cloud, &pose, 0.5, &values),
        NOTED("DumpNonRigidGlobalRegistrate::Run: no initialization",
              RegistratePointCloud::NonRigidGlobalRegistrate, {&grid, &cloud}, nullptr, 2.0, &mats,
              &nested),
        NOTED("DumpNonRigidGlobalRegistrate::Run: with initialization",
              RegistratePointCloud::NonRigidGlobalRegistrate, {&grid, &cloud}, &poses, 2.0, &mats,
              &nested),
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
    const std::vector<int> seed8 = {8};
    const std::vector<double> fields5(5);
    std::vector<std::vector<Color4>> images(1, std::vector<Color4>(4));
    const std::vector<Vector3> three(3), nanMarks = {Vector3(), Vector3(kNaN, 0, 0), Vector3()};
    Vector3 apex, axis;
    double length = 0.0;
    Matrix4x4 pose;
    std::vector<Matrix4x4> poses;
    std::vector<Vector3> points;
    const auto type3 = static_cast<FillMeshHoleType>(3);
    const struct {
        const char* line;
        std::function<int()> call;
    } cases[] = {
        REFUSED("FillMeshHole::FillHoles: triMesh == NULL",
                FillMeshHole::FillHoles(nullptr, nullptr, FILL_MESH_HOLE_FLAT, nullptr, nullptr)),
        REFUSED("FillMeshHole::FillHoles: boundarySeedId out of range",
                FillMeshHole::FillHoles(&cube, &seed8, FILL_MESH_HOLE_FLAT, nullptr, nullptr)),
        REFUSED("FillMeshHole::FillHoles: invalid type",
                FillMeshHole::FillHoles(&cube, nullptr, type3, nullptr, nullptr)),
        REFUSED("FillMeshHole::FillHoles: vertexFields size is not a multiple of vertexCount",
                FillMeshHole::FillHoles(&cube, nullptr, FILL_MESH_HOLE_FLAT, &fields5, nullptr)),
        REFUSED(
            "SimplifyMesh::QuadricSimplifyTextureCoord: cornerTexCoords size != 3 * triangleCount",
            SimplifyMesh::QuadricSimplifyTextureCoord(&cube, 5, &uv)),
        REFUSED("SubdivideMesh::InsertPointsOnMesh: triangle id out of range",
                SubdivideMesh::InsertPointsOnMesh(&cube, {PointOnFace(12, Vector3())}, nullptr)),
        REFUSED("ReconstructMesh::Reconstruct: pointCloud should has normal first",
                ReconstructMesh::Reconstruct(&bare, 6, &cube)),
        REFUSED("SumPointCloud::ExtractPointCloud: resolution <= 0 || bboxMin above bboxMax",
                flat.ExtractPointCloud(&bare)),
        REFUSED("OptimiseCurve::SmoothCurveOnMesh: curve size < 2",
                OptimiseCurve::SmoothCurveOnMesh(&cube, 2, false, &pofs)),
        REFUSED("Triangulation::ConstrainedDelaunay2D: invalid constrainedEdges",
                Triangulation::ConstrainedDelaunay2D({Vector2(), Vector2(1, 0), Vector2(0, 1)},
                                                     {0, 3}, &cube)),
        REFUSED("ConsolidatePointCloud::RemoveOverlap: pointCloud is NULL: cloudId = 1",
                ConsolidatePointCloud::RemoveOverlap({&bare, nullptr}, 0.1, nullptr)),
        REFUSED("TuneTextureImageColor: triangleImageId out of range: triangleId = 0",
                IntrinsicColor::TuneTextureImageColor(&cube, std::vector<Vector2>(36),
                                                      std::vector<int>(12, 1), {2, 2}, images)),
        REFUSED("MeasureMesh::ComputeSectionExact: invalid planeNormal",
                MeasureMesh::ComputeSectionExact(&cube, Vector3(), Vector3(0, kNaN, 1), false,
                                                 length, nullptr)),
        REFUSED("DetectShape::FitCone: points.size() != normals.size() || points.size() < 4",
                DetectShape::FitCone(three, three, apex, axis, length)),
        REFUSED(
            "RegistratePointCloud::AlignPointCloudByMark: non-finite mark",
            RegistratePointCloud::AlignPointCloudByMark(&bare, nanMarks, &bare, nanMarks, &pose)),
        REFUSED("RegistratePointCloud::GlobalRegistrate: pointCloud is NULL: cloudId = 1",
                RegistratePointCloud::GlobalRegistrate({&bare, nullptr}, nullptr, 1, &poses)),
        REFUSED("RegistratePointCloud::NonRigidICP: fromPointCount < 3 || refPointCount < 3",
                RegistratePointCloud::NonRigidICP(&bare, &bare, nullptr, 0.0, &points)),
    };
    for (const auto& c : cases) {
        zoltest::LogCapture log;
        EXPECT_EQ(c.call(), RESULT_INVALID_INPUT) << c.line;
        ASSERT_FALSE(log.Lines().empty()) << c.line;
        EXPECT_EQ(log.Lines().front(), c.line);
    }
    EXPECT_EQ(cube.GetVertexCount(), 8);
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
