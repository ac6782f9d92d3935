// Mesh subdivision: Loop subdivision, densification of long edges and insertion of points
// given on triangles. Declared for hosts; not provided by this library.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/PointOnFace.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Refines meshes in place. Every member answers RESULT_NOT_AVAILABLE once its arguments
/// pass the checks listed with it.
class ZOL_API SubdivideMesh {
public:
    /// Loop subdivision: every pass splits each triangle into four and smooths.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] iterationCount number of passes, at least 1.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("SubdivideMesh::LoopSubdivide: triMesh == NULL") or iterationCount < 1
    ///         ("SubdivideMesh::LoopSubdivide: iterationCount < 1").
    static int LoopSubdivide(ITriMesh* triMesh, int iterationCount);

    /// Splits edges longer than a bound until none is left, keeping the shape.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] maxEdgeLength longest edge kept, in model units, greater than 0.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("SubdivideMesh::Densify: triMesh == NULL") or maxEdgeLength <= 0
    ///         ("SubdivideMesh::Densify: maxEdgeLength <= 0").
    static int Densify(ITriMesh* triMesh, double maxEdgeLength);

    /// Inserts a vertex at each point on a triangle, splitting that triangle.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] facePoints triangle index and barycentric weights of each new vertex.
    /// \param[out] vertexIds the index of each new vertex; may be null.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("SubdivideMesh::InsertPointsOnMesh: triMesh == NULL") or a point on a
    ///         triangle outside the mesh ("SubdivideMesh::InsertPointsOnMesh: triangle id
    ///         out of range").
    static int InsertPointsOnMesh(ITriMesh* triMesh,
                                  const std::vector<PointOnFace>& facePoints,
                                  std::vector<int>* vertexIds);
};

}  // namespace ZOL
