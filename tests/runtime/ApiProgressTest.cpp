// Progress: range mapping, suspension depth, reset, the scope guard, and polling from
// another thread while the operation's thread writes.
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include <zol/runtime/ApiProgress.h>

using namespace ZOL;

namespace {
struct ProgressTest : ::testing::Test {
    void SetUp() override { ResetApiProgress(); }
    void TearDown() override { ResetApiProgress(); }
};

int EarlyReturnUnderScope(bool fail) {
    ProgressSuspendScope scope;
    if (fail) return -1;
    SetProgress(0.9);
    return 0;
}
}  // namespace

TEST_F(ProgressTest, SetProgressIsReadBackAndRangesMapIntoTheInnermostPair) {
    SetProgress(0.25);
    EXPECT_EQ(GetApiProgress(), 0.25);
    PushProgressRange(0.2, 0.6);
    SetProgress(0.5);
    EXPECT_DOUBLE_EQ(GetApiProgress(), 0.4);
    PushProgressRange(0.0, 0.5);
    SetProgress(1.0);
    EXPECT_EQ(GetApiProgress(), 0.5);
    PopProgressRange();
    SetProgress(1.0);
    EXPECT_EQ(GetApiProgress(), 0.6);
    PopProgressRange();
    PopProgressRange();  // nothing left: no-op
    SetProgress(0.7);
    EXPECT_EQ(GetApiProgress(), 0.7);
}

TEST_F(ProgressTest, SuspensionCountsDepthNeverGoesBelowZeroAndResetClearsIt) {
    SetProgress(0.1);
    SuspendProgress();
    SuspendProgress();
    ResumeProgress();
    SetProgress(0.5);
    EXPECT_EQ(GetApiProgress(), 0.1);
    ResumeProgress();
    SetProgress(0.5);
    EXPECT_EQ(GetApiProgress(), 0.5);
    ResumeProgress();   // depth stays 0 ...
    SuspendProgress();  // ... so one suspension is enough to block again
    SetProgress(0.8);
    EXPECT_EQ(GetApiProgress(), 0.5);
    PushProgressRange(0.2, 0.6);
    SuspendProgress();
    ResetApiProgress();
    EXPECT_EQ(GetApiProgress(), 0.0);
    SetProgress(0.3);
    EXPECT_EQ(GetApiProgress(), 0.3);
    // The scope guard resumes on every path out.
    EXPECT_EQ(EarlyReturnUnderScope(true), -1);
    SetProgress(0.35);
    EXPECT_EQ(GetApiProgress(), 0.35);
    EXPECT_EQ(EarlyReturnUnderScope(false), 0);
    EXPECT_EQ(GetApiProgress(), 0.35);  // the nested write was suppressed
    SetProgress(0.4);
    EXPECT_EQ(GetApiProgress(), 0.4);
}

TEST_F(ProgressTest, PollingFromAnotherThreadSeesOnlyWrittenValues) {
    // Bit patterns differ in both halves, so a torn read shows as a value never written.
    std::vector<double> written;
    for (int i = 0; i < 64; ++i) written.push_back(i % 2 ? 1.0 / (3 + i) : 0.999999 - i * 1e-9);
    const std::set<double> allowed(written.begin(), written.end());
    std::atomic<bool> done{false};
    std::atomic<int> bad{0};
    std::thread poller([&] {
        while (!done.load()) {
            const double v = GetApiProgress();
            if (v != 0.0 && allowed.count(v) == 0) bad.fetch_add(1);
        }
    });
    for (int round = 0; round < 2000; ++round)
        for (double v : written) SetProgress(v);
    done = true;
    poller.join();
    EXPECT_EQ(bad.load(), 0);
}
