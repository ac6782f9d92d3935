// Paths of the real data, scratch files and reading back the log.
#pragma once

#include <string>
#include <vector>

namespace zoltest {

/// Path of a file under the shared real-data folder (e.g. "bunny/bun000.ply").
std::string DataPath(const std::string& relative);
/// A fresh path in the test's scratch directory (not created).
std::string ScratchPath(const std::string& name);
/// Writes \p bytes as the whole file.
void WriteFile(const std::string& path, const std::string& bytes);
/// Whole file as bytes; empty when it cannot be read.
std::string ReadFile(const std::string& path);
/// Lines of a text file without their line ends.
std::vector<std::string> ReadLines(const std::string& path);

/// Points the library log at a file of its own for its lifetime and reads it back.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    std::vector<std::string> Lines() const;
    /// Lines() without the teardown line that every thread pool writes, for checking
    /// what a parallel operation itself logged.
    std::vector<std::string> LinesWithoutPools() const;
    /// True when some line equals \p line exactly.
    bool Contains(const std::string& line) const;

private:
    std::string mPath;
};

}  // namespace zoltest
