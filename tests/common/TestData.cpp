// Shared test helpers.
#include "tests/common/TestData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include <zol/runtime/LogSystem.h>

namespace zoltest {

std::string DataPath(const std::string& relative) {
    return std::string(ZOL_TEST_DATA) + "/" + relative;
}

std::string ScratchPath(const std::string& name) {
    const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string prefix =
        info ? std::string(info->test_suite_name()) + "_" + info->name() : "scratch";
    std::replace(prefix.begin(), prefix.end(), '/', '_');
    return prefix + "_" + name;
}

void WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

std::vector<std::string> ReadLines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(in, line)) lines.push_back(line);
    return lines;
}

LogCapture::LogCapture() : mPath(ScratchPath("log.txt")) { ZOL::LogSystem::SetLogFileName(mPath); }

LogCapture::~LogCapture() { ZOL::LogSystem::SetLogFileName("tracklog.txt"); }

std::vector<std::string> LogCapture::Lines() const { return ReadLines(mPath); }

std::vector<std::string> LogCapture::LinesWithoutPools() const {
    std::vector<std::string> lines = Lines();
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](const std::string& line) {
                                   return line.rfind("ThreadPool Free Memory...", 0) == 0;
                               }),
                lines.end());
    return lines;
}

bool LogCapture::Contains(const std::string& line) const {
    const std::vector<std::string> lines = Lines();
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

}  // namespace zoltest
