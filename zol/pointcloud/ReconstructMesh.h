// Surface reconstruction: a watertight triangle mesh from an oriented point cloud.
// Declared for hosts; not provided by this library.
#pragma once

#include <zol/core/IPointCloud.h>
#include <zol/core/ITriMesh.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Reconstructs surfaces from points.
class ZOL_API ReconstructMesh {
public:
    /// Fits an implicit surface to oriented points and extracts its zero level as a mesh.
    /// \param[in] pointCloud the points, with normals; only read.
    /// \param[in] depth octree depth of the implicit grid, in [1, 16].
    /// \param[out] triMesh receives the surface (cleared first).
    /// \return RESULT_NOT_AVAILABLE (-8) once the arguments pass; RESULT_INVALID_INPUT (-2)
    ///         for a null argument ("ReconstructMesh::Reconstruct: pointCloud == NULL ||
    ///         triMesh == NULL"), a cloud without normals ("ReconstructMesh::Reconstruct:
    ///         pointCloud should has normal first") or a depth outside [1, 16]
    ///         ("ReconstructMesh::Reconstruct: depth out of [1, 16]").
    static int Reconstruct(const IPointCloud* pointCloud, int depth, ITriMesh* triMesh);
};

}  // namespace ZOL
