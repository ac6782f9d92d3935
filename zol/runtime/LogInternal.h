// Helpers that write one log line from a list of parts, so that each of the many log
// call sites in the library stays one readable line with its full text visible.
#pragma once

#include <mutex>
#include <ostream>

#include <zol/runtime/LogSystem.h>

namespace ZOL {

/// The lock that keeps each line of the library whole: pool workers log too (trace lines,
/// the pool's own destructor line when a task runs a nested parallel step), and two
/// threads writing one stream at once would corrupt it, not merely interleave lines.
std::mutex& LogLineMutex();

/// Writes the parts as one line (default stream formatting) and flushes.
template <typename... Parts>
void LogLine(const Parts&... parts) {
    std::lock_guard<std::mutex> lock(LogLineMutex());
    std::ostream& out = LogSystem::Get()->GetOFStream();
    (out << ... << parts) << std::endl;
}

/// Writes the line only when \p level passes gSystemLogLevel.
template <typename... Parts>
void LogAt(LogLevel level, const Parts&... parts) {
    if (gSystemLogLevel <= level) LogLine(parts...);
}

/// Writes the line and returns \p code: `return LogFailure(RESULT_INVALID_INPUT, "X::Y: n < 3");`
template <typename... Parts>
int LogFailure(int code, const Parts&... parts) {
    LogLine(parts...);
    return code;
}

}  // namespace ZOL
