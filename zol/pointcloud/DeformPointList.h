// Non-rigid deformation of point sets: control points moved to targets carry their
// neighbourhoods along smoothly. Declared for hosts; not provided by this library.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Deforms point clouds.
class ZOL_API DeformPointList {
public:
    /// Moves the control points to their targets and every other point as smoothly as the
    /// stiffness asks.
    /// \param[in,out] pointCloud the points; rewritten.
    /// \param[in] controlIds the control points, at least one.
    /// \param[in] targetCoords one target per control point.
    /// \param[in] stiffness resistance to bending, greater than 0.
    /// \return RESULT_NOT_AVAILABLE (-8) once the arguments pass; RESULT_INVALID_INPUT (-2)
    ///         for a null cloud ("DeformPointList::Deform: pointCloud == NULL"), control
    ///         lists that are empty, differ in size or name a point outside the cloud
    ///         ("DeformPointList::Deform: invalid control points") or stiffness <= 0
    ///         ("DeformPointList::Deform: stiffness <= 0").
    static int Deform(IPointCloud* pointCloud,
                      const std::vector<int>& controlIds,
                      const std::vector<Vector3>& targetCoords,
                      double stiffness);
};

}  // namespace ZOL
