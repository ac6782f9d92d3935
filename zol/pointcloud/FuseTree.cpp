// The flat hash of fused cells: probing, growth, and the memory of the large arrays.
#include <zol/pointcloud/FuseTreeInternal.h>

#include <cstdlib>
#include <cstring>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace ZOL {

namespace {

const std::size_t kFirstSlotCount = 64;
const std::size_t kHugePage = std::size_t(2) << 20;
// From this size on a request takes whole huge pages: even half used, one costs less to
// fault in than the 256 small pages it replaces.
const std::size_t kHugeFrom = std::size_t(1) << 20;
const std::size_t kCacheLine = 64;

}  // namespace

void* AllocateLarge(std::size_t bytes) {
    void* memory = nullptr;
    if (bytes >= kHugeFrom) {
        const std::size_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
        memory = std::aligned_alloc(kHugePage, rounded);
#if defined(__linux__)
        if (memory) madvise(memory, rounded, MADV_HUGEPAGE);
#endif
    } else {
        memory = std::aligned_alloc(kCacheLine, (bytes + kCacheLine) / kCacheLine * kCacheLine);
    }
    if (!memory) throw std::bad_alloc();
    return memory;
}

void FreeLarge(void* memory) { std::free(memory); }

void* AllocateZeroed(std::size_t bytes) {
#if defined(__linux__)
    if (bytes >= kHugeFrom) {
        // Anonymous pages arrive zeroed; the mapping is trimmed to a huge-page boundary.
        const std::size_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
        const std::size_t span = rounded + kHugePage;
        void* raw = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (raw == MAP_FAILED) throw std::bad_alloc();
        char* begin = static_cast<char*>(raw);
        char* aligned =
            begin + (kHugePage - reinterpret_cast<std::uintptr_t>(begin) % kHugePage) % kHugePage;
        if (aligned > begin) munmap(begin, static_cast<std::size_t>(aligned - begin));
        char* end = begin + span;
        if (end > aligned + rounded)
            munmap(aligned + rounded, static_cast<std::size_t>(end - aligned - rounded));
        madvise(aligned, rounded, MADV_HUGEPAGE);
        return aligned;
    }
#endif
    if (bytes == 0) return nullptr;
    void* memory = AllocateLarge(bytes);
    std::memset(memory, 0, bytes);
    return memory;
}

void FreeZeroed(void* memory, std::size_t bytes) {
    if (memory == nullptr) return;
#if defined(__linux__)
    if (bytes >= kHugeFrom) {
        munmap(memory, (bytes + kHugePage - 1) / kHugePage * kHugePage);
        return;
    }
#endif
    FreeLarge(memory);
}

FuseShard& FuseShard::operator=(FuseShard&& other) noexcept {
    if (this != &other) {
        FreeZeroed(mSlots, mSlotCount * sizeof(Slot));
        cells = static_cast<FuseCellStore&&>(other.cells);
        attributes = static_cast<FuseBlocks<double>&&>(other.attributes);
        mSlots = other.mSlots, mSlotCount = other.mSlotCount, mMask = other.mMask;
        mMaxKey = other.mMaxKey;
        other.mSlots = nullptr, other.mSlotCount = 0, other.mMask = 0;
    }
    return *this;
}

int FuseShard::FindOrInsert(const FuseCellKey& key, std::uint64_t hash, bool& inserted) {
    if (4 * (cells.size() + 1) > 3 * mSlotCount) Reserve(cells.size() + 1);
    const std::uint32_t tag = TagOf(hash);
    for (std::uint64_t s = hash & mMask;; s = (s + 1) & mMask) {
        Slot& slot = mSlots[s];
        if (slot.ref == 0) {
            const int id = static_cast<int>(cells.size());
            slot.tag = tag;
            slot.ref = static_cast<std::uint32_t>(id) + 1;
            cells.Append(key);
            attributes.Append();
            mMaxKey.ix = std::max(mMaxKey.ix, key.ix);
            mMaxKey.iy = std::max(mMaxKey.iy, key.iy);
            mMaxKey.iz = std::max(mMaxKey.iz, key.iz);
            inserted = true;
            return id;
        }
        if (slot.tag == tag && cells.At(slot.ref - 1)->key == key) {
            inserted = false;
            return static_cast<int>(slot.ref - 1);
        }
    }
}

void FuseShard::Reserve(std::size_t cellCount) {
    cells.Reserve(cellCount);
    attributes.Reserve(cellCount);
    std::size_t size = mSlotCount == 0 ? kFirstSlotCount : mSlotCount;
    while (3 * size < 4 * cellCount) size *= 2;
    if (size != mSlotCount) Rehash(size);
}

void FuseShard::Rehash(std::size_t slotCount) {
    // Slot positions are the low tag bits, and a table never passes 2^32 slots (cell
    // indices are ints), so the old slots alone place every cell again.
    Slot* slots = static_cast<Slot*>(AllocateZeroed(slotCount * sizeof(Slot)));
    const std::uint64_t mask = slotCount - 1;
    for (std::size_t i = 0; i < mSlotCount; ++i) {
        const Slot& old = mSlots[i];
        if (old.ref == 0) continue;
        std::uint64_t s = old.tag & mask;
        while (slots[s].ref != 0) s = (s + 1) & mask;
        slots[s] = old;
    }
    FreeZeroed(mSlots, mSlotCount * sizeof(Slot));
    mSlots = slots;
    mSlotCount = slotCount;
    mMask = mask;
}

FuseTree::FuseTree(int attributeCount, bool normals) : mNormals(normals) {
    SetAttributeCount(attributeCount);
}

void FuseTree::SetAttributeCount(int attributeCount) {
    mAttributeCount = attributeCount;
    for (FuseShard& shard : shards) shard = FuseShard(attributeCount, mNormals);
}

long long FuseTree::CellCount() const {
    long long count = 0;
    for (const FuseShard& shard : shards) count += static_cast<long long>(shard.cells.size());
    return count;
}

}  // namespace ZOL
