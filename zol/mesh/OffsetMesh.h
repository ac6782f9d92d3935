// Mesh offsetting: a surface at a constant distance from a mesh. Declared for hosts; not
// provided by this library.
#pragma once

#include <zol/core/ITriMesh.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Builds offset surfaces.
class ZOL_API OffsetMesh {
public:
    /// Approximates the surface at a uniform distance along the normals of a closed mesh.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] offsetDistance distance in model units; positive outward, negative
    ///            inward, not zero.
    /// \param[out] offsetMesh receives the offset surface.
    /// \return RESULT_NOT_AVAILABLE (-8) once the arguments pass; RESULT_INVALID_INPUT (-2)
    ///         for a null argument ("OffsetMesh::UniformApproximateOffset: triMesh == NULL ||
    ///         offsetMesh == NULL") or a zero or non-finite distance
    ///         ("OffsetMesh::UniformApproximateOffset: invalid offsetDistance").
    static int UniformApproximateOffset(const ITriMesh* triMesh,
                                        double offsetDistance,
                                        ITriMesh* offsetMesh);
};

}  // namespace ZOL
