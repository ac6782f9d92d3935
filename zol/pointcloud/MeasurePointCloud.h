// Point-cloud distance measurement: how far the points of one cloud lie from the surface
// that another cloud samples. Declared for hosts; not provided by this library.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Measures between point clouds. Every member answers RESULT_NOT_AVAILABLE once its
/// arguments pass the checks listed with it.
class ZOL_API MeasurePointCloud {
public:
    /// One-sided distance from a cloud to a reference cloud: for every point, the distance
    /// to the reference surface near its nearest reference point (along that point's
    /// normal when the reference has normals, else to the point itself).
    /// \param[in] pointCloud the points measured; only read.
    /// \param[in] refCloud the reference; only read; at least 1 point.
    /// \param[out] distances one distance per point of \p pointCloud, in coordinate units.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("MeasurePointCloud::ComputeOneSideDistance: pointCloud == NULL || refCloud ==
    ///         NULL || distances == NULL") or an empty reference
    ///         ("MeasurePointCloud::ComputeOneSideDistance: refCloud pointCount < 1").
    static int ComputeOneSideDistance(const IPointCloud* pointCloud,
                                      const IPointCloud* refCloud,
                                      std::vector<double>* distances);
};

}  // namespace ZOL
