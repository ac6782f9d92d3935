// Thread count and the profiler clock.
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include <zol/runtime/Profiler.h>
#include <zol/runtime/ThreadCount.h>

using namespace ZOL;

TEST(ThreadCount, ExplicitCountIsReturnedAsGiven) {
    SetThreadCount(3);
    EXPECT_EQ(GetThreadCount(), 3);
    SetThreadCount(64);  // more than this machine has: still taken as given
    EXPECT_EQ(GetThreadCount(), 64);
    SetThreadCount(0);
}

TEST(ThreadCount, ZeroOrNegativeMeansTheProcessorCount) {
    const unsigned hw = std::thread::hardware_concurrency();
    const int expected = hw == 0 ? 1 : static_cast<int>(hw);
    for (int setting : {0, -1, -100}) {
        SetThreadCount(setting);
        EXPECT_EQ(GetThreadCount(), expected) << "setting " << setting;
    }
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

TEST(Profiler, LaterCallsAreNonNegativeAndMonotonic) {
    double last = Profiler::GetTime();
    EXPECT_GE(last, 0.0);
    for (int i = 0; i < 1000; ++i) {
        const double now = Profiler::GetTime();
        EXPECT_GE(now, last);
        last = now;
    }
}
