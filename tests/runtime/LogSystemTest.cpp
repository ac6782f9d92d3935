// The log file: truncation, replacement, one flushed line per message, level gating.
#include <gtest/gtest.h>

#include <fstream>

#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/LogSystem.h>

#include "tests/common/TestData.h"

using namespace ZOL;

namespace {
// Restores the default log when a test that renames it ends.
struct DefaultLogRestorer {
    ~DefaultLogRestorer() { LogSystem::SetLogFileName("tracklog.txt"); }
};
}  // namespace

TEST(LogSystem, FailureReturnsItsCodeTraceIsGatedAndNumbersUseSixDigits) {
    zoltest::LogCapture log;
    EXPECT_EQ(LogFailure(RESULT_INVALID_INPUT, "X::Y: n < 3"), RESULT_INVALID_INPUT);
    LogAt(LOG_TRACE, "trace");
    LogAt(LOG_FAILURE, "failure");
    LogAt(LOG_MARKER, "marker");
    LogLine("v = ", 3.14159265, " n = ", -42, " big = ", 1234567.0, " tiny = ", 1e-7);
    EXPECT_EQ(log.Lines(),
              (std::vector<std::string>{"X::Y: n < 3", "failure", "marker",
                                        "v = 3.14159 n = -42 big = 1.23457e+06 tiny = 1e-07"}));
}

TEST(LogSystem, OpeningTruncatesAndAReplacedFileIsKeptAsItWas) {
    DefaultLogRestorer restore;
    const std::string a = zoltest::ScratchPath("a.txt"), b = zoltest::ScratchPath("b.txt");
    std::ofstream(a, std::ios::binary) << "left over from an earlier run\n";
    LogSystem::SetLogFileName(a);
    EXPECT_EQ(zoltest::ReadFile(a), "");
    LogLine("first");
    EXPECT_EQ(zoltest::ReadFile(a), "first\n");
    LogSystem::SetLogFileName(a);  // the same name again truncates again
    EXPECT_EQ(zoltest::ReadFile(a), "");
    LogLine("in a ", 1, " ", 2.5);
    LogSystem::SetLogFileName(b);
    LogLine("in b");
    EXPECT_EQ(zoltest::ReadFile(a), "in a 1 2.5\n");
    EXPECT_EQ(zoltest::ReadFile(b), "in b\n");
    // An unopenable file discards lines silently.
    LogSystem::SetLogFileName("no/such/folder/log.txt");
    EXPECT_EQ(LogFailure(RESULT_FAIL, "lost line"), RESULT_FAIL);
    EXPECT_FALSE(LogSystem::Get()->GetOFStream().good());
}
