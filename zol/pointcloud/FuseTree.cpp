// The flat hash of fused cells: probing, growth, the ordered pass that sorts the occupied
// keys (a radix sort of packed keys when the indices fit 64 bits together), and the
// memory of the large arrays.
#include <zol/pointcloud/FuseTreeInternal.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace ZOL {

namespace {

const std::size_t kFirstSlotCount = 64;
const std::size_t kHugePage = std::size_t(2) << 20;
const std::size_t kCacheLine = 64;

int BitWidth(unsigned value) {
    int bits = 0;
    while (value != 0) {
        ++bits;
        value >>= 1;
    }
    return bits;
}

std::uint32_t TagOf(std::uint64_t hash) { return static_cast<std::uint32_t>(hash); }

// Least-significant-digit radix sort of \p codes on their bits [lowBit, lowBit + keyBits),
// in as few passes of at most 11 bits as cover them; a pass whose digit is the same for
// every code moves nothing and is skipped.
void RadixSort(LargeVector<std::uint64_t>& codes, int lowBit, int keyBits) {
    const int passes = (keyBits + 10) / 11;
    if (passes == 0) return;
    const int digitBits = (keyBits + passes - 1) / passes;
    const std::uint64_t digitMask = (std::uint64_t(1) << digitBits) - 1;
    LargeVector<std::uint64_t> scratch(codes.size());
    std::vector<std::size_t> counts(std::size_t(1) << digitBits);
    for (int shift = lowBit; shift < lowBit + keyBits; shift += digitBits) {
        std::fill(counts.begin(), counts.end(), 0);
        for (const std::uint64_t c : codes) ++counts[(c >> shift) & digitMask];
        if (counts[(codes.front() >> shift) & digitMask] == codes.size()) continue;
        std::size_t sum = 0;
        for (std::size_t& c : counts) {
            const std::size_t n = c;
            c = sum;
            sum += n;
        }
        std::uint64_t* out = scratch.data();
        for (const std::uint64_t c : codes) out[counts[(c >> shift) & digitMask]++] = c;
        codes.swap(scratch);
    }
}

}  // namespace

void* AllocateLarge(std::size_t bytes) {
    void* memory = nullptr;
    if (bytes >= kHugePage) {
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
    if (bytes >= kHugePage) {
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
    if (bytes >= kHugePage) {
        munmap(memory, (bytes + kHugePage - 1) / kHugePage * kHugePage);
        return;
    }
#endif
    FreeLarge(memory);
}

FuseShard& FuseShard::operator=(FuseShard&& other) noexcept {
    if (this != &other) {
        FreeZeroed(mSlots, mSlotCount * sizeof(Slot));
        cells = static_cast<FuseBlocks<FuseCell>&&>(other.cells);
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
            cells.Append();
            FuseCell* cell = new (cells.At(id)) FuseCell;
            cell->weight = 0;
            cell->key = key;
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

void FuseShard::PrefetchCell(std::uint64_t hash) const {
#if defined(__GNUC__)
    if (mSlots == nullptr) return;
    const std::uint32_t tag = TagOf(hash);
    for (std::uint64_t s = hash & mMask;; s = (s + 1) & mMask) {
        const Slot& slot = mSlots[s];
        if (slot.ref == 0) return;
        if (slot.tag == tag) {
            __builtin_prefetch(cells.At(slot.ref - 1));
            return;
        }
    }
#else
    (void)hash;
#endif
}

void FuseShard::Reserve(std::size_t cellCount) {
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

FuseTree::FuseTree(int attributeCount) { SetAttributeCount(attributeCount); }

void FuseTree::SetAttributeCount(int attributeCount) {
    mAttributeCount = attributeCount;
    for (FuseShard& shard : shards) shard = FuseShard(attributeCount);
}

long long FuseTree::CellCount() const {
    long long count = 0;
    for (const FuseShard& shard : shards) count += static_cast<long long>(shard.cells.size());
    return count;
}

LargeVector<std::uint64_t> FuseTree::SortedCells() const {
    unsigned maxX = 0, maxY = 0, maxZ = 0;
    std::size_t total = 0, largest = 0;
    for (const FuseShard& shard : shards) {
        total += shard.cells.size();
        largest = std::max(largest, shard.cells.size());
        maxX = std::max(maxX, static_cast<unsigned>(shard.MaxKey().ix));
        maxY = std::max(maxY, static_cast<unsigned>(shard.MaxKey().iy));
        maxZ = std::max(maxZ, static_cast<unsigned>(shard.MaxKey().iz));
    }
    LargeVector<std::uint64_t> codes;
    codes.reserve(total);
    if (total == 0) return codes;
    const int bitsY = BitWidth(maxY), bitsZ = BitWidth(maxZ);
    const int keyBits = BitWidth(maxX) + bitsY + bitsZ;
    const int cellBits = BitWidth(static_cast<unsigned>(largest));
    const int lowBit = kShardBits + cellBits;
    if (keyBits + lowBit <= 64) {
        // Packing ix above iy above iz keeps their lexicographic order in one integer, and
        // the shard and cell index below it ride along; each width is at most 31 bits.
        for (int s = 0; s < kShardCount; ++s) {
            const FuseBlocks<FuseCell>& cells = shards[s].cells;
            for (std::size_t c = 0; c < cells.size(); ++c) {
                const FuseCellKey& k = cells.At(c)->key;
                const std::uint64_t key = std::uint64_t(unsigned(k.ix)) << (bitsY + bitsZ) |
                                          std::uint64_t(unsigned(k.iy)) << bitsZ |
                                          std::uint64_t(unsigned(k.iz));
                codes.push_back(key << lowBit | std::uint64_t(s) << cellBits | c);
            }
        }
        RadixSort(codes, lowBit, keyBits);
        const std::uint64_t cellMask = (std::uint64_t(1) << cellBits) - 1;
        for (std::uint64_t& code : codes) {
            code =
                RefCode(static_cast<int>((code >> cellBits) & (kShardCount - 1)), code & cellMask);
        }
        return codes;
    }
    for (int s = 0; s < kShardCount; ++s) {
        for (std::size_t c = 0; c < shards[s].cells.size(); ++c) codes.push_back(RefCode(s, c));
    }
    auto keyOf = [this](std::uint64_t code) -> const FuseCellKey& {
        const FuseCellRef r = RefOf(code);
        return shards[r.shard].cells.At(r.cell)->key;
    };
    std::sort(codes.begin(), codes.end(), [&](std::uint64_t a, std::uint64_t b) {
        const FuseCellKey& ka = keyOf(a);
        const FuseCellKey& kb = keyOf(b);
        if (ka.ix != kb.ix) return ka.ix < kb.ix;
        if (ka.iy != kb.iy) return ka.iy < kb.iy;
        return ka.iz < kb.iz;
    });
    return codes;
}

}  // namespace ZOL
