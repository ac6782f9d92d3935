// Runs a call with one-shot recording armed and finds the dump file it wrote.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace zoltest {

/// Names of the ".dump" files in the working directory.
std::vector<std::string> ListDumpFiles();

/// Arms DumpOnce(), runs \p call and returns the names of the dump files that appeared
/// (sorted); \p status receives the call's status.
std::vector<std::string> RecordCall(const std::function<int()>& call, int* status);

/// Removes the dump files that appear during its lifetime.
class DumpFileCleanup {
public:
    DumpFileCleanup();
    ~DumpFileCleanup();

private:
    std::vector<std::string> mBefore;
};

}  // namespace zoltest
