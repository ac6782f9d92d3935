// Mesh sampling: points spread evenly over the surface of a mesh. Declared for hosts; not
// provided by this library.
#pragma once

#include <zol/core/IPointCloud.h>
#include <zol/core/ITriMesh.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Samples mesh surfaces.
class ZOL_API SampleMesh {
public:
    /// Draws points evenly over the surface, with the normals of their triangles.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] sampleCount points wanted, at least 1.
    /// \param[out] samplePoints receives the points (appended).
    /// \return RESULT_NOT_AVAILABLE (-8) once the arguments pass; RESULT_INVALID_INPUT (-2)
    ///         for a null argument ("SampleMesh::UniformSample: triMesh == NULL ||
    ///         samplePoints == NULL"), a mesh without triangles ("SampleMesh::UniformSample:
    ///         triangleCount < 1") or sampleCount < 1 ("SampleMesh::UniformSample: sampleCount
    ///         < 1").
    static int UniformSample(const ITriMesh* triMesh, int sampleCount, IPointCloud* samplePoints);
};

}  // namespace ZOL
