// The fused cells of FusePointCloud: a flat open-addressing hash of occupied cells, split
// into shards by key hash so that workers own disjoint shards, and one ordered pass (a
// sort of the occupied keys) for extraction and saving.
#pragma once

#include <cstdint>
#include <vector>

#include <zol/core/Vector3.h>

namespace ZOL {

/// Grid index of a cell; every component >= 0.
struct FuseCellKey {
    int ix;
    int iy;
    int iz;
    bool operator==(const FuseCellKey& o) const { return ix == o.ix && iy == o.iy && iz == o.iz; }
};

/// One occupied cell. Attribute values live in the shard's flat array, m per cell.
struct FuseCell {
    Vector3 position;
    Vector3 normal;
    double weight;
    FuseCellKey key;
};

/// Where a cell lives: its shard and its index there.
struct FuseCellRef {
    int shard;
    int cell;
};

/// The cells of one shard: a table of slots (power-of-two size, at most half full)
/// pointing into a dense array of cells in insertion order.
class FuseShard {
public:
    /// \return the index of the cell with \p key, or -1.
    int Find(const FuseCellKey& key, std::uint64_t hash) const;
    /// \return the index of the cell with \p key, appending a zero cell (weight 0, m
    ///         zero attributes) when there is none; \p inserted tells which.
    int FindOrInsert(const FuseCellKey& key,
                     std::uint64_t hash,
                     int attributeCount,
                     bool& inserted);

    std::vector<FuseCell> cells;
    std::vector<double> attributes;  ///< attributeCount values per cell

private:
    struct Slot {
        FuseCellKey key;
        int cell;  ///< -1 for an empty slot
    };
    void Grow();

    std::vector<Slot> mSlots;
    std::uint64_t mMask = 0;
};

/// All fused cells, named after the ordered tree the messages call "FuseTree".
class FuseTree {
public:
    static constexpr int kShardBits = 6;
    static constexpr int kShardCount = 1 << kShardBits;

    /// Mixes the three indices into 64 well-spread bits.
    static std::uint64_t Hash(const FuseCellKey& key) {
        std::uint64_t h = static_cast<std::uint32_t>(key.ix) * 0x9E3779B97F4A7C15ull;
        h ^= static_cast<std::uint32_t>(key.iy) * 0xC2B2AE3D27D4EB4Full;
        h ^= static_cast<std::uint32_t>(key.iz) * 0x165667B19E3779F9ull;
        h ^= h >> 33;
        h *= 0xFF51AFD7ED558CCDull;
        h ^= h >> 29;
        return h;
    }
    /// The shard of a hash: its top bits (the slot of a cell uses the low bits).
    static int ShardOf(std::uint64_t hash) { return static_cast<int>(hash >> (64 - kShardBits)); }

    /// \return the number of cells.
    long long CellCount() const;
    /// \return every cell, ordered by ascending ix, then iy, then iz.
    std::vector<FuseCellRef> SortedCells() const;

    FuseShard shards[kShardCount];
    /// Values per cell; fixed by the first update that adds cells.
    int attributeCount = 0;
};

}  // namespace ZOL
