// Run of the mesh dump records: each calls its API again with the loaded members, creating
// the output containers the API needs, and logs the outcome under the record's name.
#include <zol/dump/DumpMeshRecords.h>

#include <zol/mesh/ConsolidateMesh.h>
#include <zol/mesh/DeformMesh.h>
#include <zol/mesh/FillMeshHole.h>
#include <zol/mesh/FilterMesh.h>
#include <zol/mesh/MeasureMesh.h>
#include <zol/mesh/MeshQueryTool.h>
#include <zol/mesh/OffsetMesh.h>
#include <zol/mesh/Remesh.h>
#include <zol/mesh/SampleMesh.h>
#include <zol/mesh/SimplifyMesh.h>
#include <zol/mesh/SplitMesh.h>
#include <zol/mesh/SubdivideMesh.h>
#include <zol/mesh/TextureImage.h>
#include <zol/mesh/Triangulation.h>
#include <zol/mesh/UnfoldMesh.h>
#include <zol/pointcloud/IntrinsicColor.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

int DumpMeshConsolidationMakeManifold::Run() {
    return Finish(ConsolidateMesh::MakeTriMeshManifold(Field<0>().get()));
}

int DumpMeshConsolidationGeometry::Run() {
    return Finish(ConsolidateMesh::ConsolidateGeometry(Field<0>().get(), Field<1>(), Field<2>()));
}

int DumpFindMeshHole::Run() {
    std::vector<std::vector<int>> holes;
    return Finish(FillMeshHole::FindHoles(Field<0>().get(), &holes));
}

const std::vector<int>& DumpFillMeshHole::GetBoundarySeedIds() const {
    static const std::vector<int> kNone;
    return Field<1>() ? *Field<1>() : kNone;
}

int DumpFillMeshHole::Run() {
    std::vector<double> outputFields;
    const int status = FillMeshHole::FillHoles(Field<0>().get(), OptionalField<1>(),
                                               static_cast<FillMeshHoleType>(Field<2>()),
                                               OptionalField<3>(), &outputFields);
    // This record has always logged under this spelling; hosts grep for it.
    return LogRunResult("DumpFillHoleMesh", status);
}

int DumpMeshFilterLaplaceSmooth::Run() {
    return Finish(
        FilterMesh::LaplaceSmooth(Field<0>().get(), Field<1>(), Field<2>(), OptionalField<3>()));
}

int DumpMeshFilterEnhanceDetail::Run() {
    return Finish(FilterMesh::EnhanceDetail(Field<0>().get(), Field<1>(), Field<2>()));
}

int DumpMeshUnfoldPackUVAtlas::Run() {
    return Finish(UnfoldMesh::PackUVAtlas(Field<0>().get(), Field<1>(), OptionalField<2>()));
}

int DumpMeshSubdivisionLoop::Run() {
    return Finish(SubdivideMesh::LoopSubdivide(Field<0>().get(), Field<1>()));
}

int DumpMeshSimplificationQuadric::Run() {
    return Finish(SimplifyMesh::QuadricSimplify(Field<0>().get(), Field<1>()));
}

int DumpMeshSimplificationTextureCoord::Run() {
    return Finish(SimplifyMesh::QuadricSimplifyTextureCoord(Field<0>().get(), Field<1>(),
                                                            OptionalField<2>()));
}

int DumpMeshConsolidationRemoveGeometryNoise::Run() {
    return Finish(ConsolidateMesh::RemoveGeometryNoise(Field<0>().get(), Field<1>()));
}

int DumpMeshSubdivisionDensify::Run() {
    return Finish(SubdivideMesh::Densify(Field<0>().get(), Field<1>()));
}

int DumpMeshUnfoldConformal::Run() {
    std::vector<Vector2> texCoords;
    return Finish(UnfoldMesh::ConformalMap(Field<0>().get(), OptionalField<1>(), OptionalField<2>(),
                                           &texCoords));
}

int DumpMeshUnfoldOptimizeIsometric::Run() {
    return Finish(UnfoldMesh::OptimizeIsometric(Field<0>().get(), Field<1>(), OptionalField<2>()));
}

int DumpMeshUnfoldGenerateUVAtlas::Run() {
    std::vector<Vector2> texCoords;
    return Finish(UnfoldMesh::GenerateUVAtlas(Field<0>().get(), Field<1>(), &texCoords));
}

int DumpMeshSplitByLines::Run() {
    std::vector<int> parts;
    return Finish(SplitMesh::SplitByLines(Field<0>().get(), Field<1>(), &parts));
}

int DumpMeshSplitInsertSplitLineByEdgePoints::Run() {
    std::vector<int> lineVertexIds;
    return Finish(
        SplitMesh::InsertSplitLineByEdgePoints(Field<0>().get(), Field<1>(), &lineVertexIds));
}

int DumpCreateTextureImageByVertexColors::Run() {
    std::vector<Color4> image;
    return Finish(TextureImage::CreateByVertexColors(Field<0>().get(), Field<1>(), Field<2>(),
                                                     Field<3>(), Field<4>(), &image));
}

int DumpCreateTextureImageByRefImages::Run() {
    std::vector<Color4> image;
    return Finish(TextureImage::CreateByRefImages(Field<0>().get(), Field<1>(), Field<2>(),
                                                  Field<3>(), Field<4>(), Field<5>(), Field<6>(),
                                                  &image));
}

int DumpBridgeEdges::Run() {
    return Finish(FillMeshHole::BridgeEdges(Field<0>().get(), Field<1>(), Field<2>()));
}

int DumpMeshSplitByPlane::Run() {
    TriMesh* positive = AddResultMesh();
    TriMesh* negative = AddResultMesh();
    return Finish(SplitMesh::SplitByPlane(Field<0>().get(), Field<1>(), positive, negative));
}

int DumpOffsetMeshUniformApproximate::Run() {
    TriMesh* offset = AddResultMesh();
    return Finish(OffsetMesh::UniformApproximateOffset(Field<0>().get(), Field<1>(), offset));
}

int DumpMeshSplitGenerateAtlasSplitLines::Run() {
    std::vector<std::vector<int>> lines;
    return Finish(SplitMesh::GenerateAtlasSplitLines(Field<0>().get(), Field<1>(), &lines));
}

int DumpMeshSamplingUniform::Run() {
    PointCloud* samples = AddResultCloud();
    return Finish(SampleMesh::UniformSample(Field<0>().get(), Field<1>(), samples));
}

int DumpTriangulationConstrainedDelaunayOptimization::Run() {
    return Finish(
        Triangulation::ConstrainedDelaunayOptimization(Field<0>().get(), OptionalField<1>()));
}

int DumpMeshSimplificationByRemovingVertex::Run() {
    return Finish(SimplifyMesh::RemoveVertices(Field<0>().get(), Field<1>()));
}

int DumpRemeshUniform::Run() {
    return Finish(Remesh::UniformRemesh(Field<0>().get(), Field<1>(), Field<2>()));
}

int DumpTriangulationMutualTessellation::Run() {
    return Finish(Triangulation::MutualTessellation(Field<0>().get(), Field<1>().get()));
}

int DumpTriangulationCentroidVoronoiOptimization::Run() {
    return Finish(Triangulation::CentroidVoronoiOptimization(Field<0>().get(), Field<1>(),
                                                             OptionalField<2>()));
}

int DumpTuneMeshColorFromMultiPatch::Run() {
    return Finish(
        IntrinsicColor::TuneMeshColorFromMultiPatch(Field<0>().get(), Field<1>(), Field<2>()));
}

int DumpMeshMeasurePrincipalCurvature::Run() {
    std::vector<double> minCurvature, maxCurvature;
    std::vector<Vector3> minDirections, maxDirections;
    return Finish(MeasureMesh::ComputePrincipalCurvature(
        Field<0>().get(), &minCurvature, &maxCurvature, &minDirections, &maxDirections));
}

int DumpMeshMeasureThickness::Run() {
    std::vector<double> thickness;
    return Finish(MeasureMesh::ComputeThickness(Field<0>().get(), Field<1>(), &thickness));
}

int DumpDeformMeshInit::Run() {
    DeformMesh deform;
    return Finish(deform.Init(Field<0>().get(), Field<1>(), Field<2>()));
}

int DumpDeformMeshDeform::Run() {
    DeformMesh deform;
    return Finish(deform.Deform(Field<0>(), Field<1>().get()));
}

int DumpMeshSplitInsertSplitLinesByFacePoints::Run() {
    std::vector<std::vector<int>> lineVertexIds;
    return Finish(
        SplitMesh::InsertSplitLinesByFacePoints(Field<0>().get(), Field<1>(), &lineVertexIds));
}

int DumpMeshSubdivisionInsertPointsOnMesh::Run() {
    std::vector<int> vertexIds;
    return Finish(SubdivideMesh::InsertPointsOnMesh(Field<0>().get(), Field<1>(), &vertexIds));
}

// ---- The query tool: two tags over one layout ------------------------------------------

void DumpMeshQueryTool::DumpApiInfo(const ITriMesh* referenceMesh, const Vector3& point) {
    WriteDumpFile("_Point_To_Mesh_Distance_", API_MeshQueryTool, referenceMesh, QUERY_NEAREST,
                  std::vector<Vector3>{point}, 0);
}

void DumpMeshQueryTool::DumpApiInfo(const ITriMesh* referenceMesh,
                                    const std::vector<Vector3>& points) {
    WriteDumpFile("_Point_To_Mesh_Distance_", API_MeshQueryTool, referenceMesh, QUERY_NEAREST_LIST,
                  points, 0);
}

void DumpMeshQueryTool::DumpApiInfo(const ITriMesh* referenceMesh,
                                    const Vector3& origin,
                                    const Vector3& direction,
                                    int maxHitCount) {
    WriteDumpFile("_Ray_Intersection_", API_MeshQueryTool, referenceMesh, QUERY_RAY,
                  std::vector<Vector3>{origin, direction}, maxHitCount);
}

int DumpMeshQueryTool::Run() {
    MeshQueryTool tool;
    int status = tool.Init(Field<0>().get());
    if (status != RESULT_OK) return Finish(status);
    const std::vector<Vector3>& points = Field<2>();
    const Vector3 first = points.empty() ? Vector3() : points[0];
    const Vector3 second = points.size() < 2 ? Vector3() : points[1];
    switch (Field<1>()) {
        case QUERY_NEAREST: {
            PointOnFace nearest;
            double distance = 0.0;
            status = tool.QueryNearestTriangle(first, &nearest, &distance);
            break;
        }
        case QUERY_NEAREST_LIST: {
            std::vector<PointOnFace> nearest;
            std::vector<double> distances;
            status = tool.QueryNearestTriangles(points, &nearest, &distances);
            break;
        }
        case QUERY_RAY: {
            std::vector<PointOnFace> hits;
            std::vector<double> distances;
            std::vector<Vector3> positions;
            status =
                tool.RayIntersections(first, second, Field<3>(), &hits, &distances, &positions);
            break;
        }
        default:
            status = LogFailure(RESULT_INVALID_INPUT, "DumpMeshQueryTool::Run: unknown query kind");
    }
    return Finish(status);
}

// ---- Section measurements: several values and tags over one layout ---------------------

void DumpMeshMeasureSectionExact::DumpApiInfo(const ITriMesh* triMesh,
                                              const Vector3& planePoint,
                                              const Vector3& planeNormal,
                                              bool convexHull) {
    WriteDumpFile("_Mesh_Measure_Section_Exact_",
                  convexHull ? API_MeshMeasureSectionExactConvexHull : API_MeshMeasureSectionExact,
                  triMesh, planePoint, planeNormal, convexHull, std::vector<PointOnFace>());
}

void DumpMeshMeasureSectionExact::DumpApiInfo(const ITriMesh* triMesh,
                                              const std::vector<PointOnFace>& sectionPoints) {
    WriteDumpFile(
        "_Mesh_Measure_Section_Pof_Exact_",
        sectionPoints.empty() ? API_MeshMeasureSectionExact : API_MeshMeasureSectionExactFacePoints,
        triMesh, Vector3(), Vector3(), false, sectionPoints);
}

ApiName DumpMeshMeasureSectionExact::GetApiName() const {
    if (!Field<4>().empty()) return API_MeshMeasureSectionExactFacePoints;
    return Field<3>() ? API_MeshMeasureSectionExactConvexHull : API_MeshMeasureSectionExact;
}

bool DumpMeshMeasureSectionExact::AcceptsApiName(int value) {
    return value == API_MeshMeasureSectionExact || value == API_MeshMeasureSectionExactConvexHull ||
           value == API_MeshMeasureSectionExactFacePoints;
}

// A file of section points replays the face-point form, any other the plane form.
int DumpMeshMeasureSectionExact::Run() {
    double length = 0.0;
    std::vector<Vector3> curve;
    if (!Field<4>().empty()) {
        return Finish(
            MeasureMesh::ComputeSectionExact(Field<0>().get(), Field<4>(), length, &curve));
    }
    return Finish(MeasureMesh::ComputeSectionExact(Field<0>().get(), Field<1>(), Field<2>(),
                                                   Field<3>(), length, &curve));
}

void DumpMeshMeasureSectionApproximate::DumpApiInfo(const ITriMesh* triMesh,
                                                    const Vector3& planePoint,
                                                    const Vector3& planeNormal,
                                                    bool convexHull) {
    WriteDumpFile("_Mesh_Measure_Section_Approximate_", API_MeshMeasureSectionApproximate, triMesh,
                  planePoint, planeNormal, convexHull, std::vector<PointOnFace>());
}

void DumpMeshMeasureSectionApproximate::DumpApiInfo(const ITriMesh* triMesh,
                                                    const std::vector<PointOnFace>& sectionPoints) {
    WriteDumpFile("_Mesh_Measure_Section_Pof_Approximate_", API_MeshMeasureSectionApproximate,
                  triMesh, Vector3(), Vector3(), false, sectionPoints);
}

int DumpMeshMeasureSectionApproximate::Run() {
    double length = 0.0;
    std::vector<Vector3> curve;
    if (!Field<4>().empty()) {
        return Finish(
            MeasureMesh::ComputeSectionApproximate(Field<0>().get(), Field<4>(), length, &curve));
    }
    return Finish(MeasureMesh::ComputeSectionApproximate(Field<0>().get(), Field<1>(), Field<2>(),
                                                         Field<3>(), length, &curve));
}

}  // namespace ZOL
