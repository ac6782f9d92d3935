// Thread count and the profiler clock.
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include <zol/runtime/Profiler.h>
#include <zol/runtime/ThreadCount.h>

using namespace ZOL;

TEST(ThreadCount, ExplicitCountIsTakenAsGivenAndZeroOrLessMeansTheProcessors) {
    const unsigned hw = std::thread::hardware_concurrency();
    const struct {
        int setting, expected;
    } cases[] = {{3, 3}, {64, 64}, {0, hw == 0 ? 1 : int(hw)}, {-1, hw == 0 ? 1 : int(hw)}};
    for (const auto& c : cases) {
        SetThreadCount(c.setting);
        EXPECT_EQ(GetThreadCount(), c.expected) << "setting " << c.setting;
    }
    SetThreadCount(0);
}

TEST(ProfilerDeathTest, FirstCallInAProcessReturnsExactlyZero) {
    // Runs in a freshly started copy of the test program, where no other test has
    // touched the clock yet.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const double first = Profiler::GetTime();
            const double second = Profiler::GetTime();
            const double third = Profiler::GetTime();
            std::exit(first == 0.0 && second >= 0.0 && third >= second ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}
