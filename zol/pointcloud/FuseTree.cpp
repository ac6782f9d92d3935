// The flat hash of fused cells: probing, growth, the ordered pass that sorts the occupied
// keys (a radix sort of packed keys when the indices fit 64 bits together), and the
// memory of the large arrays.
#include <zol/pointcloud/FuseTreeInternal.h>

#include <algorithm>
#include <cstdlib>

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

std::uint32_t TagOf(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 24); }

struct PackedRef {
    std::uint64_t key;
    FuseCellRef ref;
};

// Least-significant-digit radix sort on the low \p keyBits bits, 11 bits per pass.
void RadixSort(LargeVector<PackedRef>& refs, int keyBits) {
    const int kDigitBits = 11;
    const std::uint64_t kDigitMask = (1u << kDigitBits) - 1;
    LargeVector<PackedRef> scratch(refs.size());
    std::vector<std::size_t> counts(std::size_t(1) << kDigitBits);
    for (int shift = 0; shift < keyBits; shift += kDigitBits) {
        std::fill(counts.begin(), counts.end(), 0);
        for (const PackedRef& r : refs) ++counts[(r.key >> shift) & kDigitMask];
        std::size_t sum = 0;
        for (std::size_t& c : counts) {
            const std::size_t n = c;
            c = sum;
            sum += n;
        }
        for (const PackedRef& r : refs) scratch[counts[(r.key >> shift) & kDigitMask]++] = r;
        refs.swap(scratch);
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

int FuseShard::FindOrInsert(const FuseCellKey& key, std::uint64_t hash, bool& inserted) {
    if (2 * (cells.size() + 1) > mSlots.size()) Grow();
    const std::uint32_t tag = TagOf(hash);
    for (std::uint64_t s = hash & mMask;; s = (s + 1) & mMask) {
        Slot& slot = mSlots[s];
        if (slot.cell < 0) {
            slot.tag = tag;
            slot.cell = static_cast<int>(cells.size());
            cells.Append();
            FuseCell* cell = new (cells.At(slot.cell)) FuseCell;
            cell->weight = 0;
            cell->key = key;
            attributes.Append();
            inserted = true;
            return slot.cell;
        }
        if (slot.tag == tag && cells.At(slot.cell)->key == key) {
            inserted = false;
            return slot.cell;
        }
    }
}

void FuseShard::PrefetchCell(std::uint64_t hash) const {
#if defined(__GNUC__)
    if (mSlots.empty()) return;
    const std::uint32_t tag = TagOf(hash);
    for (std::uint64_t s = hash & mMask;; s = (s + 1) & mMask) {
        const Slot& slot = mSlots[s];
        if (slot.cell < 0) return;
        if (slot.tag == tag) {
            __builtin_prefetch(cells.At(slot.cell));
            return;
        }
    }
#else
    (void)hash;
#endif
}

void FuseShard::Grow() {
    const std::size_t size = mSlots.empty() ? kFirstSlotCount : 2 * mSlots.size();
    LargeVector<Slot>(size, Slot{0, -1}).swap(mSlots);
    mMask = size - 1;
    for (std::size_t c = 0; c < cells.size(); ++c) {
        const std::uint64_t hash = FuseTree::Hash(cells.At(c)->key);
        std::uint64_t s = hash & mMask;
        while (mSlots[s].cell >= 0) s = (s + 1) & mMask;
        mSlots[s] = Slot{TagOf(hash), static_cast<int>(c)};
    }
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

LargeVector<FuseCellRef> FuseTree::SortedCells() const {
    unsigned maxX = 0, maxY = 0, maxZ = 0;
    std::size_t total = 0;
    for (const FuseShard& shard : shards) {
        total += shard.cells.size();
        for (std::size_t c = 0; c < shard.cells.size(); ++c) {
            const FuseCellKey& key = shard.cells.At(c)->key;
            maxX = std::max(maxX, static_cast<unsigned>(key.ix));
            maxY = std::max(maxY, static_cast<unsigned>(key.iy));
            maxZ = std::max(maxZ, static_cast<unsigned>(key.iz));
        }
    }
    const int bitsY = BitWidth(maxY), bitsZ = BitWidth(maxZ);
    const int keyBits = BitWidth(maxX) + bitsY + bitsZ;
    LargeVector<FuseCellRef> sorted;
    sorted.reserve(total);
    if (keyBits <= 64) {
        // Packing ix above iy above iz keeps their lexicographic order in one integer;
        // each width is at most 31 bits, so the shifts stay below 64.
        LargeVector<PackedRef> refs;
        refs.reserve(total);
        for (int s = 0; s < kShardCount; ++s) {
            const FuseBlocks<FuseCell>& cells = shards[s].cells;
            for (std::size_t c = 0; c < cells.size(); ++c) {
                const FuseCellKey& k = cells.At(c)->key;
                const std::uint64_t packed = std::uint64_t(unsigned(k.ix)) << (bitsY + bitsZ) |
                                             std::uint64_t(unsigned(k.iy)) << bitsZ |
                                             std::uint64_t(unsigned(k.iz));
                refs.push_back(PackedRef{packed, FuseCellRef{s, static_cast<int>(c)}});
            }
        }
        RadixSort(refs, keyBits);
        for (const PackedRef& r : refs) sorted.push_back(r.ref);
        return sorted;
    }
    for (int s = 0; s < kShardCount; ++s) {
        for (std::size_t c = 0; c < shards[s].cells.size(); ++c) {
            sorted.push_back(FuseCellRef{s, static_cast<int>(c)});
        }
    }
    auto keyOf = [this](const FuseCellRef& r) -> const FuseCellKey& {
        return shards[r.shard].cells.At(r.cell)->key;
    };
    std::sort(sorted.begin(), sorted.end(), [&](const FuseCellRef& a, const FuseCellRef& b) {
        const FuseCellKey& ka = keyOf(a);
        const FuseCellKey& kb = keyOf(b);
        if (ka.ix != kb.ix) return ka.ix < kb.ix;
        if (ka.iy != kb.iy) return ka.iy < kb.iy;
        return ka.iz < kb.iz;
    });
    return sorted;
}

}  // namespace ZOL
