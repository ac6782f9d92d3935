// A scope guard over the process-wide thread count, so a test that fails half way
// still leaves the default for the tests after it.
#pragma once

#include <zol/runtime/ThreadCount.h>

namespace zoltest {

/// Sets the thread count for its lifetime and restores the default (0) after.
class ThreadCountScope {
public:
    explicit ThreadCountScope(int count) { ZOL::SetThreadCount(count); }
    ~ThreadCountScope() { ZOL::SetThreadCount(0); }
    ThreadCountScope(const ThreadCountScope&) = delete;
    ThreadCountScope& operator=(const ThreadCountScope&) = delete;
};

}  // namespace zoltest
