// Mesh unfolding: conformal and isometric parameterisation and UV atlases (charts cut,
// flattened and packed into the unit square). Declared for hosts; not provided by this
// library.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/Vector2.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Flattens meshes to the plane. Texture coordinates are per vertex (one Vector2 per
/// vertex) or per corner (three per triangle, in triangle order). Every member answers
/// RESULT_NOT_AVAILABLE once its arguments pass the checks listed with it.
class ZOL_API UnfoldMesh {
public:
    /// Conformal map of a disc-like mesh to the plane.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] fixedVertexIds vertices pinned to \p fixedCoords; null pins two
    ///            boundary vertices chosen by the map.
    /// \param[in] fixedCoords the pinned coordinates, one per fixed vertex; null when
    ///            \p fixedVertexIds is null.
    /// \param[out] vertexTexCoords one coordinate per vertex.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh or
    ///         output ("UnfoldMesh::ConformalMap: triMesh == NULL || vertexTexCoords ==
    ///         NULL") or fixed lists of different lengths ("UnfoldMesh::ConformalMap:
    ///         fixedVertexIds and fixedCoords differ in size").
    static int ConformalMap(const ITriMesh* triMesh,
                            const std::vector<int>* fixedVertexIds,
                            const std::vector<Vector2>* fixedCoords,
                            std::vector<Vector2>* vertexTexCoords);

    /// Improves a per-vertex map towards an isometry (edge lengths kept).
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] iterationCount number of passes, at least 1.
    /// \param[in,out] vertexTexCoords the start map, one per vertex; the result.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("UnfoldMesh::OptimizeIsometric: triMesh == NULL || vertexTexCoords ==
    ///         NULL"), iterationCount < 1 ("UnfoldMesh::OptimizeIsometric: iterationCount <
    ///         1") or a map not one per vertex ("UnfoldMesh::OptimizeIsometric:
    ///         vertexTexCoords size != vertexCount").
    static int OptimizeIsometric(const ITriMesh* triMesh,
                                 int iterationCount,
                                 std::vector<Vector2>* vertexTexCoords);

    /// Cuts the mesh into charts of bounded distortion, flattens and packs them.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] maxDistortion largest stretch accepted in a chart, greater than 0.
    /// \param[out] cornerTexCoords three coordinates per triangle in [0, 1]^2.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("UnfoldMesh::GenerateUVAtlas: triMesh == NULL || cornerTexCoords == NULL")
    ///         or maxDistortion <= 0 ("UnfoldMesh::GenerateUVAtlas: maxDistortion <= 0").
    static int GenerateUVAtlas(const ITriMesh* triMesh,
                               double maxDistortion,
                               std::vector<Vector2>* cornerTexCoords);

    /// Packs the charts of an existing per-corner map into the unit square.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] gapRatio space between charts as a share of the square side, in [0, 0.5).
    /// \param[in,out] cornerTexCoords three coordinates per triangle; rewritten.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("UnfoldMesh::PackUVAtlas: triMesh == NULL || cornerTexCoords == NULL"), a
    ///         gap outside [0, 0.5) ("UnfoldMesh::PackUVAtlas: gapRatio out of [0, 0.5)") or
    ///         coordinates not three per triangle ("UnfoldMesh::PackUVAtlas: cornerTexCoords
    ///         size != 3 * triangleCount").
    static int PackUVAtlas(const ITriMesh* triMesh,
                           double gapRatio,
                           std::vector<Vector2>* cornerTexCoords);
};

}  // namespace ZOL
