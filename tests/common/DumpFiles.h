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

/// Moves the test into a fresh folder of its own for its lifetime, so that tests running
/// in parallel never see each other's dump files; goes back and removes the folder after.
class DumpDirScope {
public:
    DumpDirScope();
    ~DumpDirScope();

private:
    std::string mHome;
    std::string mDir;
};

}  // namespace zoltest
