// Profiler::GetTime over the steady clock: the counter at the first call and the
// counter frequency are the only state.
#include <zol/runtime/Profiler.h>

#include <chrono>
#include <cstdint>
#include <mutex>

namespace ZOL {

namespace {
std::once_flag gStartOnce;
std::int64_t gStartCount = 0;
const std::int64_t gFrequency =
    std::chrono::steady_clock::period::den / std::chrono::steady_clock::period::num;

std::int64_t ReadCounter() { return std::chrono::steady_clock::now().time_since_epoch().count(); }
}  // namespace

double Profiler::GetTime() {
    bool first = false;
    std::call_once(gStartOnce, [&first] {
        gStartCount = ReadCounter();
        first = true;
    });
    if (first) return 0.0;
    return static_cast<double>(ReadCounter() - gStartCount) / static_cast<double>(gFrequency);
}

}  // namespace ZOL
