// Whole-mesh measurements: surface area and enclosed volume.
#pragma once

#include <zol/core/ITriMesh.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class ZOL_API MeasureMesh {
public:
    /// Surface area: half the sum of |(b - a) x (c - a)| over all triangles (a, b, c).
    /// Degenerate triangles add 0; a mesh without triangles has area 0.
    /// \param[in] triMesh the mesh; only read.
    /// \param[out] area the area in squared coordinate units; unchanged on failure.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when triMesh is null or a triangle
    ///         names a vertex out of range; RESULT_STEP_FAIL (-3) when no worker thread
    ///         starts (each logged).
    static int ComputeArea(const ITriMesh* triMesh, double& area);

    /// Enclosed volume: |sum over triangles of a . (b x c)| / 6. The absolute value is
    /// taken once of the total, so a mesh with all triangles reversed gives the same
    /// volume; no closedness test is made, an open mesh gives what the sum gives.
    /// \param[in] triMesh the mesh; only read.
    /// \param[out] volume the volume in cubed coordinate units; unchanged on failure.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when triMesh is null or a triangle
    ///         names a vertex out of range; RESULT_STEP_FAIL (-3) when no worker thread
    ///         starts (each logged).
    static int ComputeVolume(const ITriMesh* triMesh, double& volume);
};

}  // namespace ZOL
