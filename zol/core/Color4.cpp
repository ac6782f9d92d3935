// Colour packing and conversion to and from unit-range vectors.
#include <zol/core/Color4.h>

#include <algorithm>
#include <cstdint>

namespace ZOL {

namespace {
std::uint8_t UnitToByte(double v) {
    if (!(v > 0.0)) return 0;  // also NaN, whose conversion would be undefined
    return static_cast<std::uint8_t>(std::min(v, 1.0) * 255.0);  // truncation toward zero
}
}  // namespace

int Color4::Color4ToInt(Color4 c) {
    const std::uint32_t packed = (std::uint32_t(c.alpha) << 24) | (std::uint32_t(c.blue) << 16) |
                                 (std::uint32_t(c.green) << 8) | std::uint32_t(c.red);
    return static_cast<int>(packed);
}

Color4 Color4::IntToColor4(int value) {
    const std::uint32_t packed = static_cast<std::uint32_t>(value);
    return Color4(packed & 0xFF, (packed >> 8) & 0xFF, (packed >> 16) & 0xFF,
                  (packed >> 24) & 0xFF);
}

Color4 Color4::Vector3ToColor4(Vector3 v) {
    return Color4(UnitToByte(v.x), UnitToByte(v.y), UnitToByte(v.z), 255);
}

Vector3 Color4::Color4ToVector3(Color4 c) {
    return Vector3(c.red / 255.0, c.green / 255.0, c.blue / 255.0);
}

}  // namespace ZOL
