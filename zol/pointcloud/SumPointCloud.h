// The sum map: registered clouds summed into the cells of a box, so that overlapping scans
// average into one cloud. Declared for hosts; not provided by this library.
#pragma once

#include <zol/core/IPointCloud.h>
#include <zol/core/Matrix4x4.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Sums clouds cell by cell over a box. Every operation answers RESULT_NOT_AVAILABLE once
/// its arguments pass the checks listed with it.
class ZOL_API SumPointCloud {
public:
    /// An empty sum over the box [\p bboxMin, \p bboxMax] with cubic cells of side
    /// \p resolution (model units). The values are checked by the operations.
    SumPointCloud(double resolution, const Vector3& bboxMin, const Vector3& bboxMax);
    ~SumPointCloud();
    SumPointCloud(const SumPointCloud&) = delete;
    SumPointCloud& operator=(const SumPointCloud&) = delete;

    /// Adds a cloud, moved by \p transform, to the sums of its cells.
    /// \param[in] pointCloud the points (normals summed when present); only read.
    /// \param[in] transform applied to the points first; null for none.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null cloud
    ///         ("SumPointCloud::UpdateSumFunction: pointCloud == NULL") or a box or cell size
    ///         that holds no cell ("SumPointCloud::UpdateSumFunction: resolution <= 0 ||
    ///         bboxMin above bboxMax").
    int UpdateSumFunction(const IPointCloud* pointCloud, const Matrix4x4* transform);

    /// Writes one point per occupied cell, the mean of what the cell received.
    /// \param[out] pointCloud receives the points (cleared first).
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null cloud
    ///         ("SumPointCloud::ExtractPointCloud: pointCloud == NULL") or a box or cell size
    ///         that holds no cell ("SumPointCloud::ExtractPointCloud: resolution <= 0 ||
    ///         bboxMin above bboxMax").
    int ExtractPointCloud(IPointCloud* pointCloud);

    /// Drops every sum; the box and cell size stay.
    void Clear();

    double GetResolution() const { return mResolution; }
    const Vector3& GetBBoxMin() const { return mBBoxMin; }
    const Vector3& GetBBoxMax() const { return mBBoxMax; }

private:
    double mResolution;
    Vector3 mBBoxMin;
    Vector3 mBBoxMax;
};

}  // namespace ZOL
