// The tool's failure path: the library log kept in a file of the tool's own, read back
// after a failing call so that the user sees the library's own reason next to ours.
#include "ToolCommon.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <zol/runtime/LogSystem.h>

namespace zoltool {

namespace {
std::string gLogPath;
bool gLogIsTemporary = false;

std::uint64_t FileSize(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return error ? 0 : static_cast<std::uint64_t>(size);
}
}  // namespace

GlobalOptions& Globals() {
    static GlobalOptions options;
    return options;
}

void LibraryLog::Open(const std::string& keepAs) {
    gLogIsTemporary = keepAs.empty();
    if (gLogIsTemporary) {
        std::error_code error;
        std::filesystem::path dir = std::filesystem::temp_directory_path(error);
        if (error) dir = ".";
        gLogPath = (dir / ("zol-" + std::to_string(getpid()) + ".log")).string();
    } else {
        gLogPath = keepAs;
    }
    ZOL::LogSystem::SetLogFileName(gLogPath);
}

void LibraryLog::Close() {
    // The library keeps its stream open until the process ends; a temporary log is
    // unlinked under it, and the default "tracklog.txt" is never opened by the tool.
    std::error_code error;
    if (gLogIsTemporary && !gLogPath.empty()) std::filesystem::remove(gLogPath, error);
    gLogPath.clear();
}

std::uint64_t LibraryLog::Mark() { return gLogPath.empty() ? 0 : FileSize(gLogPath); }

std::vector<std::string> LibraryLog::LinesSince(std::uint64_t mark) {
    std::vector<std::string> lines;
    if (gLogPath.empty()) return lines;
    std::ifstream in(gLogPath, std::ios::binary);
    in.seekg(static_cast<std::streamoff>(mark));
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

void Fail(int code, const std::string& message, std::uint64_t mark) {
    std::string text = message;
    const std::vector<std::string> lines = LibraryLog::LinesSince(mark);
    if (!lines.empty()) text += "\n  library log: " + lines.back();
    throw ToolFailure{code, text};
}

void CheckStatus(int status, const std::string& what, std::uint64_t mark) {
    if (status == 0) return;
    Fail(EXIT_FAILED, what + " failed (status " + std::to_string(status) + ")", mark);
}

void Say(const char* format, ...) {
    if (Globals().quiet) return;
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
    std::fflush(stdout);
}

}  // namespace zoltool
