// The one list of exported operations that this library declares but does not provide.
// Each answers RESULT_NOT_AVAILABLE after its progress reset, dump hook and argument
// checks; implementing one means deleting its row here and replacing its body.
#pragma once

// X(Class, Member): one row per operation (overloads share a row).
#define ZOL_NOT_AVAILABLE_TABLE(X)                    \
    X(ConsolidateMesh, MakeTriMeshManifold)           \
    X(ConsolidateMesh, ConsolidateGeometry)           \
    X(ConsolidateMesh, RemoveGeometryNoise)           \
    X(FillMeshHole, FindHoles)                        \
    X(FillMeshHole, FillHoles)                        \
    X(FillMeshHole, BridgeEdges)                      \
    X(FilterMesh, LaplaceSmooth)                      \
    X(FilterMesh, EnhanceDetail)                      \
    X(UnfoldMesh, ConformalMap)                       \
    X(UnfoldMesh, OptimizeIsometric)                  \
    X(UnfoldMesh, GenerateUVAtlas)                    \
    X(UnfoldMesh, PackUVAtlas)                        \
    X(SubdivideMesh, LoopSubdivide)                   \
    X(SubdivideMesh, Densify)                         \
    X(SubdivideMesh, InsertPointsOnMesh)              \
    X(SimplifyMesh, QuadricSimplify)                  \
    X(SimplifyMesh, QuadricSimplifyTextureCoord)      \
    X(SimplifyMesh, RemoveVertices)                   \
    X(SplitMesh, SplitByLines)                        \
    X(SplitMesh, InsertSplitLineByEdgePoints)         \
    X(SplitMesh, SplitByPlane)                        \
    X(SplitMesh, GenerateAtlasSplitLines)             \
    X(SplitMesh, InsertSplitLinesByFacePoints)        \
    X(TextureImage, CreateByVertexColors)             \
    X(TextureImage, CreateByRefImages)                \
    X(OffsetMesh, UniformApproximateOffset)           \
    X(SampleMesh, UniformSample)                      \
    X(Triangulation, ConstrainedDelaunayOptimization) \
    X(Triangulation, MutualTessellation)              \
    X(Triangulation, CentroidVoronoiOptimization)     \
    X(Triangulation, ConstrainedDelaunay2D)           \
    X(Remesh, UniformRemesh)                          \
    X(DeformMesh, Init)                               \
    X(DeformMesh, Deform)                             \
    X(DeformCage, Init)                               \
    X(DeformCage, Deform)                             \
    X(MeshGeodesic, ComputeDistance)                  \
    X(MeshGeodesic, ComputePath)                      \
    X(OptimiseCurve, SmoothCurveOnMesh)               \
    X(OptimiseCurve, ApproximateOffset)               \
    X(OptimiseCurve, MakeBijective)                   \
    X(OptimiseCurve, ConnectFacePointsOnMesh)         \
    X(OptimiseCurve, ConnectFacePointsByCuttingPlane) \
    X(OptimiseCurve, SmoothCurveCrossMesh)            \
    X(OptimiseMapping, Interpolate)                   \
    X(OptimiseMapping, TransferToMesh)                \
    X(OptimiseMapping, ProjectToMesh)                 \
    X(OptimiseMapping, FuseImageColorIds)             \
    X(OptimiseMapping, InterpolateFaceImageColorIds)  \
    X(DigitalRelief, CompressHeightField)             \
    X(MeshQueryTool, QueryNearestTriangle)            \
    X(MeshQueryTool, QueryNearestTriangles)           \
    X(MeshQueryTool, RayIntersections)                \
    X(ReconstructMesh, Reconstruct)                   \
    X(FitPointCloud, FitUniform)                      \
    X(SumPointCloud, UpdateSumFunction)               \
    X(SumPointCloud, ExtractPointCloud)               \
    X(SignedDistanceFunction, UpdateFunction)         \
    X(SignedDistanceFunction, ExtractTriMesh)         \
    X(ConsolidateGrid, RemoveGridNoise)               \
    X(ConsolidateGrid, SmoothGrid)                    \
    X(FuseDepthVideo, UpdateFrame)                    \
    X(FuseDepthVideo, ExtractPointCloud)              \
    X(DeformPointList, Deform)                        \
    X(ConsolidatePointCloud, CalculateIsolation)      \
    X(ConsolidatePointCloud, CalculateUniformity)     \
    X(ConsolidatePointCloud, CalculateOutlier)        \
    X(ConsolidatePointCloud, ConsolidateRawScanData)  \
    X(ConsolidatePointCloud, RemoveOverlap)           \
    X(SamplePointCloud, Simplify)                     \
    X(MeasurePointCloud, ComputeOneSideDistance)      \
    X(IntrinsicColor, TuneMeshColorFromMultiPatch)    \
    X(IntrinsicColor, TuneColorFromMultiFrame)        \
    X(IntrinsicColor, TuneTextureImageByVertexColor)  \
    X(IntrinsicColor, TuneImageByTriangleColor)       \
    X(IntrinsicColor, TuneImageByPointColor)          \
    X(IntrinsicColor, TuneTextureImageColor)          \
    X(MeasureMesh, ComputeSectionExact)               \
    X(MeasureMesh, ComputeSectionApproximate)         \
    X(MeasureMesh, ComputePrincipalCurvature)         \
    X(MeasureMesh, ComputeThickness)                  \
    X(DetectShape, DetectPrimitive)                   \
    X(DetectShape, SelectPrimitive)                   \
    X(DetectShape, FitCylinder)                       \
    X(DetectShape, FitCone)                           \
    X(RegistratePointCloud, AlignPointCloudByMark)    \
    X(RegistratePointCloud, GlobalRegistrate)         \
    X(RegistratePointCloud, NonRigidICP)              \
    X(RegistratePointCloud, NonRigidGlobalRegistrate)

namespace ZOL {

/// One enumerator per row: Unavailable::Class_Member.
enum class Unavailable : int {
#define ZOL_NOT_AVAILABLE_ENUMERATOR(Class, Member) Class##_##Member,
    ZOL_NOT_AVAILABLE_TABLE(ZOL_NOT_AVAILABLE_ENUMERATOR)
#undef ZOL_NOT_AVAILABLE_ENUMERATOR
        Count
};

/// \return the qualified name of an operation, e.g. "SimplifyMesh::QuadricSimplify".
const char* UnavailableName(Unavailable operation);

/// Logs "<Class>::<Member>: not available in this library" and answers for the operation.
/// \return RESULT_NOT_AVAILABLE (-8).
int NotAvailable(Unavailable operation);

}  // namespace ZOL
