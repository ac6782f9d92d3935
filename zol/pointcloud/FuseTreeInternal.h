// The fused cells of FusePointCloud: a flat open-addressing hash of occupied cells, split
// into shards by key hash so that workers own disjoint shards, and one ordered pass (a
// sort of the occupied keys) for extraction and saving.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

#include <zol/core/Vector3.h>

namespace ZOL {

class FuseTree;
class IPointCloud;

/// Memory for the arrays of a fusion, aligned to a cache line. Requests of 1 MiB or more
/// are rounded up to whole 2 MiB pages and served in huge pages where the system offers
/// them: in a virtual machine the first touch of every 4 KiB page costs about 12 us, so
/// on large clouds small pages cost more than the fusion itself.
void* AllocateLarge(std::size_t bytes);
void FreeLarge(void* memory);
/// Zero-filled memory for the slot tables, straight from fresh pages where the system
/// offers them, so that a new table costs no fill pass; free it with FreeZeroed and the
/// same size.
void* AllocateZeroed(std::size_t bytes);
void FreeZeroed(void* memory, std::size_t bytes);

/// Standard allocator over AllocateLarge, for the vectors of a fusion.
template <typename T>
struct LargeAllocator {
    using value_type = T;
    LargeAllocator() = default;
    template <typename U>
    LargeAllocator(const LargeAllocator<U>&) {}
    T* allocate(std::size_t n) { return static_cast<T*>(AllocateLarge(n * sizeof(T))); }
    void deallocate(T* p, std::size_t) { FreeLarge(p); }
    bool operator==(const LargeAllocator&) const { return true; }
    bool operator!=(const LargeAllocator&) const { return false; }
};
template <typename T>
using LargeVector = std::vector<T, LargeAllocator<T>>;

/// Grid index of a cell; every component >= 0.
struct FuseCellKey {
    int ix;
    int iy;
    int iz;
    bool operator==(const FuseCellKey& o) const { return ix == o.ix && iy == o.iy && iz == o.iz; }
};

/// One occupied cell: 40 bytes. Its weight is the number of points fused (every point
/// weighs 1), kept as an integer beside the key; its attribute values live in the
/// shard's attribute blocks, and its normal, when normals are fused, right after it.
struct FuseCell {
    Vector3 position;
    FuseCellKey key;
    std::uint32_t weight;
};

/// A cell with its normal: one cache line, so that folding a point touches one line.
struct FuseNormalCell {
    FuseCell cell;  ///< first, so that a FuseCell* to it reaches the normal too
    Vector3 normal;
};
static_assert(sizeof(FuseCell) == 40 && sizeof(FuseNormalCell) == 64, "packed cells");

/// Bits of a cell hash's shard number; the slot tables use the hash's low half.
constexpr int kFuseShardBits = 4;

/// A run of consecutive points in one cell, worked out once by the checking pass so that
/// the folding workers neither divide nor hash again, and read only run records instead
/// of a code per point: the cell's key, the low half of its hash (all that the slots
/// use), the run's first point, and its length with the cell's shard in the top bits.
struct FuseRun {
    static constexpr int kLengthBits = 32 - kFuseShardBits;
    /// The longest run; a longer stretch of points in one cell starts a new run.
    static constexpr std::uint32_t kMaxLength = (std::uint32_t(1) << kLengthBits) - 1;

    FuseCellKey key;
    std::uint32_t hash;
    int begin;
    std::uint32_t lengthShard;

    int Shard() const { return static_cast<int>(lengthShard >> kLengthBits); }
    int End() const { return begin + static_cast<int>(lengthShard & kMaxLength); }
};
static_assert(sizeof(FuseRun) == 24, "packed runs");

/// An array of trivially copyable T that keeps its memory between uses and is never
/// zero-filled: every use writes the elements before reading them.
template <typename T>
class FuseScratch {
public:
    FuseScratch() = default;
    ~FuseScratch() { FreeLarge(mData); }
    FuseScratch(const FuseScratch&) = delete;
    FuseScratch& operator=(const FuseScratch&) = delete;
    /// \return room for \p count elements, their values unspecified.
    T* Get(std::size_t count) {
        if (count > mCapacity) {
            FreeLarge(mData);
            mData = nullptr;
            mData = static_cast<T*>(AllocateLarge(count * sizeof(T)));
            mCapacity = count;
        }
        return mData;
    }
    /// \return the elements of the last Get.
    T* Data() const { return mData; }

private:
    T* mData = nullptr;
    std::size_t mCapacity = 0;
};

/// Releases memory of AllocateLarge.
struct FreeLargeDeleter {
    void operator()(void* memory) const { FreeLarge(memory); }
};

/// The cells of a tree in grid order, each as FuseTree::RefCode(shard, cell).
class FuseCellOrder {
public:
    FuseCellOrder() = default;
    explicit FuseCellOrder(std::size_t count)
        : mCodes(count ? static_cast<std::uint64_t*>(AllocateLarge(count * sizeof(std::uint64_t)))
                       : nullptr),
          mSize(count) {}
    std::size_t size() const { return mSize; }
    std::uint64_t* data() const { return mCodes.get(); }
    std::uint64_t operator[](std::size_t i) const { return mCodes.get()[i]; }
    const std::uint64_t* begin() const { return mCodes.get(); }
    const std::uint64_t* end() const { return mCodes.get() + mSize; }

private:
    std::unique_ptr<std::uint64_t[], FreeLargeDeleter> mCodes;
    std::size_t mSize = 0;
};

/// Where a cell lives: its shard and its index there.
struct FuseCellRef {
    int shard;
    int cell;
};

/// Elements of \p width values of T each, in blocks that double in size. Elements never
/// move once appended, so growth neither copies them nor touches their pages twice.
/// T must be trivially copyable; Append leaves the new values for the caller to write.
template <typename T>
class FuseBlocks {
public:
    explicit FuseBlocks(int width = 1) : mWidth(width) {}
    ~FuseBlocks() {
        for (T* block : mBlocks) FreeLarge(block);
    }
    FuseBlocks(FuseBlocks&& other) noexcept { *this = static_cast<FuseBlocks&&>(other); }
    FuseBlocks& operator=(FuseBlocks&& other) noexcept {
        if (this != &other) {
            for (T* block : mBlocks) FreeLarge(block);
            mBlocks.swap(other.mBlocks);
            other.mBlocks.clear();
            mSize = other.mSize, mCapacity = other.mCapacity, mWidth = other.mWidth;
            mFirstShift = other.mFirstShift;
            other.mSize = other.mCapacity = 0;
        }
        return *this;
    }
    FuseBlocks(const FuseBlocks&) = delete;
    FuseBlocks& operator=(const FuseBlocks&) = delete;

    std::size_t size() const { return mSize; }
    /// \return the first value of element \p id (not for width 0).
    T* At(std::size_t id) const {
        const std::uint64_t q = (id >> mFirstShift) + 1;
        int b = 0;
#if defined(__GNUC__)
        b = 63 - __builtin_clzll(q);
#else
        while ((q >> (b + 1)) != 0) ++b;
#endif
        // Block b holds 2^(mFirstShift + b) elements, from element 2^mFirstShift * (2^b - 1) on.
        return mBlocks[b] + (id - (((std::size_t(1) << b) - 1) << mFirstShift)) * mWidth;
    }
    /// Sizes the first block for \p count elements, when none is allocated yet: a large
    /// first block comes in huge pages instead of many small pages.
    void Reserve(std::size_t count) {
        if (!mBlocks.empty()) return;
        mFirstShift = kFirstShift;
        while (mFirstShift < kMaxFirstShift && (std::size_t(1) << mFirstShift) < count)
            ++mFirstShift;
    }
    /// Calls f(id, first value) for elements [first, last) in order, block by block.
    template <typename F>
    void ForEach(std::size_t first, std::size_t last, F&& f) const {
        std::size_t begin = 0;
        for (std::size_t b = 0; b < mBlocks.size() && begin < last; ++b) {
            const std::size_t end = begin + (std::size_t(1) << (mFirstShift + b));
            for (std::size_t id = std::max(begin, first); id < std::min(end, last); ++id)
                f(id, mBlocks[b] + (id - begin) * mWidth);
            begin = end;
        }
    }
    /// Appends one element whose values are not yet written.
    void Append() {
        if (mWidth > 0 && mSize == mCapacity) {
            const std::size_t count = std::size_t(1) << (mFirstShift + mBlocks.size());
            mBlocks.push_back(static_cast<T*>(AllocateLarge(count * mWidth * sizeof(T))));
            mCapacity += count;
        }
        ++mSize;
    }

private:
    static constexpr int kFirstShift = 8;
    static constexpr int kMaxFirstShift = 24;

    std::vector<T*> mBlocks;
    std::size_t mSize = 0;
    std::size_t mCapacity = 0;
    int mWidth = 1;
    int mFirstShift = kFirstShift;
};

/// The cells of one shard in insertion order, as FuseCell or, with normals, as
/// FuseNormalCell: cells without normals take five eighths of the memory.
class FuseCellStore {
public:
    explicit FuseCellStore(bool normals = false)
        : mBlocks(normals ? sizeof(FuseNormalCell) : sizeof(FuseCell)), mNormals(normals) {}
    std::size_t size() const { return mBlocks.size(); }
    bool HasNormals() const { return mNormals; }
    void Reserve(std::size_t count) { mBlocks.Reserve(count); }
    FuseCell* At(std::size_t id) const { return reinterpret_cast<FuseCell*>(mBlocks.At(id)); }
    /// \return the normal of a cell of this store (only when it has normals).
    static Vector3& NormalOf(FuseCell* cell) {
        return reinterpret_cast<FuseNormalCell*>(cell)->normal;
    }
    static const Vector3& NormalOf(const FuseCell* cell) {
        return reinterpret_cast<const FuseNormalCell*>(cell)->normal;
    }
    /// Appends a cell of weight 0 with \p key; its position (and normal) are unwritten.
    FuseCell* Append(const FuseCellKey& key) {
        mBlocks.Append();
        unsigned char* at = mBlocks.At(mBlocks.size() - 1);
        FuseCell* cell = mNormals ? &(new (at) FuseNormalCell)->cell : new (at) FuseCell;
        cell->key = key;
        cell->weight = 0;
        return cell;
    }
    /// Calls f(id, cell) for cells [first, last) in order.
    template <typename F>
    void ForEach(std::size_t first, std::size_t last, F&& f) const {
        mBlocks.ForEach(first, last, [&f](std::size_t id, const unsigned char* at) {
            f(id, reinterpret_cast<const FuseCell*>(at));
        });
    }

private:
    FuseBlocks<unsigned char> mBlocks;
    bool mNormals;
};

/// The cells of one shard: a table of slots (power-of-two size, at most three quarters
/// full) pointing into the cells in insertion order.
class FuseShard {
public:
    explicit FuseShard(int attributeCount = 0, bool normals = false)
        : cells(normals), attributes(attributeCount) {}
    ~FuseShard() { FreeZeroed(mSlots, mSlotCount * sizeof(Slot)); }
    FuseShard(FuseShard&& other) noexcept { *this = static_cast<FuseShard&&>(other); }
    FuseShard& operator=(FuseShard&& other) noexcept;
    FuseShard(const FuseShard&) = delete;
    FuseShard& operator=(const FuseShard&) = delete;
    /// \return the index of the cell with \p key, appending a cell of weight 0 (its
    ///         attribute values unwritten) when there is none; \p inserted tells which.
    int FindOrInsert(const FuseCellKey& key, std::uint64_t hash, bool& inserted);
    /// Sizes the slots for \p cellCount cells at once, so that an update that brings
    /// many new cells rehashes at most once instead of at every doubling.
    void Reserve(std::size_t cellCount);
    /// The largest index on each axis over the cells (0 when there are none), kept on
    /// insertion so that ordering the cells needs no extra pass over them.
    FuseCellKey MaxKey() const { return mMaxKey; }
    /// Asks for the slot of \p hash ahead of its use.
    void PrefetchSlot(std::uint64_t hash) const {
#if defined(__GNUC__)
        if (mSlots) __builtin_prefetch(&mSlots[hash & mMask]);
#else
        (void)hash;
#endif
    }
    /// \return the index of the first cell on the probe run of \p hash whose tag matches,
    ///         or -1 when the run ends first: the cell of \p hash when it exists, by tag
    ///         only, so a caller compares the key before it trusts the answer.
    int Candidate(std::uint64_t hash) const {
        if (mSlots == nullptr) return -1;
        const std::uint32_t tag = TagOf(hash);
        for (std::uint64_t s = hash & mMask;; s = (s + 1) & mMask) {
            if (mSlots[s].ref == 0) return -1;
            if (mSlots[s].tag == tag) return static_cast<int>(mSlots[s].ref - 1);
        }
    }

    FuseCellStore cells;
    FuseBlocks<double> attributes;  ///< attributeCount values per cell

private:
    // The low 32 hash bits: they pick the slot too, so growth rehashes from the slots
    // alone, and the bits above the mask tell most keys of one probe run apart without
    // reading their cells. An all-zero slot is empty, so fresh zero pages are a ready
    // table.
    static std::uint32_t TagOf(std::uint64_t hash) { return static_cast<std::uint32_t>(hash); }
    struct Slot {
        std::uint32_t tag;
        std::uint32_t ref;  ///< the cell index + 1; 0 for an empty slot
    };
    void Rehash(std::size_t slotCount);

    Slot* mSlots = nullptr;
    std::size_t mSlotCount = 0;
    std::uint64_t mMask = 0;
    FuseCellKey mMaxKey{0, 0, 0};
};

/// Appends every cell of \p tree to the empty \p pointCloud in grid order (normals too
/// when \p fuseNormal, which also sets the cloud's has-normal flag), and the cells'
/// attribute values to \p pointAttributes when it is not null.
void ReadOutCells(const FuseTree& tree,
                  IPointCloud* pointCloud,
                  bool fuseNormal,
                  std::vector<double>* pointAttributes);

/// All fused cells, named after the ordered tree the messages call "FuseTree".
class FuseTree {
public:
    static constexpr int kShardBits = kFuseShardBits;
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
    /// The shard of a hash: its top bits (slots use the low bits, tags the next-highest).
    static int ShardOf(std::uint64_t hash) { return static_cast<int>(hash >> (64 - kShardBits)); }

    /// An empty tree whose cells carry \p attributeCount values each.
    explicit FuseTree(int attributeCount = 0, bool normals = false);
    /// Starts over, empty, with cells of \p attributeCount values.
    void SetAttributeCount(int attributeCount);
    int AttributeCount() const { return mAttributeCount; }
    bool HasNormals() const { return mNormals; }

    /// \return the number of cells.
    long long CellCount() const;
    /// \return every cell, ordered by ascending ix, then iy, then iz, each as
    ///         RefCode(shard, cell); large trees are ordered on GetThreadCount() workers,
    ///         with the same result for any count.
    FuseCellOrder SortedCells() const;
    static std::uint64_t RefCode(int shard, std::size_t cell) {
        return std::uint64_t(unsigned(shard)) << 32 | cell;
    }
    static FuseCellRef RefOf(std::uint64_t code) {
        return FuseCellRef{static_cast<int>(code >> 32), static_cast<int>(code & 0xFFFFFFFFu)};
    }

    FuseShard shards[kShardCount];
    /// Flat copies of the points of a list that is not a plain PointCloud, kept between
    /// updates so that a series of clouds touches their pages once.
    std::vector<double> coordCopy;
    std::vector<double> normalCopy;
    /// The runs of the current update: those of each slice of its points from the
    /// slice's first point index on.
    FuseScratch<FuseRun> runs;

private:
    int mAttributeCount;
    bool mNormals;
};

}  // namespace ZOL
