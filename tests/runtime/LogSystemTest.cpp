// The log file: truncation, replacement, one flushed line per message, level gating.
#include <gtest/gtest.h>

#include <fstream>

#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/LogSystem.h>

#include "tests/common/TestData.h"

using namespace ZOL;

TEST(LogSystem, LineIsWrittenAndFlushedAtOnce) {
    zoltest::LogCapture log;
    LogLine("TriMesh::FuseVertex: vertexCount < ", 3);
    EXPECT_EQ(log.Lines(), std::vector<std::string>{"TriMesh::FuseVertex: vertexCount < 3"});
}

TEST(LogSystem, FailureHelperReturnsItsCode) {
    zoltest::LogCapture log;
    EXPECT_EQ(LogFailure(RESULT_INVALID_INPUT, "X::Y: n < 3"), RESULT_INVALID_INPUT);
    EXPECT_TRUE(log.Contains("X::Y: n < 3"));
}

TEST(LogSystem, TraceLevelIsGatedAndFailureLevelIsNot) {
    zoltest::LogCapture log;
    LogAt(LOG_TRACE, "trace");
    LogAt(LOG_FAILURE, "failure");
    LogAt(LOG_MARKER, "marker");
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{"failure", "marker"}));
}

namespace {
void WriteText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

// Restores the default log when a test that renames it ends.
struct DefaultLogRestorer {
    ~DefaultLogRestorer() { LogSystem::SetLogFileName("tracklog.txt"); }
};
}  // namespace

TEST(LogSystem, OpeningTruncatesAndReopeningTheSameNameTruncatesAgain) {
    DefaultLogRestorer restore;
    const std::string path = zoltest::ScratchPath("log.txt");
    WriteText(path, "left over from an earlier run\n");
    LogSystem::SetLogFileName(path);
    EXPECT_EQ(zoltest::ReadFile(path), "");
    LogLine("first");
    EXPECT_EQ(zoltest::ReadFile(path), "first\n");
    LogSystem::SetLogFileName(path);
    EXPECT_EQ(zoltest::ReadFile(path), "");
    LogLine("second");
    EXPECT_EQ(zoltest::ReadFile(path), "second\n");
}

TEST(LogSystem, ReplacedFileIsKeptAsItWas) {
    DefaultLogRestorer restore;
    const std::string a = zoltest::ScratchPath("a.txt");
    const std::string b = zoltest::ScratchPath("b.txt");
    LogSystem::SetLogFileName(a);
    LogLine("in a ", 1, " ", 2.5);
    LogSystem::SetLogFileName(b);
    LogLine("in b");
    EXPECT_EQ(zoltest::ReadFile(a), "in a 1 2.5\n");
    EXPECT_EQ(zoltest::ReadFile(b), "in b\n");
    EXPECT_EQ(&LogSystem::Get()->GetOFStream(), &LogSystem::Get()->GetOFStream());
}

TEST(LogSystem, NumbersUseTheStreamDefaultOfSixDigits) {
    zoltest::LogCapture log;
    LogLine("v = ", 3.14159265, " n = ", -42, " big = ", 1234567.0, " tiny = ", 1e-7);
    EXPECT_EQ(log.Lines(),
              std::vector<std::string>{"v = 3.14159 n = -42 big = 1.23457e+06 tiny = 1e-07"});
}

TEST(LogSystem, UnopenableFileDiscardsLinesSilently) {
    DefaultLogRestorer restore;
    LogSystem::SetLogFileName("no/such/folder/log.txt");
    EXPECT_EQ(LogFailure(RESULT_FAIL, "lost line"), RESULT_FAIL);
    EXPECT_FALSE(LogSystem::Get()->GetOFStream().good());
}
