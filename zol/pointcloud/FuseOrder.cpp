// Ordering the fused cells by grid index for extraction and saving: one pass deals every
// cell's packed index into a bucket by its leading bits, then each bucket is sorted on its
// own, both spread over the workers. The order is a total one (no two cells share an
// index), so it never depends on the thread count.
#include <zol/pointcloud/FuseTreeInternal.h>

#include <algorithm>
#include <vector>

#include <zol/runtime/Constants.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

namespace {

// Below this many cells the workers cost more than they save.
const std::size_t kThreadedMinimum = 1 << 16;
// The first pass deals the cells into at most 2^11 buckets by their leading index bits:
// few enough that every bucket's write position stays in cache.
const int kMaxBucketBits = 11;
// Buckets are then sorted by the remaining bits in digits of at most 8 bits.
const int kDigitBits = 8;

const ParallelLines kOrderLines = {
    "FuseTree::SortedCells", "FuseTree::SortedCells: ThreadPool InsertTask SortCellsMT Failed"};

int BitWidth(std::uint64_t value) {
    int bits = 0;
    while (value != 0) {
        ++bits;
        value >>= 1;
    }
    return bits;
}

// Runs body(t, n) over n slices on the workers; the slices that the workers could not
// take (their failure is logged) run here instead, so the order is always complete.
template <typename Body>
void RunSlices(int taskCount, const Body& body) {
    std::vector<char> done(static_cast<std::size_t>(taskCount), 0);
    auto task = [&](int t, int n) {
        body(t, n);
        done[static_cast<std::size_t>(t)] = 1;
    };
    if (taskCount > 1 && ParallelFor(taskCount, task, kOrderLines) == RESULT_OK) return;
    for (int t = 0; t < taskCount; ++t) {
        if (!done[static_cast<std::size_t>(t)]) body(t, taskCount);
    }
}

// How the cells' indices pack into one integer: ix above iy above iz above the shard
// above the cell's index in its shard.
struct Packing {
    int bitsY, bitsZ, keyBits, cellBits, lowBit;
    std::uint64_t Code(const FuseCellKey& k, int shard, std::size_t cell) const {
        const std::uint64_t key = std::uint64_t(unsigned(k.ix)) << (bitsY + bitsZ) |
                                  std::uint64_t(unsigned(k.iy)) << bitsZ |
                                  std::uint64_t(unsigned(k.iz));
        return key << lowBit | std::uint64_t(shard) << cellBits | cell;
    }
};

// Sorts codes [first, last) on their bits [lowBit, highBit) by least significant digit
// first, ping-ponging with \p scratch (room for last - first codes); a digit that every
// code shares is skipped.
void SortBucket(std::uint64_t* first,
                std::uint64_t* last,
                int lowBit,
                int highBit,
                std::vector<std::uint64_t>& scratch) {
    const std::size_t n = static_cast<std::size_t>(last - first);
    if (n < 2) return;
    if (n <= 32) {
        std::sort(first, last);
        return;
    }
    if (scratch.size() < n) scratch.resize(n);
    std::uint64_t* from = first;
    std::uint64_t* to = scratch.data();
    std::size_t count[1 << kDigitBits];
    for (int shift = lowBit; shift < highBit; shift += kDigitBits) {
        const int bits = std::min(kDigitBits, highBit - shift);
        const std::uint64_t mask = (std::uint64_t(1) << bits) - 1;
        std::fill(count, count + (std::size_t(1) << bits), 0);
        for (std::size_t i = 0; i < n; ++i) ++count[(from[i] >> shift) & mask];
        if (count[(from[0] >> shift) & mask] == n) continue;
        std::size_t sum = 0;
        for (std::size_t d = 0; d < (std::size_t(1) << bits); ++d) {
            const std::size_t c = count[d];
            count[d] = sum;
            sum += c;
        }
        for (std::size_t i = 0; i < n; ++i) to[count[(from[i] >> shift) & mask]++] = from[i];
        std::swap(from, to);
    }
    if (from != first) std::copy(from, from + n, first);
}

}  // namespace

FuseCellOrder FuseTree::SortedCells() const {
    std::uint64_t maxX = 0, maxY = 0, maxZ = 0;
    std::size_t total = 0, largest = 0;
    for (const FuseShard& shard : shards) {
        total += shard.cells.size();
        largest = std::max(largest, shard.cells.size());
        maxX = std::max<std::uint64_t>(maxX, static_cast<unsigned>(shard.MaxKey().ix));
        maxY = std::max<std::uint64_t>(maxY, static_cast<unsigned>(shard.MaxKey().iy));
        maxZ = std::max<std::uint64_t>(maxZ, static_cast<unsigned>(shard.MaxKey().iz));
    }
    FuseCellOrder order(total);
    if (total == 0) return order;
    std::uint64_t* codes = order.data();
    Packing pack;
    pack.bitsY = BitWidth(maxY);
    pack.bitsZ = BitWidth(maxZ);
    pack.keyBits = BitWidth(maxX) + pack.bitsY + pack.bitsZ;
    pack.cellBits = BitWidth(largest);
    pack.lowBit = kShardBits + pack.cellBits;
    if (pack.keyBits + pack.lowBit > 64) {
        // Indices too wide to pack: compare the cells' keys.
        std::size_t n = 0;
        for (int s = 0; s < kShardCount; ++s) {
            for (std::size_t c = 0; c < shards[s].cells.size(); ++c) codes[n++] = RefCode(s, c);
        }
        auto keyOf = [this](std::uint64_t code) -> const FuseCellKey& {
            const FuseCellRef r = RefOf(code);
            return shards[r.shard].cells.At(r.cell)->key;
        };
        std::sort(codes, codes + total, [&](std::uint64_t a, std::uint64_t b) {
            const FuseCellKey& ka = keyOf(a);
            const FuseCellKey& kb = keyOf(b);
            if (ka.ix != kb.ix) return ka.ix < kb.ix;
            if (ka.iy != kb.iy) return ka.iy < kb.iy;
            return ka.iz < kb.iz;
        });
        return order;
    }

    const int bucketBits = std::min(pack.keyBits, kMaxBucketBits);
    const std::size_t bucketCount = std::size_t(1) << bucketBits;
    const int bucketShift = pack.lowBit + pack.keyBits - bucketBits;
    const int taskCount = total < kThreadedMinimum ? 1 : ParallelTaskCount(FuseTree::kShardCount);

    // Cells per bucket, counted by each task over its run of shards.
    std::vector<std::size_t> next(static_cast<std::size_t>(taskCount) * bucketCount);
    RunSlices(taskCount, [&](int t, int n) {
        std::size_t* count = next.data() + static_cast<std::size_t>(t) * bucketCount;
        std::fill(count, count + bucketCount, 0);
        for (int s = SliceBegin(kShardCount, t, n); s < SliceBegin(kShardCount, t + 1, n); ++s) {
            shards[s].cells.ForEach(0, shards[s].cells.size(),
                                    [&](std::size_t c, const FuseCell* cell) {
                                        ++count[pack.Code(cell->key, s, c) >> bucketShift];
                                    });
        }
    });
    // Bucket starts, and within a bucket one run per task, in task order.
    std::vector<std::size_t> bucketBegin(bucketCount + 1);
    std::size_t sum = 0;
    for (std::size_t b = 0; b < bucketCount; ++b) {
        bucketBegin[b] = sum;
        for (int t = 0; t < taskCount; ++t) {
            std::size_t& slot = next[static_cast<std::size_t>(t) * bucketCount + b];
            const std::size_t n = slot;
            slot = sum;
            sum += n;
        }
    }
    bucketBegin[bucketCount] = sum;
    RunSlices(taskCount, [&](int t, int n) {
        std::size_t* at = next.data() + static_cast<std::size_t>(t) * bucketCount;
        for (int s = SliceBegin(kShardCount, t, n); s < SliceBegin(kShardCount, t + 1, n); ++s) {
            shards[s].cells.ForEach(0, shards[s].cells.size(),
                                    [&](std::size_t c, const FuseCell* cell) {
                                        const std::uint64_t code = pack.Code(cell->key, s, c);
                                        codes[at[code >> bucketShift]++] = code;
                                    });
        }
    });
    // Each task sorts the buckets that start in its share of the codes, then turns its
    // codes into references.
    const std::uint64_t cellMask = (std::uint64_t(1) << pack.cellBits) - 1;
    const int sortCount = total < kThreadedMinimum ? 1 : ParallelTaskCount();
    RunSlices(sortCount, [&](int t, int n) {
        const std::size_t from = total * t / n, to = total * (t + 1) / n;
        std::vector<std::uint64_t> scratch;
        std::size_t b =
            std::lower_bound(bucketBegin.begin(), bucketBegin.end(), from) - bucketBegin.begin();
        for (; b < bucketCount && bucketBegin[b] < to; ++b) {
            std::uint64_t* first = codes + bucketBegin[b];
            std::uint64_t* last = codes + bucketBegin[b + 1];
            if (first == last) continue;
            SortBucket(first, last, pack.lowBit, bucketShift, scratch);
            for (std::uint64_t* c = first; c != last; ++c) {
                *c = RefCode(static_cast<int>((*c >> pack.cellBits) & (kShardCount - 1)),
                             *c & cellMask);
            }
        }
    });
    return order;
}

}  // namespace ZOL
