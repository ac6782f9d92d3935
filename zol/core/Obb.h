// Oriented bounding box: a center, three unit orthogonal axes and a half-extent along
// each. Plain value, copied byte-wise.
#pragma once

#include <vector>

#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class ZOL_API Obb {
public:
    /// Center, axes and half-extents all zero.
    Obb();
    /// \param[in] axes         three axes, expected unit length and orthogonal.
    /// \param[in] halfExtents  the half-length of the box along each axis.
    Obb(const Vector3& center, const Vector3 axes[3], const double halfExtents[3]);

    /// \return true when \p p lies inside or on the box (bounds inclusive).
    bool IsPointInside(const Vector3& p) const;
    /// Resizes \p corners to 8: corner k is center + sum_i s_i e_i axis_i with s_i = +1
    /// when bit i of k is set and -1 otherwise.
    void Get8CornerPoints(std::vector<Vector3>& corners) const;

    const Vector3& GetCenter() const { return mCenter; }
    /// \return axis \p i (0..2, no range check).
    const Vector3& GetAxis(int i) const { return mAxes[i]; }
    /// \return the half-extent along axis \p i (0..2, no range check).
    double GetHalfExtent(int i) const { return mHalfExtents[i]; }

    Vector3 mCenter;
    Vector3 mAxes[3];
    double mHalfExtents[3];
};

}  // namespace ZOL
