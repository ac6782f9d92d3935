// Hole finding and filling on triangle meshes: boundary loops, patches that close them, and
// strips that bridge two boundary edges. Declared for hosts; not provided by this library.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// How a hole patch follows the surrounding surface.
enum FillMeshHoleType : int {
    FILL_MESH_HOLE_FLAT = 0,      ///< a minimal patch spanning the boundary
    FILL_MESH_HOLE_SMOOTH = 1,    ///< a patch with smooth (harmonic) interior vertices
    FILL_MESH_HOLE_CURVATURE = 2  ///< a patch continuing the curvature of the border
};

/// Finds and fills holes of a mesh. Every member answers RESULT_NOT_AVAILABLE once its
/// arguments pass the checks listed with it.
class ZOL_API FillMeshHole {
public:
    /// Lists the boundary loops of a mesh, one vertex chain per hole.
    /// \param[in] triMesh the mesh; only read.
    /// \param[out] holeVertexIds the loops; untouched here.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("FillMeshHole::FindHoles: triMesh == NULL || holeVertexIds == NULL").
    static int FindHoles(const ITriMesh* triMesh, std::vector<std::vector<int>>* holeVertexIds);

    /// Fills the holes whose boundary passes the given seed vertices.
    /// \param[in,out] triMesh the mesh that receives the patches.
    /// \param[in] boundarySeedIds one boundary vertex per hole; null fills every hole.
    /// \param[in] type the kind of patch.
    /// \param[in] vertexFields per-vertex values carried into the patch (a multiple of the
    ///            vertex count); null for none.
    /// \param[out] outputFields the values of the new vertices; may be null.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("FillMeshHole::FillHoles: triMesh == NULL"), a seed outside the mesh
    ///         ("FillMeshHole::FillHoles: boundarySeedId out of range"), an unknown type
    ///         ("FillMeshHole::FillHoles: invalid type") or fields whose length is not a
    ///         multiple of the vertex count ("FillMeshHole::FillHoles: vertexFields size is
    ///         not a multiple of vertexCount").
    static int FillHoles(ITriMesh* triMesh,
                         const std::vector<int>* boundarySeedIds,
                         FillMeshHoleType type,
                         const std::vector<double>* vertexFields,
                         std::vector<double>* outputFields);

    /// Joins pairs of boundary edges by strips of triangles.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] edgeVertexIds four vertex ids per bridge: the two ends of one boundary
    ///            edge, then of the other.
    /// \param[in] segmentCount triangles pairs along each strip, at least 1.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("FillMeshHole::BridgeEdges: triMesh == NULL"), ids not a non-empty multiple
    ///         of four ("FillMeshHole::BridgeEdges: edgeVertexIds.empty() ||
    ///         edgeVertexIds.size() % 4 != 0") or
    ///         segmentCount < 1 ("FillMeshHole::BridgeEdges: segmentCount < 1").
    static int BridgeEdges(ITriMesh* triMesh,
                           const std::vector<int>& edgeVertexIds,
                           int segmentCount);
};

}  // namespace ZOL
