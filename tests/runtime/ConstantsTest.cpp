// The exported constants and status codes: hosts compare against the numbers.
#include <gtest/gtest.h>

#include <zol/runtime/Constants.h>

using namespace ZOL;

TEST(Constants, ValuesAreTheNumbersHostsCompareWith) {
    EXPECT_EQ(REAL_TOL, 1e-15);
    EXPECT_EQ(REAL_LARGE, 1.7e+308);
    EXPECT_EQ(ZOL_PI, 3.141592653589793);
    // Sixteen written digits, which is not the double nearest pi / 180.
    EXPECT_EQ(ONE_RADIAN, 0.0174532925199433);
    EXPECT_NE(ONE_RADIAN, ZOL_PI / 180.0);
    EXPECT_EQ(SHORT_LARGE, short(32767));
    EXPECT_EQ(USHORT_LARGE, static_cast<unsigned short>(65535));
    EXPECT_EQ(INT_LARGE, 2147483647);
    EXPECT_EQ(UINT_LARGE, 4294967295u);
    const int codes[] = {RESULT_OK,        RESULT_FAIL,      RESULT_INVALID_INPUT,
                         RESULT_STEP_FAIL, RESULT_NOT_READY, RESULT_NOT_AVAILABLE};
    const int expected[] = {0, -1, -2, -3, -5, -8};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(codes[i], expected[i]);
}
