// Mesh consolidation: manifold repair, removal of degenerate and folded triangles, and
// removal of small isolated parts. Declared for hosts; not provided by this library.
#pragma once

#include <zol/core/ITriMesh.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Repairs meshes in place. Every member answers RESULT_NOT_AVAILABLE once its arguments
/// pass the checks listed with it.
class ZOL_API ConsolidateMesh {
public:
    /// Splits non-manifold vertices and edges so that every edge has at most two triangles.
    /// \param[in,out] triMesh the mesh.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("ConsolidateMesh::MakeTriMeshManifold: triMesh == NULL").
    static int MakeTriMeshManifold(ITriMesh* triMesh);

    /// Removes needle and cap triangles and flips folded ones.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] minTriangleAngle smallest corner angle kept, in radians, in [0, pi/3).
    /// \param[in] maxFoldoverAngle largest angle between neighbouring normals before a
    ///            triangle counts as folded, in radians, in (0, pi].
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("ConsolidateMesh::ConsolidateGeometry: triMesh == NULL") or angles outside
    ///         their ranges ("ConsolidateMesh::ConsolidateGeometry: invalid angle").
    static int ConsolidateGeometry(ITriMesh* triMesh,
                                   double minTriangleAngle,
                                   double maxFoldoverAngle);

    /// Deletes connected parts much smaller than the largest one.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] minPartRatio parts with fewer triangles than this share of the largest
    ///            part are deleted, in [0, 1].
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("ConsolidateMesh::RemoveGeometryNoise: triMesh == NULL") or a ratio outside
    ///         [0, 1] ("ConsolidateMesh::RemoveGeometryNoise: minPartRatio out of [0, 1]").
    static int RemoveGeometryNoise(ITriMesh* triMesh, double minPartRatio);
};

}  // namespace ZOL
