// Triangulation: constrained Delaunay triangulation in the plane, edge flips and
// centroidal Voronoi relaxation of meshes, and mutual tessellation of two meshes.
// Declared for hosts; not provided by this library.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/Vector2.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Builds and improves triangulations. Constrained edges are given as pairs of vertex ids
/// (two ints per edge). Every member answers RESULT_NOT_AVAILABLE once its arguments pass
/// the checks listed with it.
class ZOL_API Triangulation {
public:
    /// Flips edges until every unconstrained edge is locally Delaunay.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] constrainedEdgeVertexIds edges that must stay; null for none.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("Triangulation::ConstrainedDelaunayOptimization: triMesh == NULL") or an odd
    ///         id count ("Triangulation::ConstrainedDelaunayOptimization:
    ///         constrainedEdgeVertexIds size is odd").
    static int ConstrainedDelaunayOptimization(ITriMesh* triMesh,
                                               const std::vector<int>* constrainedEdgeVertexIds);

    /// Inserts the intersection curves of two meshes into both, so that they share them.
    /// \param[in,out] triMeshA, triMeshB the meshes.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("Triangulation::MutualTessellation: triMeshA == NULL || triMeshB == NULL").
    static int MutualTessellation(ITriMesh* triMeshA, ITriMesh* triMeshB);

    /// Moves vertices towards the centroids of their Voronoi cells on the surface.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] iterationCount number of passes, at least 1.
    /// \param[in] fixedVertexIds vertices that stay; null keeps the boundary only.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("Triangulation::CentroidVoronoiOptimization: triMesh == NULL") or
    ///         iterationCount < 1 ("Triangulation::CentroidVoronoiOptimization:
    ///         iterationCount < 1").
    static int CentroidVoronoiOptimization(ITriMesh* triMesh,
                                           int iterationCount,
                                           const std::vector<int>* fixedVertexIds);

    /// Constrained Delaunay triangulation of points in the plane.
    /// \param[in] points the points; vertex i of the result is points[i] with z = 0.
    /// \param[in] constrainedEdges pairs of point indices that must be edges.
    /// \param[out] triMesh receives the triangulation (cleared first).
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("Triangulation::ConstrainedDelaunay2D: triMesh == NULL"), fewer than three
    ///         points ("Triangulation::ConstrainedDelaunay2D: points.size() < 3") or an odd
    ///         edge list or an index outside the points ("Triangulation::
    ///         ConstrainedDelaunay2D: invalid constrainedEdges").
    static int ConstrainedDelaunay2D(const std::vector<Vector2>& points,
                                     const std::vector<int>& constrainedEdges,
                                     ITriMesh* triMesh);
};

}  // namespace ZOL
