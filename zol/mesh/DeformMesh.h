// Handle-based mesh deformation that keeps the surface detail. Declared for hosts; not
// provided by this library.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Deforms a mesh by moving handle vertices while fixed vertices stay. Init prepares the
/// solver for one mesh and one choice of vertices; Deform may then run many times. Every
/// member answers RESULT_NOT_AVAILABLE once its arguments pass the checks listed with it.
class ZOL_API DeformMesh {
public:
    DeformMesh();
    ~DeformMesh();
    DeformMesh(const DeformMesh&) = delete;
    DeformMesh& operator=(const DeformMesh&) = delete;

    /// Prepares the deformation of \p triMesh.
    /// \param[in] triMesh the rest shape; only read.
    /// \param[in] fixedVertexIds vertices that never move.
    /// \param[in] handleVertexIds vertices that Deform moves, at least one.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("DeformMesh::Init: triMesh == NULL"), no handle ("DeformMesh::Init:
    ///         handleVertexIds is empty") or an id outside the mesh ("DeformMesh::Init:
    ///         vertex id out of range").
    int Init(const ITriMesh* triMesh,
             const std::vector<int>& fixedVertexIds,
             const std::vector<int>& handleVertexIds);

    /// Moves the handles to new positions and the free vertices with them.
    /// \param[in] handleCoords one position per handle vertex of Init.
    /// \param[in,out] triMesh the mesh of Init, whose vertices are rewritten.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("DeformMesh::Deform: triMesh == NULL") or no handle position
    ///         ("DeformMesh::Deform: handleCoords is empty").
    int Deform(const std::vector<Vector3>& handleCoords, ITriMesh* triMesh);
};

}  // namespace ZOL
