// `zol replay FILE.dump [--out FILE]`: runs a recorded API call again.
#pragma once

#include <string>

namespace zoltool {

/// Creates the record named by the dump file's first line, loads the file, runs it and
/// prints the status; with \p outFile, writes the record's result mesh (or else cloud) in
/// the format named by its extension.
/// \return 0 when the replayed call succeeded, 1 when it failed, 2 when the file is not a
///         dump file or the result cannot be written.
int RunReplay(const std::string& dumpFile, const std::string& outFile);

}  // namespace zoltool
