// Shared helpers of the dump tests: the dump files a call writes, and their removal.
#include "tests/common/DumpFiles.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include <zol/dump/DumpBase.h>

namespace zoltest {

std::vector<std::string> ListDumpFiles() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        if (entry.path().extension() == ".dump") names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> RecordCall(const std::function<int()>& call, int* status) {
    const std::vector<std::string> before = ListDumpFiles();
    ZOL::DumpOnce();
    *status = call();
    std::vector<std::string> added;
    for (const std::string& name : ListDumpFiles()) {
        if (!std::binary_search(before.begin(), before.end(), name)) added.push_back(name);
    }
    return added;
}

DumpDirScope::DumpDirScope() {
    const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
    mHome = std::filesystem::current_path().string();
    mDir =
        mHome + "/dumpdir_" +
        (info ? std::string(info->test_suite_name()) + "_" + info->name() : std::string("scratch"));
    std::filesystem::remove_all(mDir);
    std::filesystem::create_directory(mDir);
    std::filesystem::current_path(mDir);
}

DumpDirScope::~DumpDirScope() {
    std::filesystem::current_path(mHome);
    std::error_code ignored;
    std::filesystem::remove_all(mDir, ignored);
}

}  // namespace zoltest
