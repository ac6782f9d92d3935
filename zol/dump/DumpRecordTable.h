// The vocabulary of dump files: one table row per recorded API (its ApiName value, record
// name and file-name tag). The enumeration, the per-record traits and the factories are all
// generated from this one table, so a value, a tag and a factory cannot disagree.
#pragma once

#include <string>
#include <vector>

#include <zol/runtime/Export.h>

// X(value, Name, tag): record class Dump##Name, factory CreateDump##Name(), enumerator
// API_##Name. Values are grouped by hundreds (mesh, point cloud, curve and mapping, relief);
// the gaps are unused values that are never reassigned.
#define ZOL_DUMP_RECORD_TABLE(X)                                                                  \
    X(1, MeshConsolidationMakeManifold, "_Mesh_Consolidation_MakeManifold_")                      \
    X(2, MeshConsolidationGeometry, "_Mesh_Consolidation_Geometry_")                              \
    X(3, FindMeshHole, "_Mesh_FindHole_")                                                         \
    X(4, FillMeshHole, "_Mesh_FillHole_")                                                         \
    X(5, MeshFilterLaplaceSmooth, "_Mesh_Filter_LaplaceSmooth_")                                  \
    X(6, MeshFilterEnhanceDetail, "_Mesh_Filter_EnhanceDetail_")                                  \
    X(8, MeshUnfoldPackUVAtlas, "_Mesh_Unfold_PackUVAtlas_")                                      \
    X(9, MeshSubdivisionLoop, "_Mesh_Subdivision_Loop_")                                          \
    X(11, MeshSimplificationQuadric, "_Mesh_Simplification_Quadric_")                             \
    X(11, MeshSimplificationTextureCoord, "_Mesh_Simplification_TextureCoord_")                   \
    X(12, MeshMeasureSectionExact, "_Mesh_Measure_Section_Exact_")                                \
    X(13, MeshConsolidationRemoveGeometryNoise, "_Mesh_Consolidation_RemoveGeometryNoise_")       \
    X(14, MeshSubdivisionDensify, "_Mesh_Subdivision_Densify_")                                   \
    X(15, MeshUnfoldConformal, "_Mesh_Unfold_Conformal_")                                         \
    X(16, MeshUnfoldOptimizeIsometric, "_Mesh_Unfold_OptimizeIsometric_")                         \
    X(18, MeshUnfoldGenerateUVAtlas, "_Mesh_Unfold_GenerateUVAtlas_")                             \
    X(19, MeshSplitByLines, "_Mesh_Split_SplitByLine_")                                           \
    X(20, MeshSplitInsertSplitLineByEdgePoints, "_Mesh_Split_InsertSplitLine_By_POE_")            \
    X(22, CreateTextureImageByVertexColors, "_Mesh_CreateTextureImage_V_")                        \
    X(23, CreateTextureImageByRefImages, "_Mesh_CreateTextureImage_M_")                           \
    X(24, BridgeEdges, "_Mesh_BridgeEdges_")                                                      \
    X(25, MeshSplitByPlane, "_Mesh_Split_SplitByPlane_")                                          \
    X(26, OffsetMeshUniformApproximate, "_Mesh_Offset_Uniform_Approximate_")                      \
    X(27, MeshSplitGenerateAtlasSplitLines, "_Mesh_Split_GenerateAtlasSplitLines_")               \
    X(28, MeshSamplingUniform, "_Mesh_Sampling_Uniform_")                                         \
    X(29, MeshQueryTool, "_Point_To_Mesh_Distance_")                                              \
    X(30, TriangulationConstrainedDelaunayOptimization,                                           \
      "_Triangulation_Constrained_Delaunay_Optimization_")                                        \
    X(31, MeshSimplificationByRemovingVertex, "_Mesh_Simplification_Removing_Vertex_")            \
    X(32, RemeshUniform, "_Remesh_Uniform_")                                                      \
    X(33, TriangulationMutualTessellation, "_Triangulation_Mutual_Tessellation_")                 \
    X(34, TriangulationCentroidVoronoiOptimization,                                               \
      "_Triangulation_Centroid_Voronoi_Optimization_")                                            \
    X(35, TuneMeshColorFromMultiPatch, "_IntrinsicColor_Tune_Mesh_Color_Multi_Patch_")            \
    X(36, MeshMeasurePrincipalCurvature, "_Mesh_Measure_PrincipalCurvature_")                     \
    X(37, MeshMeasureThickness, "_Mesh_Measure_Thickness_")                                       \
    X(38, DeformMeshInit, "_Mesh_Deform_Init_")                                                   \
    X(39, DeformMeshDeform, "_Mesh_Deform_Deform_")                                               \
    X(40, MeshMeasureSectionApproximate, "_Mesh_Measure_Section_Approximate_")                    \
    X(42, MeshSplitInsertSplitLinesByFacePoints, "_Mesh_Split_SplitByPofs_")                      \
    X(43, MeshSubdivisionInsertPointsOnMesh, "_Mesh_Subdivision_Insert_Point_On_Mesh")            \
    X(101, PointCloudConsolidationNormalSmoothing, "_Point_Consolidate_NormalSmoothing_")         \
    X(102, PointCloudConsolidationNormalCalculation, "_Point_Consolidate_NormalCalculation_")     \
    X(103, PointCloudConsolidationSmoothByNormal, "_Point_Consolidate_SmoothByNormal_")           \
    X(104, PointCloudConsolidationCalculateIsolation, "_Point_Consolidate_IsolationCalculation_") \
    X(105, PointCloudReconstructMesh, "_Point_Reconstruction_Reconstruct_")                       \
    X(106, PointCloudRegistrationAlignPointPair, "_Point_Registrate_AlignPointPair_")             \
    X(107, PointCloudRegistrationICP, "_Point_Registrate_ICP_")                                   \
    X(108, PointCloudRegistrationAlignPointCloud, "_Point_Registrate_AlignPointCloud_")           \
    X(109, PointCloudSamplingUniform, "_Point_Sampling_Uniform_")                                 \
    X(110, PointCloudRegistrationAlignPointCloudByMark,                                           \
      "_Point_Registrate_AlignPointCloudByMark_")                                                 \
    X(111, PointCloudMeasureOneSideDistance, "_PointCloud_Measure_Distance_OneSide_")             \
    X(112, PointCloudConsolidationCalculateUniformity,                                            \
      "_Point_Consolidate_UniformityCalculation_")                                                \
    X(113, PointCloudConsolidationRawScanData, "_Point_Consolidate_RawScanData_")                 \
    X(114, PointCloudRegistrationGlobal, "_Point_Registrate_Global_")                             \
    X(115, FusePointCloudUpdate, "_Point_Fuse_Update_")                                           \
    X(116, FusePointCloudExtract, "_Point_Fuse_Extract_")                                         \
    /* Reversing writes under the tag of normal calculation on purpose. */                        \
    X(117, PointCloudConsolidationNormalReversing, "_Point_Consolidate_NormalCalculation_")       \
    X(118, SumPointCloudUpdate, "_Point_Sum_Update_")                                             \
    X(119, SumPointCloudExtract, "_Point_Sum_Extract_")                                           \
    X(121, TuneColorFromSingleLight, "_IntrinsicColor_Tune_Color_Single_Light_")                  \
    X(122, PointCloudSamplingGeometry, "_Point_Sampling_Geometry_")                               \
    X(123, FitPointCloudUniform, "_Point_Fit_Uniform_")                                           \
    X(124, SignedDistanceFunctionUpdate, "_Point_Sdf_Update_")                                    \
    X(125, SignedDistanceFunctionExtract, "_Point_Sdf_Extract_")                                  \
    X(126, PointCloudConsolidationGeometrySmoothing, "_Point_Consolidate_GeometrySmoothing_")     \
    X(127, TuneTextureImageByVertexColor, "_IntrinsicColor_Tune_TextureImage_By_Vertex_Color_")   \
    X(128, TuneColorFromMultiFrame, "_IntrinsicColor_Tune_Color_Multi_Frame_")                    \
    X(129, PointCloudSimplify, "_Point_Sampling_Simplify_")                                       \
    X(130, PointCloudConsolidationCalculateOutlier, "_Point_Consolidate_OutlierCalculation_")     \
    X(131, TriangulationConstrainedDelaunay2D, "_Triangulation_Constrained_Delaunay_2D_")         \
    X(132, TuneImageByTriangleColor, "_IntrinsicColor_Tune_Image_By_Triangle_Color_")             \
    X(133, TuneImageByPointColor, "_IntrinsicColor_Tune_Image_By_Point_Color_")                   \
    X(134, PointCloudSamplingGrid, "_Point_Sampling_Grid_")                                       \
    X(135, PointCloudConsolidationRemoveOverlap, "_Point_Consolidate_RemoveOverlap_")             \
    X(136, NonRigidICP, "_Point_NonRigid_ICP_")                                                   \
    X(137, NonRigidGlobalRegistrate, "_Point_NonRigid_Registrate_Global_")                        \
    X(138, DeformPointListDeform, "_Point_DeformPointList_Deform_")                               \
    X(139, PointCloudConsolidationNormalOrient, "_Point_Consolidate_NormalOrient_")               \
    X(140, DetectShapeDetectPrimitive, "_DetectShape_DetectPrimitive_")                           \
    X(141, DetectShapeSelectPrimitive, "_DetectShape_SelectPrimitive_")                           \
    X(201, OptimiseCurveSmoothCurveOnMesh, "_Curve_Smooth_Curve_On_Mesh_")                        \
    X(202, OptimiseMappingInterpolate, "_OptimiseMapping_Interpolate_On_Mesh_")                   \
    X(203, OptimiseMappingTransferToMesh, "_OptimiseMapping_Transfer_On_Mesh_")                   \
    X(205, OptimiseCurveApproximateOffset, "_Curve_Approximate_Offset_")                          \
    X(206, OptimiseCurveMakeBijective, "_Curve_Make_Bijective_")                                  \
    X(207, OptimiseCurveConnectFacePointsOnMesh, "_Connect_FacePoints_OnMesh_")                   \
    X(208, OptimiseCurveConnectFacePointsByCuttingPlane, "_Connect_FacePoints_ByPlane_")          \
    X(209, OptimiseCurveSmoothCurveCrossMesh, "_Curve_Smooth_Curve_Cross_Mesh_")                  \
    X(210, OptimiseMappingProjectToMesh, "_OptimiseMapping_Project_To_Mesh_")                     \
    X(211, OptimiseMappingFuseImageColorIds, "_OptimiseMapping_Fuse_ImageColorId_")               \
    /* Interpolation writes under the tag of image-colour-id fusion on purpose. */                \
    X(212, OptimiseMappingInterpolateFaceImageColorIds, "_OptimiseMapping_Fuse_ImageColorId_")    \
    X(213, TuneTextureImageColor, "_IntrinsicColor_Tune_TextureImage_Color_")                     \
    X(300, DigitalReliefCompressHeightField, "_Relief_CompressHeightField_")

namespace ZOL {

class DumpBase;

/// The value on the first line of a dump file: which API the file records.
enum ApiName : int {
#define ZOL_DUMP_ENUMERATOR(value, Name, tag) API_##Name = value,
    ZOL_DUMP_RECORD_TABLE(ZOL_DUMP_ENUMERATOR)
#undef ZOL_DUMP_ENUMERATOR
    /// The exact-section record answers three values: 12 for a plane section, 17 for a
    /// plane section measured by its convex hull, 41 for a section through face points.
    API_MeshMeasureSectionExactConvexHull = 17,
    API_MeshMeasureSectionExactFacePoints = 41
};

// One record class and one factory per row. Each factory returns a new default-constructed
// record that the caller deletes.
#define ZOL_DUMP_DECLARE(value, Name, tag) \
    class Dump##Name;                      \
    ZOL_API DumpBase* CreateDump##Name();
ZOL_DUMP_RECORD_TABLE(ZOL_DUMP_DECLARE)
#undef ZOL_DUMP_DECLARE

/// Compile-time facts of one record: its ApiName value, class name and file-name tag.
template <typename Record>
struct DumpRecordTraits;

#define ZOL_DUMP_TRAITS(value, Name, tag)                  \
    template <>                                            \
    struct DumpRecordTraits<Dump##Name> {                  \
        static constexpr ApiName kApiName = API_##Name;    \
        static constexpr const char* kName = "Dump" #Name; \
        static constexpr const char* kTag = tag;           \
    };
ZOL_DUMP_RECORD_TABLE(ZOL_DUMP_TRAITS)
#undef ZOL_DUMP_TRAITS

/// One row of the table at run time.
struct DumpRecordRow {
    int value;              ///< ApiName value on the first line of the file
    const char* name;       ///< record class name, e.g. "DumpFillMeshHole"
    const char* tag;        ///< file-name tag, e.g. "_Mesh_FillHole_"
    DumpBase* (*create)();  ///< the record's factory
};

/// \return every row of the table, in table order.
ZOL_API const std::vector<DumpRecordRow>& GetDumpRecordRows();

/// Creates the record for a dump file's first-line value. Value 11 names two records on
/// purpose; the one whose tag occurs in \p fileName wins (the quadric one otherwise).
/// \param[in] apiName the ApiName value; 17 and 41 give the exact-section record.
/// \param[in] fileName the dump file's name, used only to tell records sharing a value.
/// \return a new record owned by the caller, or null for a value no record answers.
ZOL_API DumpBase* CreateDumpRecord(int apiName, const std::string& fileName);

}  // namespace ZOL
