// Cage-based mesh deformation by Green coordinates. Declared for hosts; not provided by
// this library.
#pragma once

#include <zol/core/ITriMesh.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Deforms a mesh inside a closed cage mesh: every vertex follows the cage by its Green
/// coordinates. Every member answers RESULT_NOT_AVAILABLE once its arguments pass the
/// checks listed with it.
class ZOL_API DeformCage {
public:
    DeformCage();
    ~DeformCage();
    DeformCage(const DeformCage&) = delete;
    DeformCage& operator=(const DeformCage&) = delete;

    /// Computes the coordinates of \p triMesh with respect to \p cageMesh.
    /// \param[in] cageMesh a closed mesh around \p triMesh; only read.
    /// \param[in] triMesh the mesh to deform; only read.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("DeformCage::Init: cageMesh == NULL || triMesh == NULL") or a cage without
    ///         triangles ("DeformCage::Init: cage triangleCount < 4").
    int Init(const ITriMesh* cageMesh, const ITriMesh* triMesh);

    /// Moves \p triMesh with the cage deformed to \p deformedCage.
    /// \param[in] deformedCage the cage of Init with moved vertices; only read.
    /// \param[in,out] triMesh the mesh of Init, whose vertices are rewritten.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("DeformCage::Deform: deformedCage == NULL || triMesh == NULL").
    int Deform(const ITriMesh* deformedCage, ITriMesh* triMesh);
};

}  // namespace ZOL
