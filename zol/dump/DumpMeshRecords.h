// The dump records of mesh operations (ApiName values below 100), one class per recorded
// API. Each declares its fields in the API's parameter order; Run calls the API again.
#pragma once

#include <vector>

#include <zol/core/Color4.h>
#include <zol/core/ITriMesh.h>
#include <zol/core/ImageColorId.h>
#include <zol/core/Plane3.h>
#include <zol/core/PointOnEdge.h>
#include <zol/core/PointOnFace.h>
#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>
#include <zol/dump/DumpRecord.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Records ConsolidateMesh::MakeTriMeshManifold.
class ZOL_API DumpMeshConsolidationMakeManifold final
    : public DumpRecord<DumpMeshConsolidationMakeManifold, dumpfield::Mesh> {
public:
    int Run() override;
};

/// Records ConsolidateMesh::ConsolidateGeometry.
class ZOL_API DumpMeshConsolidationGeometry final : public DumpRecord<DumpMeshConsolidationGeometry,
                                                                      dumpfield::Mesh,
                                                                      dumpfield::Value<double>,
                                                                      dumpfield::Value<double>> {
public:
    int Run() override;
};

/// Records FillMeshHole::FindHoles.
class ZOL_API DumpFindMeshHole final : public DumpRecord<DumpFindMeshHole, dumpfield::Mesh> {
public:
    int Run() override;
};

/// Records FilterMesh::LaplaceSmooth.
class ZOL_API DumpMeshFilterLaplaceSmooth final : public DumpRecord<DumpMeshFilterLaplaceSmooth,
                                                                    dumpfield::Mesh,
                                                                    dumpfield::Value<double>,
                                                                    dumpfield::Value<int>,
                                                                    dumpfield::OptVec<int>> {
public:
    int Run() override;
};

/// Records FilterMesh::EnhanceDetail.
class ZOL_API DumpMeshFilterEnhanceDetail final : public DumpRecord<DumpMeshFilterEnhanceDetail,
                                                                    dumpfield::Mesh,
                                                                    dumpfield::Value<double>,
                                                                    dumpfield::Value<int>> {
public:
    int Run() override;
};

/// Records UnfoldMesh::PackUVAtlas.
class ZOL_API DumpMeshUnfoldPackUVAtlas final : public DumpRecord<DumpMeshUnfoldPackUVAtlas,
                                                                  dumpfield::Mesh,
                                                                  dumpfield::Value<double>,
                                                                  dumpfield::OptVec<Vector2>> {
public:
    int Run() override;
};

/// Records SubdivideMesh::LoopSubdivide.
class ZOL_API DumpMeshSubdivisionLoop final
    : public DumpRecord<DumpMeshSubdivisionLoop, dumpfield::Mesh, dumpfield::Value<int>> {
public:
    int Run() override;
};

/// Records SimplifyMesh::QuadricSimplify.
class ZOL_API DumpMeshSimplificationQuadric final
    : public DumpRecord<DumpMeshSimplificationQuadric, dumpfield::Mesh, dumpfield::Value<int>> {
public:
    int Run() override;
};

/// Records SimplifyMesh::QuadricSimplifyTextureCoord.
class ZOL_API DumpMeshSimplificationTextureCoord final
    : public DumpRecord<DumpMeshSimplificationTextureCoord,
                        dumpfield::Mesh,
                        dumpfield::Value<int>,
                        dumpfield::OptVec<Vector2>> {
public:
    int Run() override;
};

/// Records ConsolidateMesh::RemoveGeometryNoise.
class ZOL_API DumpMeshConsolidationRemoveGeometryNoise final
    : public DumpRecord<DumpMeshConsolidationRemoveGeometryNoise,
                        dumpfield::Mesh,
                        dumpfield::Value<double>> {
public:
    int Run() override;
};

/// Records SubdivideMesh::Densify.
class ZOL_API DumpMeshSubdivisionDensify final
    : public DumpRecord<DumpMeshSubdivisionDensify, dumpfield::Mesh, dumpfield::Value<double>> {
public:
    int Run() override;
};

/// Records UnfoldMesh::ConformalMap.
class ZOL_API DumpMeshUnfoldConformal final : public DumpRecord<DumpMeshUnfoldConformal,
                                                                dumpfield::Mesh,
                                                                dumpfield::OptVec<int>,
                                                                dumpfield::OptVec<Vector2>> {
public:
    int Run() override;
};

/// Records UnfoldMesh::OptimizeIsometric.
class ZOL_API DumpMeshUnfoldOptimizeIsometric final
    : public DumpRecord<DumpMeshUnfoldOptimizeIsometric,
                        dumpfield::Mesh,
                        dumpfield::Value<int>,
                        dumpfield::OptVec<Vector2>> {
public:
    int Run() override;
};

/// Records UnfoldMesh::GenerateUVAtlas.
class ZOL_API DumpMeshUnfoldGenerateUVAtlas final
    : public DumpRecord<DumpMeshUnfoldGenerateUVAtlas, dumpfield::Mesh, dumpfield::Value<double>> {
public:
    int Run() override;
};

/// Records SplitMesh::SplitByLines.
class ZOL_API DumpMeshSplitByLines final
    : public DumpRecord<DumpMeshSplitByLines, dumpfield::Mesh, dumpfield::Nested<int>> {
public:
    int Run() override;
};

/// Records SplitMesh::InsertSplitLineByEdgePoints.
class ZOL_API DumpMeshSplitInsertSplitLineByEdgePoints final
    : public DumpRecord<DumpMeshSplitInsertSplitLineByEdgePoints,
                        dumpfield::Mesh,
                        dumpfield::Vec<PointOnEdge>> {
public:
    int Run() override;
};

/// Records TextureImage::CreateByVertexColors.
class ZOL_API DumpCreateTextureImageByVertexColors final
    : public DumpRecord<DumpCreateTextureImageByVertexColors,
                        dumpfield::Mesh,
                        dumpfield::Vec<Vector3>,
                        dumpfield::Vec<Vector2>,
                        dumpfield::Value<int>,
                        dumpfield::Value<int>> {
public:
    int Run() override;
};

/// Records TextureImage::CreateByRefImages.
class ZOL_API DumpCreateTextureImageByRefImages final
    : public DumpRecord<DumpCreateTextureImageByRefImages,
                        dumpfield::Mesh,
                        dumpfield::Vec<Vector2>,
                        dumpfield::Nested<Color4>,
                        dumpfield::Vec<int>,
                        dumpfield::Vec<ImageColorId>,
                        dumpfield::Value<int>,
                        dumpfield::Value<int>> {
public:
    int Run() override;
};

/// Records FillMeshHole::BridgeEdges.
class ZOL_API DumpBridgeEdges final : public DumpRecord<DumpBridgeEdges,
                                                        dumpfield::Mesh,
                                                        dumpfield::Vec<int>,
                                                        dumpfield::Value<int>> {
public:
    int Run() override;
};

/// Records SplitMesh::SplitByPlane.
class ZOL_API DumpMeshSplitByPlane final
    : public DumpRecord<DumpMeshSplitByPlane, dumpfield::Mesh, dumpfield::Value<Plane3>> {
public:
    int Run() override;
};

/// Records OffsetMesh::UniformApproximateOffset.
class ZOL_API DumpOffsetMeshUniformApproximate final
    : public DumpRecord<DumpOffsetMeshUniformApproximate,
                        dumpfield::Mesh,
                        dumpfield::Value<double>> {
public:
    int Run() override;
};

/// Records SplitMesh::GenerateAtlasSplitLines.
class ZOL_API DumpMeshSplitGenerateAtlasSplitLines final
    : public DumpRecord<DumpMeshSplitGenerateAtlasSplitLines,
                        dumpfield::Mesh,
                        dumpfield::Value<int>> {
public:
    int Run() override;
};

/// Records SampleMesh::UniformSample.
class ZOL_API DumpMeshSamplingUniform final
    : public DumpRecord<DumpMeshSamplingUniform, dumpfield::Mesh, dumpfield::Value<int>> {
public:
    int Run() override;
};

/// Records Triangulation::ConstrainedDelaunayOptimization.
class ZOL_API DumpTriangulationConstrainedDelaunayOptimization final
    : public DumpRecord<DumpTriangulationConstrainedDelaunayOptimization,
                        dumpfield::Mesh,
                        dumpfield::OptVec<int>> {
public:
    int Run() override;
};

/// Records SimplifyMesh::RemoveVertices.
class ZOL_API DumpMeshSimplificationByRemovingVertex final
    : public DumpRecord<DumpMeshSimplificationByRemovingVertex,
                        dumpfield::Mesh,
                        dumpfield::Vec<int>> {
public:
    int Run() override;
};

/// Records Remesh::UniformRemesh.
class ZOL_API DumpRemeshUniform final : public DumpRecord<DumpRemeshUniform,
                                                          dumpfield::Mesh,
                                                          dumpfield::Value<double>,
                                                          dumpfield::Value<int>> {
public:
    int Run() override;
};

/// Records Triangulation::MutualTessellation.
class ZOL_API DumpTriangulationMutualTessellation final
    : public DumpRecord<DumpTriangulationMutualTessellation, dumpfield::Mesh, dumpfield::Mesh> {
public:
    int Run() override;
};

/// Records Triangulation::CentroidVoronoiOptimization.
class ZOL_API DumpTriangulationCentroidVoronoiOptimization final
    : public DumpRecord<DumpTriangulationCentroidVoronoiOptimization,
                        dumpfield::Mesh,
                        dumpfield::Value<int>,
                        dumpfield::OptVec<int>> {
public:
    int Run() override;
};

/// Records IntrinsicColor multi-patch mesh colour tuning; the operation is not declared yet, so the
/// record holds no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpTuneMeshColorFromMultiPatch final
    : public DumpRecord<DumpTuneMeshColorFromMultiPatch> {
public:
    int Run() override;
};

/// Records MeasureMesh principal curvature; the operation is not declared yet, so the record holds
/// no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpMeshMeasurePrincipalCurvature final
    : public DumpRecord<DumpMeshMeasurePrincipalCurvature> {
public:
    int Run() override;
};

/// Records MeasureMesh thickness; the operation is not declared yet, so the record holds
/// no fields and Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpMeshMeasureThickness final : public DumpRecord<DumpMeshMeasureThickness> {
public:
    int Run() override;
};

/// Records DeformMesh::Init.
class ZOL_API DumpDeformMeshInit final : public DumpRecord<DumpDeformMeshInit,
                                                           dumpfield::Mesh,
                                                           dumpfield::Vec<int>,
                                                           dumpfield::Vec<int>> {
public:
    int Run() override;
};

/// Records DeformMesh::Deform.
class ZOL_API DumpDeformMeshDeform final
    : public DumpRecord<DumpDeformMeshDeform, dumpfield::Vec<Vector3>, dumpfield::Mesh> {
public:
    int Run() override;
};

/// Records SplitMesh::InsertSplitLinesByFacePoints.
class ZOL_API DumpMeshSplitInsertSplitLinesByFacePoints final
    : public DumpRecord<DumpMeshSplitInsertSplitLinesByFacePoints,
                        dumpfield::Mesh,
                        dumpfield::Nested<PointOnFace>> {
public:
    int Run() override;
};

/// Records SubdivideMesh::InsertPointsOnMesh.
class ZOL_API DumpMeshSubdivisionInsertPointsOnMesh final
    : public DumpRecord<DumpMeshSubdivisionInsertPointsOnMesh,
                        dumpfield::Mesh,
                        dumpfield::Vec<PointOnFace>> {
public:
    int Run() override;
};

/// Records FillMeshHole::FillHoles: the mesh, the seed ids, the fill type and the vertex
/// fields. Run applies the result to the loaded mesh (GetTriMesh(0)).
class ZOL_API DumpFillMeshHole final : public DumpRecord<DumpFillMeshHole,
                                                         dumpfield::Mesh,
                                                         dumpfield::OptVec<int>,
                                                         dumpfield::Value<int>,
                                                         dumpfield::OptVec<double>> {
public:
    /// \return the loaded boundary seed ids (empty when the call gave null).
    const std::vector<int>& GetBoundarySeedIds() const { return Field<1>(); }
    int Run() override;
};

/// Records the queries of MeshQueryTool: the tool's reference mesh, the kind of query, its
/// points and the hit limit. Nearest-triangle queries write under "_Point_To_Mesh_Distance_",
/// ray queries under "_Ray_Intersection_". Run initialises a tool on the mesh and repeats
/// the query.
class ZOL_API DumpMeshQueryTool final : public DumpRecord<DumpMeshQueryTool,
                                                          dumpfield::Mesh,
                                                          dumpfield::Value<int>,
                                                          dumpfield::Vec<Vector3>,
                                                          dumpfield::Value<int>> {
public:
    /// The query kinds, as written in the file.
    enum QueryKind : int { QUERY_NEAREST = 0, QUERY_NEAREST_LIST = 1, QUERY_RAY = 2 };
    /// Records QueryNearestTriangle.
    void DumpApiInfo(const ITriMesh* referenceMesh, const Vector3& point);
    /// Records QueryNearestTriangles.
    void DumpApiInfo(const ITriMesh* referenceMesh, const std::vector<Vector3>& points);
    /// Records RayIntersections.
    void DumpApiInfo(const ITriMesh* referenceMesh,
                     const Vector3& origin,
                     const Vector3& direction,
                     int maxHitCount);
    int Run() override;
};

/// Records the exact section measurements of MeasureMesh: by a plane (value 12), by a
/// plane measured along the section's convex hull (17), or through points on faces (41).
/// Plane sections write under "_Mesh_Measure_Section_Exact_", face-point sections under
/// "_Mesh_Measure_Section_Pof_Exact_". The operations are not declared yet; until then Run
/// answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpMeshMeasureSectionExact final : public DumpRecord<DumpMeshMeasureSectionExact,
                                                                    dumpfield::Mesh,
                                                                    dumpfield::Value<Vector3>,
                                                                    dumpfield::Value<Vector3>,
                                                                    dumpfield::Value<bool>,
                                                                    dumpfield::Vec<PointOnFace>> {
public:
    /// Records a plane section.
    void DumpApiInfo(const ITriMesh* triMesh,
                     const Vector3& planePoint,
                     const Vector3& planeNormal,
                     bool convexHull);
    /// Records a section through points on faces.
    void DumpApiInfo(const ITriMesh* triMesh, const std::vector<PointOnFace>& sectionPoints);
    /// \return 41 when the record holds section points, otherwise 17 when it measures the
    ///         convex hull, otherwise 12.
    ApiName GetApiName() const override;
    /// Accepts 12, 17 and 41.
    static bool AcceptsApiName(int value);
    int Run() override;
};

/// Records the approximate section measurements of MeasureMesh (value 40), by a plane
/// ("_Mesh_Measure_Section_Approximate_") or through points on faces
/// ("_Mesh_Measure_Section_Pof_Approximate_"). The operations are not declared yet; until
/// then Run answers RESULT_NOT_AVAILABLE.
class ZOL_API DumpMeshMeasureSectionApproximate final
    : public DumpRecord<DumpMeshMeasureSectionApproximate,
                        dumpfield::Mesh,
                        dumpfield::Value<Vector3>,
                        dumpfield::Value<Vector3>,
                        dumpfield::Value<bool>,
                        dumpfield::Vec<PointOnFace>> {
public:
    /// Records a plane section.
    void DumpApiInfo(const ITriMesh* triMesh,
                     const Vector3& planePoint,
                     const Vector3& planeNormal,
                     bool convexHull);
    /// Records a section through points on faces.
    void DumpApiInfo(const ITriMesh* triMesh, const std::vector<PointOnFace>& sectionPoints);
    int Run() override;
};

}  // namespace ZOL
