// Replays every input the fuzzers found (tests/io/regressions/<reader>-<n>.<ext>) through
// the fuzz targets' own reader table: each now gives a sound result, or null with its one
// log line. The sanitizer builds of this suite replay them under ASan and UBSan too.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/FuzzReaders.h"
#include "tests/common/TestData.h"

namespace {

const std::string kFolder = std::string(ZOL_SOURCE_DIR) + "/tests/io/regressions";

}  // namespace

TEST(ReaderRegression, EveryFuzzFindingIsReadSafely) {
    // What each file gives now: its element count, or -1 and the line of its refusal.
    const struct {
        const char* file;
        int elements;
        const char* line;
    } cases[] = {
        // Colours beyond [0, 1] in our own formats used to be kept as written.
        {"cloud_zpc-1.zpc", 5, ""},
        {"cloud_zbp-1.zbp", 5, ""},
        {"cloud_zbg-1.zbg", 4, ""},
        // A point count beyond the range of int64 was converted before it was bounded.
        {"cloud_zpc-2.zpc", -1, "ImportPointCloudByZPC: point count 2e+54 exceeds the file size"},
        // Grid columns times rows overflowed int64 (found by review, replayed alike).
        {"cloud_ply_ascii-1.ply", 1, ""},
    };
    std::vector<std::string> listed;
    for (const auto& c : cases) listed.push_back(c.file);
    for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
        const std::string name = entry.path().filename().string();
        EXPECT_NE(std::find(listed.begin(), listed.end(), name), listed.end())
            << name << " has no expected outcome";
    }
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string name = c.file;
        const zolfuzz::Reader* reader = zolfuzz::FindReader(name.substr(0, name.find('-')));
        ASSERT_NE(reader, nullptr);
        const std::string bytes = zoltest::ReadFile(kFolder + "/" + name);
        ASSERT_FALSE(bytes.empty());
        // An exactly sized heap copy, as the fuzzer gives, so an overread is seen.
        std::unique_ptr<char[]> copy(new char[bytes.size()]);
        std::memcpy(copy.get(), bytes.data(), bytes.size());
        zoltest::LogCapture log;
        const zolfuzz::Outcome outcome = reader->run(std::string_view(copy.get(), bytes.size()));
        EXPECT_TRUE(outcome.sound);
        EXPECT_EQ(outcome.parsed ? outcome.elements : -1, c.elements);
        const std::vector<std::string> expected =
            *c.line ? std::vector<std::string>{c.line} : std::vector<std::string>{};
        EXPECT_EQ(log.Lines(), expected);
    }
}
