// Geodesics on triangle meshes: distances from source vertices and shortest paths between
// points on the surface. Declared for hosts; not provided by this library.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/PointOnFace.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Measures along the surface. Every member answers RESULT_NOT_AVAILABLE once its
/// arguments pass the checks listed with it.
class ZOL_API MeshGeodesic {
public:
    /// Geodesic distance of every vertex from the nearest source vertex.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] sourceVertexIds the sources, at least one.
    /// \param[out] distances one distance per vertex in model units.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("MeshGeodesic::ComputeDistance: triMesh == NULL || distances == NULL") or no
    ///         source or a source outside the mesh ("MeshGeodesic::ComputeDistance: invalid
    ///         sourceVertexIds").
    static int ComputeDistance(const ITriMesh* triMesh,
                               const std::vector<int>& sourceVertexIds,
                               std::vector<double>* distances);

    /// Shortest path over the surface between two points on triangles.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] start, end the end points.
    /// \param[out] path the path as points on triangles, from start to end.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("MeshGeodesic::ComputePath: triMesh == NULL || path == NULL") or an end point
    ///         on a triangle outside the mesh ("MeshGeodesic::ComputePath: triangle id out of
    ///         range").
    static int ComputePath(const ITriMesh* triMesh,
                           const PointOnFace& start,
                           const PointOnFace& end,
                           std::vector<PointOnFace>* path);
};

}  // namespace ZOL
