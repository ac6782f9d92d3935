// The log file: opened truncated, one flushed line per message.
#include <zol/runtime/LogSystem.h>

#include <zol/runtime/LogInternal.h>

#include <utility>

namespace ZOL {

LogSystem* LogSystem::mpLogSystem = nullptr;

LogSystem::LogSystem(std::string fileName) : mStream(fileName, std::ios::out | std::ios::trunc) {}

LogSystem::~LogSystem() { mStream.close(); }

LogSystem* LogSystem::Get() {
    if (mpLogSystem == nullptr) {
        mpLogSystem = new LogSystem("tracklog.txt");
    }
    return mpLogSystem;
}

std::basic_ofstream<char>& LogSystem::GetOFStream() { return mStream; }

std::mutex& LogLineMutex() {
    static std::mutex* mutex = new std::mutex();  // outlives every static destructor
    return *mutex;
}

void LogSystem::SetLogFileName(std::string fileName) {
    // No line may be half-way into the stream being closed.
    std::lock_guard<std::mutex> lock(LogLineMutex());
    delete mpLogSystem;
    mpLogSystem = nullptr;
    mpLogSystem = new LogSystem(std::move(fileName));
}

}  // namespace ZOL
