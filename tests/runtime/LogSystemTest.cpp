// The log file: truncation, replacement, one flushed line per message, level gating.
#include <gtest/gtest.h>

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
