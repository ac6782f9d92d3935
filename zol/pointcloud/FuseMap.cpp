// The checking pass of a fusion update: it moves and divides every point once, in slices
// on the workers, checks it, and writes the runs of consecutive points in one cell, so
// that folding neither divides nor hashes again.
#include <zol/pointcloud/FuseFoldInternal.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define ZOL_FUSE_SSE2 1
#else
#define ZOL_FUSE_SSE2 0
#endif

#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

// The first cell index that no longer fits an int.
const double kIndexLimit = 2147483648.0;

bool IsFinite(const Vector3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

// The first refused point of one slice, its runs, and its points dropped by the range
// rule; a cache line of its own, so that the workers filling neighbours do not share one.
struct alignas(64) SliceMap {
    int badCoord = -1;
    int badNormal = -1;
    int runCount = 0;
    long long dropped = 0;
    std::size_t shardRuns[FuseTree::kShardCount] = {};
};

// The largest normal component whose moved normal cannot overflow: below it a finite
// normal needs no moving to be checked. 0 when the transform is not finite, so that every
// normal is moved and checked.
double NormalBound(const FuseSource& src) {
    double largest = 1.0;
    for (int r = 0; src.moved && r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            const double entry = std::fabs(src.m[4 * r + c]);
            if (!std::isfinite(entry)) return 0.0;
            largest = std::max(largest, entry);
        }
    }
    // Three products of at most largest * bound each stay below three quarters of the
    // largest double.
    return std::numeric_limits<double>::max() / (4.0 * largest);
}

// How many points mapping moves and divides at a time, before it looks for runs.
const int kMapBlock = 256;

// A block of points moved into grid units: q = (p - origin) / h per axis, and whether the
// point may skip further tests (inside, and a normal in bound).
struct MapBlock {
    double q[3][kMapBlock];
    int key[3][kMapBlock];  ///< q truncated; meaningful where q is in range
    bool plain[kMapBlock];
};

// Fills entry j of \p block for point i, exactly as FuseSource::Point and the range test.
void MovePoint(const FuseSource& src, double bound, int i, int j, MapBlock& block) {
    const Vector3 p = src.Point(i);
    bool plain = true;
    for (int a = 0; a < 3; ++a) {
        const double q = (p[a] - src.origin[a]) / src.h[a];
        block.q[a][j] = q;
        const bool inRange = q >= 0.0 && q < kIndexLimit;
        block.key[a][j] = inRange ? static_cast<int>(q) : -1;
        plain = plain & inRange;
    }
    if (src.normals) {
        const double* v = src.normals + 3 * static_cast<std::size_t>(i);
        plain = plain & (std::fabs(v[0]) <= bound) & (std::fabs(v[1]) <= bound) &
                (std::fabs(v[2]) <= bound);
    }
    block.plain[j] = plain;
}

#if ZOL_FUSE_SSE2
// Loads the x, y and z of points i and i + 1 of the flat triples at \p c.
inline void LoadPair(const double* c, std::size_t i, __m128d& x, __m128d& y, __m128d& z) {
    const __m128d a = _mm_loadu_pd(c + 3 * i);      // x0 y0
    const __m128d b = _mm_loadu_pd(c + 3 * i + 2);  // z0 x1
    const __m128d d = _mm_loadu_pd(c + 3 * i + 4);  // y1 z1
    x = _mm_shuffle_pd(a, b, 2);
    y = _mm_shuffle_pd(a, d, 1);
    z = _mm_shuffle_pd(b, d, 2);
}
#endif

// Fills \p block for points [first, first + count), two points at a time where the
// processor allows: the same operations in the same order as MovePoint, on two lanes.
void MoveBlock(const FuseSource& src, double bound, int first, int count, MapBlock& block) {
    int j = 0;
#if ZOL_FUSE_SSE2
    const __m128d zero = _mm_setzero_pd(), limit = _mm_set1_pd(kIndexLimit);
    const __m128d bounds = _mm_set1_pd(bound);
    const __m128d absMask = _mm_castsi128_pd(_mm_set1_epi64x(0x7FFFFFFFFFFFFFFFll));
    for (; j + 1 < count; j += 2) {
        const std::size_t i = static_cast<std::size_t>(first + j);
        __m128d p[3];
        LoadPair(src.coords, i, p[0], p[1], p[2]);
        if (src.moved) {
            __m128d moved[3];
            for (int a = 0; a < 3; ++a) {
                const double* m = src.m + 4 * a;
                moved[a] = _mm_add_pd(_mm_add_pd(_mm_add_pd(_mm_mul_pd(_mm_set1_pd(m[0]), p[0]),
                                                            _mm_mul_pd(_mm_set1_pd(m[1]), p[1])),
                                                 _mm_mul_pd(_mm_set1_pd(m[2]), p[2])),
                                      _mm_set1_pd(m[3]));
            }
            for (int a = 0; a < 3; ++a) p[a] = moved[a];
        }
        __m128d plain = _mm_castsi128_pd(_mm_set1_epi32(-1));
        for (int a = 0; a < 3; ++a) {
            const __m128d q =
                _mm_div_pd(_mm_sub_pd(p[a], _mm_set1_pd(src.origin[a])), _mm_set1_pd(src.h[a]));
            _mm_storeu_pd(&block.q[a][j], q);
            // Lanes out of the int range get the indefinite value; only keys in range are read.
            _mm_storel_epi64(reinterpret_cast<__m128i*>(&block.key[a][j]), _mm_cvttpd_epi32(q));
            plain = _mm_and_pd(plain, _mm_and_pd(_mm_cmpge_pd(q, zero), _mm_cmplt_pd(q, limit)));
        }
        if (src.normals) {
            __m128d v[3];
            LoadPair(src.normals, i, v[0], v[1], v[2]);
            for (int a = 0; a < 3; ++a)
                plain = _mm_and_pd(plain, _mm_cmple_pd(_mm_and_pd(v[a], absMask), bounds));
        }
        const int bits = _mm_movemask_pd(plain);
        block.plain[j] = (bits & 1) != 0;
        block.plain[j + 1] = (bits & 2) != 0;
    }
#endif
    for (; j < count; ++j) MovePoint(src, bound, first + j, j, block);
}

// Maps points [first, last) into \p runs and stops at the first one refused. A run starts
// at the slice's first point, so that slices need not see each other's points. The open
// run's key and length stay in registers; its record gets the length when it closes.
// Points that are inside, with a normal in bound, take no further test: a non-finite
// coordinate always fails the range test, and is told from a dropped point only then.
void MapSlice(const FuseSource& src, int first, int last, FuseRun* runs, SliceMap& slice) {
    FuseRun* next = runs;
    FuseCellKey previous{-1, -1, -1};
    std::uint32_t length = 0;
    const double bound = NormalBound(src);
    MapBlock block;
    for (int begin = first; begin < last; begin += kMapBlock) {
        const int count = std::min(kMapBlock, last - begin);
        MoveBlock(src, bound, begin, count, block);
        for (int j = 0; j < count; ++j) {
            const int i = begin + j;
            if (!block.plain[j]) {
                if (!IsFinite(src.Point(i))) {
                    slice.badCoord = i;
                    return;
                }
                if (src.normals && !IsFinite(src.Normal(i))) {
                    slice.badNormal = i;
                    return;
                }
                bool inRange = true;
                for (int a = 0; a < 3; ++a)
                    inRange = inRange && block.q[a][j] >= 0.0 && block.q[a][j] < kIndexLimit;
                if (!inRange) {
                    ++slice.dropped;
                    previous = FuseCellKey{-1, -1, -1};
                    continue;
                }
            }
            const FuseCellKey key{block.key[0][j], block.key[1][j], block.key[2][j]};
            if (key == previous && length < FuseRun::kMaxLength) {
                ++length;
                continue;
            }
            if (next != runs) next[-1].lengthShard |= length;
            const std::uint64_t hash = FuseTree::Hash(key);
            const int shard = FuseTree::ShardOf(hash);
            *next++ = FuseRun{key, static_cast<std::uint32_t>(hash), i,
                              static_cast<std::uint32_t>(shard) << FuseRun::kLengthBits};
            ++slice.shardRuns[shard];
            previous = key;
            length = 1;
        }
    }
    if (next != runs) next[-1].lengthShard |= length;
    slice.runCount = static_cast<int>(next - runs);
}

}  // namespace

FuseMapResult MapFusePoints(const FuseSource& src, int pointCount, FuseTree& tree) {
    FuseMapResult result;
    const int taskCount = FuseTaskCount(pointCount);
    FuseRun* runs = tree.runs.Get(static_cast<std::size_t>(pointCount));
    std::vector<SliceMap> slices(taskCount);
    result.status = RunFuseSlices(taskCount, [&](int t, int n) {
        const int first = SliceBegin(pointCount, t, n);
        MapSlice(src, first, SliceBegin(pointCount, t + 1, n), runs + first, slices[t]);
    });
    if (result.status != RESULT_OK) return result;
    result.shardRuns.assign(FuseTree::kShardCount, 0);
    for (int t = 0; t < taskCount; ++t) {
        const SliceMap& slice = slices[t];
        if (slice.badCoord >= 0 || slice.badNormal >= 0) {
            result.badCoord = slice.badCoord;
            result.badNormal = slice.badNormal;
            return result;
        }
        for (int s = 0; s < FuseTree::kShardCount; ++s) result.shardRuns[s] += slice.shardRuns[s];
        result.sliceFirst.push_back(SliceBegin(pointCount, t, taskCount));
        result.sliceRuns.push_back(slice.runCount);
        result.dropped += slice.dropped;
    }
    return result;
}

void LogDroppedPoints(const FuseMapResult& map) {
    for (long long i = 0; i < map.dropped; ++i)
        LogLine("FusePointCloud::UpdateFuseFunction: point is out of range");
}

}  // namespace ZOL
