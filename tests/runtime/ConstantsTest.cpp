// The exported constants and status codes: hosts compare against the numbers, so the
// values and types are fixed exactly.
#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>

#include <zol/runtime/Constants.h>

using namespace ZOL;

TEST(Constants, RealConstantsHaveTheirExactValues) {
    EXPECT_EQ(REAL_TOL, 1e-15);
    EXPECT_EQ(REAL_LARGE, 1.7e+308);
    EXPECT_EQ(ZOL_PI, 3.141592653589793);
    EXPECT_EQ(ZOL_PI, std::acos(-1.0));
    // Sixteen written digits, which is not the double nearest pi / 180.
    EXPECT_EQ(ONE_RADIAN, 0.0174532925199433);
    EXPECT_NE(ONE_RADIAN, ZOL_PI / 180.0);
    EXPECT_NEAR(90.0 * ONE_RADIAN, ZOL_PI / 2, 1e-14);
}

TEST(Constants, IntegerLimitsHaveTheirTypesAndValues) {
    static_assert(std::is_same<decltype(SHORT_LARGE), const short>::value, "short");
    static_assert(std::is_same<decltype(USHORT_LARGE), const unsigned short>::value, "ushort");
    static_assert(std::is_same<decltype(INT_LARGE), const int>::value, "int");
    static_assert(std::is_same<decltype(UINT_LARGE), const unsigned int>::value, "uint");
    EXPECT_EQ(SHORT_LARGE, 32767);
    EXPECT_EQ(USHORT_LARGE, 65535);
    EXPECT_EQ(INT_LARGE, 2147483647);
    EXPECT_EQ(UINT_LARGE, 4294967295u);
}

TEST(Constants, StatusCodesAreTheNumbersHostsCompareWith) {
    const struct {
        int code;
        int value;
    } table[] = {{RESULT_OK, 0},         {RESULT_FAIL, -1},      {RESULT_INVALID_INPUT, -2},
                 {RESULT_STEP_FAIL, -3}, {RESULT_NOT_READY, -5}, {RESULT_NOT_AVAILABLE, -8}};
    for (const auto& row : table) EXPECT_EQ(row.code, row.value);
}
