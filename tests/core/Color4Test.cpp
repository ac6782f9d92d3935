// Color4: packing into an int, conversion from unit vectors by clamping and truncation.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include <zol/core/Color4.h>

using namespace ZOL;

TEST(Color4, PacksRedInTheLowByteAndRoundTrips) {
    EXPECT_EQ(Color4::Color4ToInt(Color4(1, 2, 3, 4)), 0x04030201);
    EXPECT_EQ(static_cast<unsigned>(Color4::Color4ToInt(Color4())), 0xFF000000u);  // opaque black
    for (const Color4& c :
         {Color4(255, 0, 128, 255), Color4(0, 0, 0, 0), Color4(200, 100, 50, 7)}) {
        const Color4 back = Color4::IntToColor4(Color4::Color4ToInt(c));
        for (int i = 0; i < 4; ++i) EXPECT_EQ(back[i], c[i]);
    }
}

TEST(Color4, VectorConversionClampsAndTruncates) {
    const struct {
        Vector3 in;
        int r, g, b;
    } cases[] = {{{1.5, -0.2, 0.5}, 255, 0, 127},
                 {{1.0, 0.0, 0.999}, 255, 0, 254},
                 {{NAN, 0.1, 0.25}, 0, 25, 63}};
    for (const auto& c : cases) {
        const Color4 out = Color4::Vector3ToColor4(c.in);
        EXPECT_EQ(std::vector<int>({out.red, out.green, out.blue, out.alpha}),
                  std::vector<int>({c.r, c.g, c.b, 255}));
    }
    const Vector3 v = Color4::Color4ToVector3(Color4(255, 51, 0, 9));
    EXPECT_TRUE(v.x == 1.0 && v.y == 51 / 255.0 && v.z == 0.0);
}
