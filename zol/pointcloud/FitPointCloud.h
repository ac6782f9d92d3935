// Point-cloud fitting: a smooth surface fitted through noisy points and resampled at an
// even spacing. Declared for hosts; not provided by this library.
#pragma once

#include <zol/core/IPointCloud.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Fits surfaces to point clouds.
class ZOL_API FitPointCloud {
public:
    /// Fits a smooth surface to the points and samples it at an even spacing.
    /// \param[in] pointCloud the points; only read.
    /// \param[in] spacing distance between output points, in model units, greater than 0.
    /// \param[out] fittedCloud receives the samples with normals (cleared first).
    /// \return RESULT_NOT_AVAILABLE (-8) once the arguments pass; RESULT_INVALID_INPUT (-2)
    ///         for a null argument ("FitPointCloud::FitUniform: pointCloud == NULL ||
    ///         fittedCloud == NULL"), fewer than 3 points ("FitPointCloud::FitUniform:
    ///         pointCount < 3") or spacing <= 0 ("FitPointCloud::FitUniform: spacing <= 0").
    static int FitUniform(const IPointCloud* pointCloud, double spacing, IPointCloud* fittedCloud);
};

}  // namespace ZOL
