// The abstract editable point cloud: algorithms take an IPointCloud so that they run on
// the library's PointCloud and on a host's own point storage alike. Indices are dense ints.
#pragma once

#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Editable set of points with optional normals. Deletion is always swap-to-end then
/// pop-back, so point order is not kept.
class ZOL_API IPointCloud {
public:
    /// \return the number of points.
    virtual int GetPointCount() const = 0;
    /// \return the coordinate of \p pointId (no range check).
    virtual Vector3 GetPointCoord(int pointId) = 0;
    virtual void SetPointCoord(int pointId, const Vector3& coord) = 0;
    /// \return the normal of \p pointId; meaningful only while HasNormal() is true.
    virtual Vector3 GetPointNormal(int pointId) = 0;
    virtual void SetPointNormal(int pointId, const Vector3& normal) = 0;
    virtual bool HasNormal() const = 0;
    /// Turns the normals on or off.
    virtual void SetHasNormal(bool hasNormal) = 0;
    /// Appends a point with a normal.
    /// \return the index of the new point (the previous point count).
    virtual int InsertPoint(const Vector3& coord, const Vector3& normal) = 0;
    /// Appends a point; its normal, if normals are on, is zero.
    /// \return the index of the new point (the previous point count).
    virtual int InsertPoint(const Vector3& coord) = 0;
    /// Exchanges everything stored for the two points.
    virtual void SwapPoint(int pointId0, int pointId1) = 0;
    /// Removes the last \p count points.
    virtual void PopbackPoints(int count) = 0;
    /// Removes every point.
    virtual void Clear() = 0;
    virtual ~IPointCloud() = default;
};

}  // namespace ZOL
