// Thread-count setting. Atomic so that a host may change it from any thread.
#include <zol/runtime/ThreadCount.h>

#include <atomic>
#include <thread>

namespace ZOL {

namespace {
std::atomic<int> gThreadCount{0};
}  // namespace

void SetThreadCount(int count) { gThreadCount.store(count, std::memory_order_relaxed); }

int GetThreadCount() {
    const int count = gThreadCount.load(std::memory_order_relaxed);
    if (count >= 1) return count;
    const unsigned processors = std::thread::hardware_concurrency();
    return processors == 0 ? 1 : static_cast<int>(processors);
}

}  // namespace ZOL
