// Remeshing: a mesh of the same shape with edges of one target length. Declared for
// hosts; not provided by this library.
#pragma once

#include <zol/core/ITriMesh.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Rebuilds mesh connectivity.
class ZOL_API Remesh {
public:
    /// Splits, collapses and flips edges and relaxes vertices until the edges are close
    /// to the target length.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] targetEdgeLength wanted edge length in model units, greater than 0.
    /// \param[in] iterationCount number of passes, at least 1.
    /// \return RESULT_NOT_AVAILABLE (-8) once the arguments pass; RESULT_INVALID_INPUT (-2)
    ///         for a null mesh ("Remesh::UniformRemesh: triMesh == NULL"),
    ///         targetEdgeLength <= 0 ("Remesh::UniformRemesh: targetEdgeLength <= 0") or
    ///         iterationCount < 1 ("Remesh::UniformRemesh: iterationCount < 1").
    static int UniformRemesh(ITriMesh* triMesh, double targetEdgeLength, int iterationCount);
};

}  // namespace ZOL
