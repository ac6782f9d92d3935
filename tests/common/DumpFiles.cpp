// Shared helpers of the dump tests: the dump files a call writes, and their removal.
#include "tests/common/DumpFiles.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <typeinfo>

#include <gtest/gtest.h>

#include <zol/dump/DumpBase.h>
#include <zol/dump/DumpRecordTable.h>
#include <zol/runtime/Constants.h>

#include "tests/common/TestData.h"

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

std::string RunName(const ZOL::DumpBase& record) {
    for (const ZOL::DumpRecordRow& row : ZOL::GetDumpRecordRows()) {
        const std::unique_ptr<ZOL::DumpBase> same(row.create());
        if (typeid(*same) != typeid(record)) continue;
        return row.value == ZOL::API_FillMeshHole ? "DumpFillHoleMesh" : row.name;
    }
    return "";
}

std::unique_ptr<ZOL::DumpBase> ExpectReplays(const std::string& file,
                                             int status,
                                             const std::string& what,
                                             const std::string& note) {
    int apiName = 0;
    std::ifstream head(file);
    std::unique_ptr<ZOL::DumpBase> record;
    if (ZOL::DumpBase::ReadInt(head, apiName)) record.reset(ZOL::CreateDumpRecord(apiName, file));
    if (record == nullptr || record->LoadDumpFile(file) != ZOL::RESULT_OK) {
        ADD_FAILURE() << what << ": " << file << " does not load";
        return nullptr;
    }
    LogCapture log;
    int replayed = 0;
    const std::vector<std::string> again = RecordCall([&] { return record->Run(); }, &replayed);
    EXPECT_EQ(replayed, status) << what;
    const std::string line =
        RunName(*record) + (status == ZOL::RESULT_OK ? std::string("::Run success")
                                                     : "::Run failed: " + std::to_string(status));
    EXPECT_TRUE(log.Contains(line)) << what << ": no line " << line;
    if (!note.empty()) {
        EXPECT_TRUE(log.Contains(note)) << what << ": no line " << note;
    }
    EXPECT_EQ(again.size(), 1u) << what;
    if (again.size() == 1) {
        EXPECT_EQ(ReadFile(again[0]), ReadFile(file)) << what;
    }
    return record;
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
