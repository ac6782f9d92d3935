// The exported constants and status codes: hosts compare against the numbers, so the
// values and types are fixed exactly.
#include <gtest/gtest.h>

#include <iterator>
#include <type_traits>
#include <vector>

#include <zol/runtime/Constants.h>

using namespace ZOL;

TEST(Constants, ValuesAndTypesAreTheNumbersHostsCompareWith) {
    EXPECT_EQ(REAL_TOL, 1e-15);
    EXPECT_EQ(REAL_LARGE, 1.7e+308);
    EXPECT_EQ(ZOL_PI, 3.141592653589793);
    // Sixteen written digits, which is not the double nearest pi / 180.
    EXPECT_EQ(ONE_RADIAN, 0.0174532925199433);
    EXPECT_NE(ONE_RADIAN, ZOL_PI / 180.0);
    static_assert(std::is_same<decltype(SHORT_LARGE), const short>::value, "short");
    static_assert(std::is_same<decltype(USHORT_LARGE), const unsigned short>::value, "ushort");
    static_assert(std::is_same<decltype(UINT_LARGE), const unsigned int>::value, "uint");
    EXPECT_EQ(SHORT_LARGE, 32767);
    EXPECT_EQ(USHORT_LARGE, 65535);
    EXPECT_EQ(INT_LARGE, 2147483647);
    EXPECT_EQ(UINT_LARGE, 4294967295u);
    const int codes[] = {RESULT_OK,        RESULT_FAIL,      RESULT_INVALID_INPUT,
                         RESULT_STEP_FAIL, RESULT_NOT_READY, RESULT_NOT_AVAILABLE};
    EXPECT_EQ(std::vector<int>(std::begin(codes), std::end(codes)),
              (std::vector<int>{0, -1, -2, -3, -5, -8}));
}
