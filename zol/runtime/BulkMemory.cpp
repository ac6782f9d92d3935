// Huge-page advice and directly mapped buffers for large, once-filled memory.
#include <zol/runtime/BulkMemoryInternal.h>

#include <cstdint>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace ZOL {

namespace {
constexpr std::uintptr_t kHugePage = std::uintptr_t(2) << 20;
}  // namespace

void AdviseHugePages(void* data, std::size_t bytes) {
#if defined(__linux__)
    if (data == nullptr || bytes < kBulkBytes) return;
    // madvise takes page-aligned ranges; only whole huge pages can be backed by one.
    const std::uintptr_t begin =
        (reinterpret_cast<std::uintptr_t>(data) + kHugePage - 1) & ~(kHugePage - 1);
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(data) + bytes) & ~(kHugePage - 1);
    if (begin < end) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#else
    (void)data;
    (void)bytes;
#endif
}

void PrefaultPages(const void* data, std::size_t bytes) {
#if defined(__linux__) && defined(MADV_POPULATE_WRITE)
    const std::uintptr_t page = 4096;
    const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(data) + page - 1) & ~(page - 1);
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(data) + bytes) & ~(page - 1);
    if (data != nullptr && begin < end)
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
#else
    (void)data;
    (void)bytes;
#endif
}

char* AllocateBulk(std::size_t bytes) {
#if defined(__linux__)
    if (bytes >= kBulkBytes) {
        void* p = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (p == MAP_FAILED) throw std::bad_alloc();
        AdviseHugePages(p, bytes);
        return static_cast<char*>(p);
    }
#endif
    return new char[bytes];
}

void FreeBulk(char* data, std::size_t bytes) {
    if (data == nullptr) return;
#if defined(__linux__)
    if (bytes >= kBulkBytes) {
        munmap(data, bytes);
        return;
    }
#endif
    delete[] data;
}

}  // namespace ZOL
