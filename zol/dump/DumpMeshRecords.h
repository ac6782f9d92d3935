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
ZOL_DUMP_RECORD(MeshConsolidationMakeManifold, dumpfield::Mesh);

/// Records ConsolidateMesh::ConsolidateGeometry.
ZOL_DUMP_RECORD(MeshConsolidationGeometry,
                dumpfield::Mesh,
                dumpfield::Value<double>,
                dumpfield::Value<double>);

/// Records FillMeshHole::FindHoles.
ZOL_DUMP_RECORD(FindMeshHole, dumpfield::Mesh);

/// Records FilterMesh::LaplaceSmooth.
ZOL_DUMP_RECORD(MeshFilterLaplaceSmooth,
                dumpfield::Mesh,
                dumpfield::Value<double>,
                dumpfield::Value<int>,
                dumpfield::OptVec<int>);

/// Records FilterMesh::EnhanceDetail.
ZOL_DUMP_RECORD(MeshFilterEnhanceDetail,
                dumpfield::Mesh,
                dumpfield::Value<double>,
                dumpfield::Value<int>);

/// Records UnfoldMesh::PackUVAtlas.
ZOL_DUMP_RECORD(MeshUnfoldPackUVAtlas,
                dumpfield::Mesh,
                dumpfield::Value<double>,
                dumpfield::OptVec<Vector2>);

/// Records SubdivideMesh::LoopSubdivide.
ZOL_DUMP_RECORD(MeshSubdivisionLoop, dumpfield::Mesh, dumpfield::Value<int>);

/// Records SimplifyMesh::QuadricSimplify.
ZOL_DUMP_RECORD(MeshSimplificationQuadric, dumpfield::Mesh, dumpfield::Value<int>);

/// Records SimplifyMesh::QuadricSimplifyTextureCoord.
ZOL_DUMP_RECORD(MeshSimplificationTextureCoord,
                dumpfield::Mesh,
                dumpfield::Value<int>,
                dumpfield::OptVec<Vector2>);

/// Records ConsolidateMesh::RemoveGeometryNoise.
ZOL_DUMP_RECORD(MeshConsolidationRemoveGeometryNoise, dumpfield::Mesh, dumpfield::Value<double>);

/// Records SubdivideMesh::Densify.
ZOL_DUMP_RECORD(MeshSubdivisionDensify, dumpfield::Mesh, dumpfield::Value<double>);

/// Records UnfoldMesh::ConformalMap.
ZOL_DUMP_RECORD(MeshUnfoldConformal,
                dumpfield::Mesh,
                dumpfield::OptVec<int>,
                dumpfield::OptVec<Vector2>);

/// Records UnfoldMesh::OptimizeIsometric.
ZOL_DUMP_RECORD(MeshUnfoldOptimizeIsometric,
                dumpfield::Mesh,
                dumpfield::Value<int>,
                dumpfield::OptVec<Vector2>);

/// Records UnfoldMesh::GenerateUVAtlas.
ZOL_DUMP_RECORD(MeshUnfoldGenerateUVAtlas, dumpfield::Mesh, dumpfield::Value<double>);

/// Records SplitMesh::SplitByLines.
ZOL_DUMP_RECORD(MeshSplitByLines, dumpfield::Mesh, dumpfield::Nested<int>);

/// Records SplitMesh::InsertSplitLineByEdgePoints.
ZOL_DUMP_RECORD(MeshSplitInsertSplitLineByEdgePoints, dumpfield::Mesh, dumpfield::Vec<PointOnEdge>);

/// Records TextureImage::CreateByVertexColors.
ZOL_DUMP_RECORD(CreateTextureImageByVertexColors,
                dumpfield::Mesh,
                dumpfield::Vec<Vector3>,
                dumpfield::Vec<Vector2>,
                dumpfield::Value<int>,
                dumpfield::Value<int>);

/// Records TextureImage::CreateByRefImages.
ZOL_DUMP_RECORD(CreateTextureImageByRefImages,
                dumpfield::Mesh,
                dumpfield::Vec<Vector2>,
                dumpfield::Nested<Color4>,
                dumpfield::Vec<int>,
                dumpfield::Vec<ImageColorId>,
                dumpfield::Value<int>,
                dumpfield::Value<int>);

/// Records FillMeshHole::BridgeEdges.
ZOL_DUMP_RECORD(BridgeEdges, dumpfield::Mesh, dumpfield::Vec<int>, dumpfield::Value<int>);

/// Records SplitMesh::SplitByPlane.
ZOL_DUMP_RECORD(MeshSplitByPlane, dumpfield::Mesh, dumpfield::Value<Plane3>);

/// Records OffsetMesh::UniformApproximateOffset.
ZOL_DUMP_RECORD(OffsetMeshUniformApproximate, dumpfield::Mesh, dumpfield::Value<double>);

/// Records SplitMesh::GenerateAtlasSplitLines.
ZOL_DUMP_RECORD(MeshSplitGenerateAtlasSplitLines, dumpfield::Mesh, dumpfield::Value<int>);

/// Records SampleMesh::UniformSample.
ZOL_DUMP_RECORD(MeshSamplingUniform, dumpfield::Mesh, dumpfield::Value<int>);

/// Records Triangulation::ConstrainedDelaunayOptimization.
ZOL_DUMP_RECORD(TriangulationConstrainedDelaunayOptimization,
                dumpfield::Mesh,
                dumpfield::OptVec<int>);

/// Records SimplifyMesh::RemoveVertices.
ZOL_DUMP_RECORD(MeshSimplificationByRemovingVertex, dumpfield::Mesh, dumpfield::Vec<int>);

/// Records Remesh::UniformRemesh.
ZOL_DUMP_RECORD(RemeshUniform, dumpfield::Mesh, dumpfield::Value<double>, dumpfield::Value<int>);

/// Records Triangulation::MutualTessellation.
ZOL_DUMP_RECORD(TriangulationMutualTessellation, dumpfield::Mesh, dumpfield::Mesh);

/// Records Triangulation::CentroidVoronoiOptimization.
ZOL_DUMP_RECORD(TriangulationCentroidVoronoiOptimization,
                dumpfield::Mesh,
                dumpfield::Value<int>,
                dumpfield::OptVec<int>);

/// Records IntrinsicColor::TuneMeshColorFromMultiPatch: the mesh, the vertex patches and
/// the vertex colours.
ZOL_DUMP_RECORD(TuneMeshColorFromMultiPatch,
                dumpfield::Mesh,
                dumpfield::Vec<int>,
                dumpfield::Vec<Vector3>);

/// Records MeasureMesh::ComputePrincipalCurvature: the mesh.
ZOL_DUMP_RECORD(MeshMeasurePrincipalCurvature, dumpfield::Mesh);

/// Records MeasureMesh::ComputeThickness: the mesh and the thickness cap.
ZOL_DUMP_RECORD(MeshMeasureThickness, dumpfield::Mesh, dumpfield::Value<double>);

/// Records DeformMesh::Init.
ZOL_DUMP_RECORD(DeformMeshInit, dumpfield::Mesh, dumpfield::Vec<int>, dumpfield::Vec<int>);

/// Records DeformMesh::Deform.
ZOL_DUMP_RECORD(DeformMeshDeform, dumpfield::Vec<Vector3>, dumpfield::Mesh);

/// Records SplitMesh::InsertSplitLinesByFacePoints.
ZOL_DUMP_RECORD(MeshSplitInsertSplitLinesByFacePoints,
                dumpfield::Mesh,
                dumpfield::Nested<PointOnFace>);

/// Records SubdivideMesh::InsertPointsOnMesh.
ZOL_DUMP_RECORD(MeshSubdivisionInsertPointsOnMesh, dumpfield::Mesh, dumpfield::Vec<PointOnFace>);

/// Records FillMeshHole::FillHoles: the mesh, the seed ids, the fill type and the vertex
/// fields. Run applies the result to the loaded mesh (GetTriMesh(0)).
class ZOL_API DumpFillMeshHole final : public DumpRecord<DumpFillMeshHole,
                                                         dumpfield::Mesh,
                                                         dumpfield::OptVec<int>,
                                                         dumpfield::Value<int>,
                                                         dumpfield::OptVec<double>> {
public:
    /// \return the loaded boundary seed ids (empty when the call gave null).
    const std::vector<int>& GetBoundarySeedIds() const;
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
/// "_Mesh_Measure_Section_Pof_Exact_" (MeasureMesh::ComputeSectionExact). Run repeats the
/// call the record holds.
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
/// ("_Mesh_Measure_Section_Pof_Approximate_") (MeasureMesh::ComputeSectionApproximate). Run
/// repeats the call the record holds.
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
