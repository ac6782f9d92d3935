// Runs a call with one-shot recording armed and finds the dump file it wrote.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <zol/dump/DumpBase.h>

namespace zoltest {

/// Names of the ".dump" files in the working directory.
std::vector<std::string> ListDumpFiles();

/// Arms DumpOnce(), runs \p call and returns the names of the dump files that appeared
/// (sorted); \p status receives the call's status.
std::vector<std::string> RecordCall(const std::function<int()>& call, int* status);

/// The record's name as its Run line spells it ("DumpFillHoleMesh" for hole filling).
std::string RunName(const ZOL::DumpBase& record);

/// Creates the record that \p file names, loads it, runs it with recording armed and
/// expects \p status, the Run line ("<Record>::Run success" or "...::Run failed: "
/// status) and a dump of the replayed call identical to \p file byte for byte (so every
/// field came back exactly); also the line \p note when it is not empty.
/// \return the record after Run, null when it cannot load.
std::unique_ptr<ZOL::DumpBase> ExpectReplays(const std::string& file,
                                             int status,
                                             const std::string& what,
                                             const std::string& note = "");

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
