// Obb: containment test and corners.
#include <zol/core/Obb.h>

namespace ZOL {

Obb::Obb() : mCenter(), mAxes(), mHalfExtents{0.0, 0.0, 0.0} {}

Obb::Obb(const Vector3& center, const Vector3 axes[3], const double halfExtents[3])
    : mCenter(center),
      mAxes{axes[0], axes[1], axes[2]},
      mHalfExtents{halfExtents[0], halfExtents[1], halfExtents[2]} {}

bool Obb::IsPointInside(const Vector3& p) const {
    const Vector3 q = p - mCenter;
    for (int i = 0; i < 3; ++i) {
        const double s = q * mAxes[i];
        if (s < -mHalfExtents[i] || s > mHalfExtents[i]) return false;
    }
    return true;
}

void Obb::Get8CornerPoints(std::vector<Vector3>& corners) const {
    corners.resize(8);
    for (int k = 0; k < 8; ++k) {
        Vector3 corner = mCenter;
        for (int i = 0; i < 3; ++i) {
            const double sign = (k & (1 << i)) ? 1.0 : -1.0;
            corner += mAxes[i] * (sign * mHalfExtents[i]);
        }
        corners[k] = corner;
    }
}

}  // namespace ZOL
