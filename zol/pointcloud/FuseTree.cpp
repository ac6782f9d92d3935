// The flat hash of fused cells: probing, growth, and the ordered pass that sorts the
// occupied keys, by a radix sort of packed keys when the indices fit 64 bits together.
#include <zol/pointcloud/FuseTreeInternal.h>

#include <algorithm>
#include <cstddef>

namespace ZOL {

namespace {

const std::size_t kFirstSlotCount = 16;

int BitWidth(unsigned value) {
    int bits = 0;
    while (value != 0) {
        ++bits;
        value >>= 1;
    }
    return bits;
}

struct PackedRef {
    std::uint64_t key;
    int shard;
    int cell;
};

// Least-significant-digit radix sort on the low \p keyBits bits, 8 bits per pass.
void RadixSort(std::vector<PackedRef>& refs, int keyBits) {
    std::vector<PackedRef> scratch(refs.size());
    for (int shift = 0; shift < keyBits; shift += 8) {
        std::size_t counts[257] = {};
        for (const PackedRef& r : refs) ++counts[((r.key >> shift) & 0xff) + 1];
        for (int d = 0; d < 256; ++d) counts[d + 1] += counts[d];
        for (const PackedRef& r : refs) scratch[counts[(r.key >> shift) & 0xff]++] = r;
        refs.swap(scratch);
    }
}

}  // namespace

int FuseShard::Find(const FuseCellKey& key, std::uint64_t hash) const {
    if (mSlots.empty()) return -1;
    for (std::uint64_t s = hash & mMask;; s = (s + 1) & mMask) {
        const Slot& slot = mSlots[s];
        if (slot.cell < 0) return -1;
        if (slot.key == key) return slot.cell;
    }
}

int FuseShard::FindOrInsert(const FuseCellKey& key,
                            std::uint64_t hash,
                            int attributeCount,
                            bool& inserted) {
    if (2 * (cells.size() + 1) > mSlots.size()) Grow();
    for (std::uint64_t s = hash & mMask;; s = (s + 1) & mMask) {
        Slot& slot = mSlots[s];
        if (slot.cell >= 0) {
            if (slot.key == key) {
                inserted = false;
                return slot.cell;
            }
            continue;
        }
        slot.key = key;
        slot.cell = static_cast<int>(cells.size());
        FuseCell cell;
        cell.weight = 0.0;
        cell.key = key;
        cells.push_back(cell);
        attributes.resize(attributes.size() + attributeCount, 0.0);
        inserted = true;
        return slot.cell;
    }
}

void FuseShard::Grow() {
    const std::size_t size = mSlots.empty() ? kFirstSlotCount : 2 * mSlots.size();
    mSlots.assign(size, Slot{{0, 0, 0}, -1});
    mMask = size - 1;
    for (std::size_t c = 0; c < cells.size(); ++c) {
        const FuseCellKey& key = cells[c].key;
        std::uint64_t s = FuseTree::Hash(key) & mMask;
        while (mSlots[s].cell >= 0) s = (s + 1) & mMask;
        mSlots[s] = Slot{key, static_cast<int>(c)};
    }
}

long long FuseTree::CellCount() const {
    long long count = 0;
    for (const FuseShard& shard : shards) count += static_cast<long long>(shard.cells.size());
    return count;
}

std::vector<FuseCellRef> FuseTree::SortedCells() const {
    unsigned maxX = 0, maxY = 0, maxZ = 0;
    std::size_t total = 0;
    for (const FuseShard& shard : shards) {
        total += shard.cells.size();
        for (const FuseCell& c : shard.cells) {
            maxX = std::max(maxX, static_cast<unsigned>(c.key.ix));
            maxY = std::max(maxY, static_cast<unsigned>(c.key.iy));
            maxZ = std::max(maxZ, static_cast<unsigned>(c.key.iz));
        }
    }
    const int bitsY = BitWidth(maxY), bitsZ = BitWidth(maxZ);
    const int keyBits = BitWidth(maxX) + bitsY + bitsZ;
    std::vector<FuseCellRef> sorted;
    sorted.reserve(total);
    if (keyBits <= 64) {
        // Packing ix above iy above iz keeps their lexicographic order in one integer.
        std::vector<PackedRef> refs;
        refs.reserve(total);
        for (int s = 0; s < kShardCount; ++s) {
            const std::vector<FuseCell>& cells = shards[s].cells;
            for (std::size_t c = 0; c < cells.size(); ++c) {
                const FuseCellKey& k = cells[c].key;
                // Each width is at most 31 bits, so the shifts stay below 64.
                const std::uint64_t packed = std::uint64_t(unsigned(k.ix)) << (bitsY + bitsZ) |
                                             std::uint64_t(unsigned(k.iy)) << bitsZ |
                                             std::uint64_t(unsigned(k.iz));
                refs.push_back(PackedRef{packed, s, static_cast<int>(c)});
            }
        }
        RadixSort(refs, keyBits);
        for (const PackedRef& r : refs) sorted.push_back(FuseCellRef{r.shard, r.cell});
        return sorted;
    }
    for (int s = 0; s < kShardCount; ++s) {
        for (std::size_t c = 0; c < shards[s].cells.size(); ++c) {
            sorted.push_back(FuseCellRef{s, static_cast<int>(c)});
        }
    }
    auto keyOf = [this](const FuseCellRef& r) -> const FuseCellKey& {
        return shards[r.shard].cells[r.cell].key;
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
