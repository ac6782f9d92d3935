// The process-wide text log. Every diagnostic of the library is one line in it,
// flushed at once, with no timestamp or tag.
#pragma once

#include <fstream>
#include <string>

#include <zol/runtime/Export.h>

namespace ZOL {

/// Detail levels of diagnostic lines; lower is more detailed.
enum LogLevel : int {
    LOG_TRACE = 0,    ///< worker traces, early-stop notices, intermediate values
    LOG_FAILURE = 1,  ///< failures of nested steps inside long operations
    LOG_MARKER = 2    ///< a few progress markers
};

/// Lines of a level below this one are not written.
inline constexpr LogLevel gSystemLogLevel = LOG_FAILURE;

/// The single log file ("tracklog.txt" in the working directory by default).
/// The library's own lines are written under one lock, so lines of several threads never
/// mix; a host writing to GetOFStream() itself does so without that lock.
class ZOL_API LogSystem {
public:
    /// \return the instance, created on first call on "tracklog.txt" (truncated).
    static LogSystem* Get();
    /// \return the stream that lines are written to.
    std::basic_ofstream<char>& GetOFStream();
    /// Closes the current file (kept on disk as it is) and opens \p fileName, truncated.
    static void SetLogFileName(std::string fileName);

    ~LogSystem();
    LogSystem(const LogSystem&) = delete;
    LogSystem& operator=(const LogSystem&) = delete;

private:
    explicit LogSystem(std::string fileName);

    static LogSystem* mpLogSystem;
    std::basic_ofstream<char> mStream;
};

}  // namespace ZOL
