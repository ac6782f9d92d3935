// The replaced global operator new and delete behind AllocationScope: each block gets a
// 16-byte header (keeping malloc's alignment) with its size and the scope it came from,
// so blocks from before a scope, or from an earlier one, never count against it.
#include "tests/common/AllocationCounter.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

struct alignas(16) Header {
    std::size_t size;
    std::uint64_t scope;  // 0: allocated outside every scope
};
static_assert(sizeof(Header) == 16, "the header keeps malloc's 16-byte alignment");

std::atomic<std::uint64_t> gScope{0};  // the open scope, 0 when none
std::atomic<std::uint64_t> gLastScope{0};
std::atomic<std::int64_t> gCurrent{0};
std::atomic<std::int64_t> gPeak{0};

void* Allocate(std::size_t size) {
    Header* header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
    if (header == nullptr) throw std::bad_alloc();
    header->size = size;
    header->scope = gScope.load(std::memory_order_relaxed);
    if (header->scope != 0) {
        const std::int64_t now =
            gCurrent.fetch_add(static_cast<std::int64_t>(size)) + static_cast<std::int64_t>(size);
        std::int64_t peak = gPeak.load();
        while (now > peak && !gPeak.compare_exchange_weak(peak, now)) {
        }
    }
    return header + 1;
}

void Release(void* block) {
    if (block == nullptr) return;
    Header* header = static_cast<Header*>(block) - 1;
    if (header->scope != 0 && header->scope == gScope.load(std::memory_order_relaxed)) {
        gCurrent.fetch_sub(static_cast<std::int64_t>(header->size));
    }
    std::free(header);
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return Allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
void operator delete(void* block) noexcept { Release(block); }
void operator delete[](void* block) noexcept { Release(block); }
void operator delete(void* block, std::size_t) noexcept { Release(block); }
void operator delete[](void* block, std::size_t) noexcept { Release(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { Release(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { Release(block); }

namespace zoltest {

AllocationScope::AllocationScope() {
    gCurrent = 0;
    gPeak = 0;
    gScope = ++gLastScope;
}

AllocationScope::~AllocationScope() { gScope = 0; }

std::size_t AllocationScope::Peak() const { return static_cast<std::size_t>(gPeak.load()); }

}  // namespace zoltest
