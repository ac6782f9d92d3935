// CoherentQueryOrder: a cheap test whether queries come in spatial order, and a sort
// along a Z-order curve when they do not. Answers do not change with the order.
#include <zol/runtime/AnnQueryOrderInternal.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace ZOL {

namespace {

/// Fewer queries than this keep their order: the few nodes they visit stay cached.
constexpr int kMinQueries = 2048;
/// Consecutive pairs looked at to judge the order.
constexpr int kSampledSteps = 1024;
/// Queries whose median step between neighbours in the list is below this fraction of
/// their extent are in spatial order already (a scan, a grid); shuffled ones step about
/// a third of the extent.
constexpr double kCoherentStep = 1.0 / 32.0;
/// Curve cells per axis: 2^10, so neighbours on the curve share cache lines of the tree.
constexpr int kCellBits = 10;
constexpr double kLastCell = (1 << kCellBits) - 1;

/// The low 10 bits of \p v moved to every third bit.
uint32_t SpreadBits(uint32_t v) {
    v &= 0x3ffu;
    v = (v | (v << 16)) & 0x030000ffu;
    v = (v | (v << 8)) & 0x0300f00fu;
    v = (v | (v << 4)) & 0x030c30c3u;
    v = (v | (v << 2)) & 0x09249249u;
    return v;
}

}  // namespace

std::vector<int> CoherentQueryOrder(
    const double* rows, int dim, const int* ids, int first, int count) {
    if (count < kMinQueries || dim < 1) return {};
    const int axes = std::min(dim, 3);
    auto rowId = [&](int i) { return ids ? ids[first + i] : first + i; };
    auto row = [&](int i) { return rows + static_cast<size_t>(rowId(i)) * dim; };

    // Non-finite coordinates fail every comparison, so they widen no bound.
    double lo[3], hi[3];
    std::fill(lo, lo + 3, std::numeric_limits<double>::infinity());
    std::fill(hi, hi + 3, -std::numeric_limits<double>::infinity());
    for (int i = 0; i < count; ++i) {
        const double* q = row(i);
        for (int a = 0; a < axes; ++a) {
            lo[a] = std::min(lo[a], q[a]);
            hi[a] = std::max(hi[a], q[a]);
        }
    }
    double extent = 0.0;
    for (int a = 0; a < axes; ++a) extent = std::max(extent, hi[a] - lo[a]);
    if (!(extent > 0.0) || !std::isfinite(extent)) return {};

    std::vector<double> steps(kSampledSteps);
    for (int s = 0; s < kSampledSteps; ++s) {
        const int i = static_cast<int>(static_cast<long long>(s) * (count - 1) / kSampledSteps);
        const double *p = row(i), *q = row(i + 1);
        double step = 0.0;
        for (int a = 0; a < axes; ++a) step = std::max(step, std::abs(p[a] - q[a]));
        steps[s] = step;
    }
    std::nth_element(steps.begin(), steps.begin() + kSampledSteps / 2, steps.end());
    if (steps[kSampledSteps / 2] < extent * kCoherentStep) return {};

    // Curve code in the high half, position in the low half: one sort of plain integers.
    const double scale = kLastCell / extent;
    std::vector<uint64_t> keys(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        const double* q = row(i);
        uint32_t code = 0;
        for (int a = 0; a < axes; ++a) {
            const double cell = (q[a] - lo[a]) * scale;
            code |= SpreadBits(cell > 0.0 ? static_cast<uint32_t>(std::min(cell, kLastCell)) : 0u)
                    << a;
        }
        keys[i] = (static_cast<uint64_t>(code) << 32) | static_cast<uint32_t>(i);
    }
    std::sort(keys.begin(), keys.end());
    std::vector<int> order(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) order[i] = rowId(static_cast<int>(keys[i] & 0xffffffffu));
    return order;
}

}  // namespace ZOL
