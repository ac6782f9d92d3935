// Color4: packing into an int, conversion from unit vectors by clamping and truncation.
#include <gtest/gtest.h>

#include <cmath>

#include <zol/core/Color4.h>

using namespace ZOL;

TEST(Color4, PacksRedInTheLowByte) {
    EXPECT_EQ(Color4::Color4ToInt(Color4(1, 2, 3, 4)), 0x04030201);
}

TEST(Color4, DefaultIsOpaqueBlackAndPacksNegative) {
    const Color4 c;
    EXPECT_EQ(c[0], 0);
    EXPECT_EQ(c[3], 255);
    const int packed = Color4::Color4ToInt(c);
    EXPECT_EQ(static_cast<unsigned>(packed), 0xFF000000u);
    EXPECT_LT(packed, 0);
}

TEST(Color4, IntRoundTripKeepsAllChannels) {
    const Color4 samples[] = {{1, 2, 3, 4}, {255, 0, 128, 255}, {0, 0, 0, 0}, {200, 100, 50, 7}};
    for (const Color4& c : samples) {
        const Color4 back = Color4::IntToColor4(Color4::Color4ToInt(c));
        for (int i = 0; i < 4; ++i) EXPECT_EQ(back[i], c[i]);
    }
}

TEST(Color4, VectorConversionClampsAndTruncates) {
    struct Case {
        Vector3 in;
        int r, g, b;
    };
    const Case cases[] = {{{1.5, -0.2, 0.5}, 255, 0, 127},
                          {{1.0, 0.0, 0.999}, 255, 0, 254},
                          {{NAN, 0.1, 0.25}, 0, 25, 63}};
    for (const Case& c : cases) {
        const Color4 out = Color4::Vector3ToColor4(c.in);
        EXPECT_EQ(out.red, c.r);
        EXPECT_EQ(out.green, c.g);
        EXPECT_EQ(out.blue, c.b);
        EXPECT_EQ(out.alpha, 255);
    }
    const Vector3 v = Color4::Color4ToVector3(Color4(255, 51, 0, 9));
    EXPECT_EQ(v.x, 1.0);
    EXPECT_EQ(v.y, 51 / 255.0);
    EXPECT_EQ(v.z, 0.0);
}
