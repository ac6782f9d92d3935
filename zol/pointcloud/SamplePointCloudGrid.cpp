// Grid sampling: one point per cell. The result order is that of a table of 2560000
// hash buckets, each holding its cells in key order; instead of building that table the
// points are radix-sorted by bucket (stable, so index order survives) and each bucket's
// run is ordered by cell key, which gives the same order in linear time.
#include <zol/pointcloud/SamplePointCloud.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

const uint32_t kBucketCount = 2560000;
// Cell indices must stay well inside 64 bits before they are truncated.
const double kMaxCellIndex = 4.0e18;
const int kRadixBits = 11;
const uint32_t kRadixMask = (1u << kRadixBits) - 1;

struct CellKey {
    long long ix, iy, iz;
    bool operator<(const CellKey& o) const {
        if (ix != o.ix) return ix < o.ix;
        if (iy != o.iy) return iy < o.iy;
        return iz < o.iz;
    }
    bool operator==(const CellKey& o) const { return ix == o.ix && iy == o.iy && iz == o.iz; }
};

// The cell of one point and its squared distance (in cell units) from the cell's lower
// corner.
struct CellOf {
    CellKey key;
    double score;
};

class GridCells {
public:
    GridCells(const double* xyz, const double* corner, double interval)
        : mpXyz(xyz), mCorner{corner[0], corner[1], corner[2]}, mInterval(interval) {}

    CellOf operator()(int i) const {
        const double* p = mpXyz + 3 * static_cast<size_t>(i);
        const double ux = (p[0] - mCorner[0]) / mInterval;
        const double uy = (p[1] - mCorner[1]) / mInterval;
        const double uz = (p[2] - mCorner[2]) / mInterval;
        CellOf cell;
        cell.key = {static_cast<long long>(ux), static_cast<long long>(uy),
                    static_cast<long long>(uz)};
        const double dx = ux - static_cast<double>(cell.key.ix);
        const double dy = uy - static_cast<double>(cell.key.iy);
        const double dz = uz - static_cast<double>(cell.key.iz);
        cell.score = dx * dx + dy * dy + dz * dz;
        return cell;
    }

    // The key's bucket: the products and their xor wrap in 32 bits.
    static uint32_t Bucket(const CellKey& key) {
        const uint32_t h = (static_cast<uint32_t>(key.ix) * 73856093u) ^
                           (static_cast<uint32_t>(key.iy) * 19349669u) ^
                           (static_cast<uint32_t>(key.iz) * 83492791u);
        return h % kBucketCount;
    }

private:
    const double* mpXyz;
    double mCorner[3];
    double mInterval;
};

// Stable sort of (bucket << 32 | point) entries by bucket, two passes of 11 bits.
void SortByBucket(std::vector<uint64_t>& entries) {
    std::vector<uint64_t> buffer(entries.size());
    for (int shift = 32; shift < 32 + 2 * kRadixBits; shift += kRadixBits) {
        size_t start[kRadixMask + 2] = {};
        for (uint64_t e : entries) ++start[((e >> shift) & kRadixMask) + 1];
        for (uint32_t d = 0; d <= kRadixMask; ++d) start[d + 1] += start[d];
        for (uint64_t e : entries) buffer[start[(e >> shift) & kRadixMask]++] = e;
        entries.swap(buffer);
    }
}

// Appends the winners of the cells of one bucket, cells in key order; within a cell the
// lowest score wins and the earlier point keeps a tie. \p points is in index order.
void EmitBucket(const GridCells& cells,
                const uint64_t* points,
                size_t count,
                std::vector<std::pair<CellOf, int>>& scratch,
                std::vector<int>& sampleIndex) {
    if (count == 1) {
        sampleIndex.push_back(static_cast<int>(points[0] & 0xffffffffu));
        return;
    }
    scratch.clear();
    for (size_t i = 0; i < count; ++i) {
        const int id = static_cast<int>(points[i] & 0xffffffffu);
        scratch.emplace_back(cells(id), id);
    }
    const auto byKey = [](const auto& a, const auto& b) { return a.first.key < b.first.key; };
    // A bucket usually holds one cell; then it is already in order.
    if (!std::is_sorted(scratch.begin(), scratch.end(), byKey)) {
        std::stable_sort(scratch.begin(), scratch.end(), byKey);
    }
    for (size_t first = 0; first < scratch.size();) {
        size_t best = first;
        size_t next = first + 1;
        for (; next < scratch.size() && scratch[next].first.key == scratch[first].first.key;
             ++next) {
            if (scratch[next].first.score < scratch[best].first.score) best = next;
        }
        sampleIndex.push_back(scratch[best].second);
        first = next;
    }
}

}  // namespace

int SamplePointCloud::GridSample(const IPointCloud* pointCloud,
                                 double interval,
                                 std::vector<int>& sampleIndex) {
    SetProgress(0.0);
    // dump hook
    if (!pointCloud) {
        return LogFailure(RESULT_INVALID_INPUT, "SamplePointCloud::GridSample: pointCloud == NULL");
    }
    if (interval < REAL_TOL) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::GridSample: interval < REAL_TOL");
    }
    if (!std::isfinite(interval)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::GridSample: interval is not finite");
    }
    const PointCloudPointList pointList(pointCloud);
    return _GridSample(&pointList, interval, sampleIndex);
}

int SamplePointCloud::_GridSample(const IPointList* pointList,
                                  double interval,
                                  std::vector<int>& sampleIndex) {
    if (!pointList) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::_GridSample input pointList is NULL");
    }
    sampleIndex.clear();
    const int pointCount = pointList->GetPointCount();
    if (pointCount < 1) {
        LogLine("SamplePointCloud::_GridSample: pointCount is 0");
        return RESULT_OK;
    }
    if (!(interval >= REAL_TOL) || !std::isfinite(interval)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SamplePointCloud::_GridSample: interval < REAL_TOL || interval is not "
                          "finite");
    }
    std::vector<double> xyz;
    CopyPointListCoords(pointList, &xyz);
    double lower[3] = {xyz[0], xyz[1], xyz[2]};
    double upper[3] = {xyz[0], xyz[1], xyz[2]};
    for (int i = 0; i < pointCount; ++i) {
        const double* p = xyz.data() + 3 * static_cast<size_t>(i);
        if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2])) {
            return LogFailure(RESULT_INVALID_INPUT, "SamplePointCloud::_GridSample: point ", i,
                              " has a non-finite coordinate");
        }
        for (int a = 0; a < 3; ++a) {
            lower[a] = std::min(lower[a], p[a]);
            upper[a] = std::max(upper[a], p[a]);
        }
    }
    for (int a = 0; a < 3; ++a) {
        lower[a] -= REAL_TOL;
        if (!((upper[a] - lower[a]) / interval < kMaxCellIndex)) {
            return LogFailure(
                RESULT_INVALID_INPUT,
                "SamplePointCloud::_GridSample: interval too small for the extent of the points");
        }
    }

    const GridCells cells(xyz.data(), lower, interval);
    std::vector<uint64_t> entries(pointCount);
    for (int i = 0; i < pointCount; ++i) {
        entries[i] =
            static_cast<uint64_t>(GridCells::Bucket(cells(i).key)) << 32 | static_cast<uint32_t>(i);
    }
    SortByBucket(entries);
    std::vector<std::pair<CellOf, int>> scratch;
    for (size_t first = 0; first < entries.size();) {
        const uint64_t bucket = entries[first] >> 32;
        size_t next = first + 1;
        while (next < entries.size() && entries[next] >> 32 == bucket) ++next;
        EmitBucket(cells, entries.data() + first, next - first, scratch, sampleIndex);
        first = next;
    }
    return RESULT_OK;
}

}  // namespace ZOL
