// Mesh simplification: quadric edge collapse (with or without per-corner texture
// coordinates) and removal of chosen vertices. Declared for hosts; not provided by this
// library.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/Vector2.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Coarsens meshes in place. Every member answers RESULT_NOT_AVAILABLE once its arguments
/// pass the checks listed with it.
class ZOL_API SimplifyMesh {
public:
    /// Collapses edges by least quadric error until the vertex count is reached.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] targetVertexCount vertices left, at least 4.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("SimplifyMesh::QuadricSimplify: triMesh == NULL") or targetVertexCount < 4
    ///         ("SimplifyMesh::QuadricSimplify: targetVertexCount < 4").
    static int QuadricSimplify(ITriMesh* triMesh, int targetVertexCount);

    /// As QuadricSimplify, keeping texture seams and carrying the texture coordinates.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] targetVertexCount vertices left, at least 4.
    /// \param[in,out] cornerTexCoords three texture coordinates per triangle, in triangle
    ///                order; rewritten for the simplified mesh.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("SimplifyMesh::QuadricSimplifyTextureCoord: triMesh == NULL ||
    ///         cornerTexCoords == NULL"), targetVertexCount < 4
    ///         ("SimplifyMesh::QuadricSimplifyTextureCoord: targetVertexCount < 4") or
    ///         coordinates not three per triangle ("SimplifyMesh::QuadricSimplifyTextureCoord:
    ///         cornerTexCoords size != 3 * triangleCount").
    static int QuadricSimplifyTextureCoord(ITriMesh* triMesh,
                                           int targetVertexCount,
                                           std::vector<Vector2>* cornerTexCoords);

    /// Removes the given vertices and fills each gap they leave with new triangles.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] vertexIds the vertices to remove.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("SimplifyMesh::RemoveVertices: triMesh == NULL") or an id outside the mesh
    ///         ("SimplifyMesh::RemoveVertices: vertex id out of range").
    static int RemoveVertices(ITriMesh* triMesh, const std::vector<int>& vertexIds);
};

}  // namespace ZOL
