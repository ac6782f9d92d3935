// What every `zol` subcommand shares: the exit codes, the failure that carries one of
// them up to main, the library log that explains a failing call, and the global options.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zoltool {

/// Exit codes of the tool, listed in `zol --help` and the README.
enum ExitCode {
    EXIT_OK = 0,          ///< the command did what was asked
    EXIT_FAILED = 1,      ///< a library operation failed on readable input
    EXIT_USAGE = 2,       ///< bad arguments: unknown option, missing argument, bad value
    EXIT_BAD_INPUT = 3,   ///< an input file is missing, unreadable, damaged or empty
    EXIT_BAD_OUTPUT = 4,  ///< an output file cannot be written
};

/// Thrown inside the tool (never across the library) to end the command with \p code;
/// main prints the message on standard error as "zol <command>: <message>".
struct ToolFailure {
    int code;
    std::string message;
};

/// Options every subcommand accepts.
struct GlobalOptions {
    int threads = 0;      ///< worker threads; 0 for the processor count
    std::string logFile;  ///< keep the library log here; empty for a temporary file
    bool quiet = false;   ///< no progress bar and no per-step lines
};

/// The options of the running command (set by main before the command runs).
GlobalOptions& Globals();

/// The library log, pointed at a file of the tool's own so that the lines of a failing
/// call can be read back and shown to the user.
class LibraryLog {
public:
    /// Opens the log in \p keepAs, or in a fresh temporary file (removed by Close) when
    /// it is empty.
    static void Open(const std::string& keepAs);
    /// Removes a temporary log (the library's stream stays open until exit).
    static void Close();
    /// The current end of the log; LinesSince(mark) then gives what was added.
    static std::uint64_t Mark();
    /// The lines written since \p mark, in order.
    static std::vector<std::string> LinesSince(std::uint64_t mark);
};

/// Ends the command with \p code: \p message, then the last line the library logged
/// since \p mark (the line that says why the call failed) when there is one.
[[noreturn]] void Fail(int code, const std::string& message, std::uint64_t mark);

/// Fails with EXIT_FAILED unless \p status is 0: "<what> failed (status <status>)" and
/// the library's line. \p what names the call and the file it worked on.
void CheckStatus(int status, const std::string& what, std::uint64_t mark);

/// Prints a line on standard output unless --quiet was given.
void Say(const char* format, ...);

}  // namespace zoltool
