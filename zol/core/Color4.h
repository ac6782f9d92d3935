// RGBA colour of four bytes; stored in large per-vertex arrays, so exactly 4 bytes.
#pragma once

#include <cstdint>

#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class ZOL_API Color4 {
public:
    Color4() : red(0), green(0), blue(0), alpha(255) {}
    Color4(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a)
        : red(r), green(g), blue(b), alpha(a) {}

    /// 0..3 are red, green, blue, alpha; no range check.
    std::uint8_t& operator[](int i) { return (&red)[i]; }
    std::uint8_t operator[](int i) const { return (&red)[i]; }

    /// \return (alpha << 24) | (blue << 16) | (green << 8) | red.
    static int Color4ToInt(Color4 c);
    /// Inverse of Color4ToInt.
    static Color4 IntToColor4(int value);
    /// Clamps each component to [0, 1], scales by 255 and truncates; alpha is 255.
    static Color4 Vector3ToColor4(Vector3 v);
    /// (red, green, blue) / 255; alpha is dropped.
    static Vector3 Color4ToVector3(Color4 c);

    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
    std::uint8_t alpha;
};

}  // namespace ZOL
