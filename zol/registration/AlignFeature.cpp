// Reduction of a cloud to a few hundred voxel means for coarse alignment, and the
// pose-invariant descriptors and border flags of the reduced points.
#include <zol/registration/AlignFeatureInternal.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <zol/core/IPointList.h>
#include <zol/registration/AlignHashGridInternal.h>

namespace ZOL {

namespace {

/// Points used to estimate the voxel size; enough for a few hundred voxels.
constexpr int kVoxelEstimatePoints = 20000;
/// Voxels per axis that a packed key can address (21 bits).
constexpr double kMaxVoxelsPerAxis = 2000000.0;
/// Descriptor radii in reduction spacings.
constexpr double kInnerRadius = 2.5;
constexpr double kOuterRadius = 5.0;
/// A point whose outer neighbours' centroid lies this far (in outer radii) from it along
/// the tangent plane sits at a border.
constexpr double kBorderOffset = 0.3;

/// Packs the voxel of each point into one 64-bit key (21 bits per axis).
class VoxelKeys {
public:
    VoxelKeys(const std::vector<double>& xyz, double voxelSize) : mSize(voxelSize) {
        const size_t count = xyz.size() / 3;
        for (int a = 0; a < 3; ++a) mMin[a] = count ? xyz[a] : 0.0;
        for (size_t i = 1; i < count; ++i) {
            for (int a = 0; a < 3; ++a) mMin[a] = std::min(mMin[a], xyz[3 * i + a]);
        }
    }
    uint64_t Key(const double* p) const {
        uint64_t key = 0;
        for (int a = 0; a < 3; ++a) {
            key = (key << 21) | static_cast<uint64_t>(std::floor((p[a] - mMin[a]) / mSize));
        }
        return key;
    }

private:
    double mSize;
    double mMin[3];
};

/// Open-addressing map from voxel key to a dense slot number.
class VoxelTable {
public:
    explicit VoxelTable(size_t expected) {
        size_t size = 16;
        while (size < 2 * expected) size <<= 1;
        mKeys.assign(size, UINT64_MAX);
        mSlots.assign(size, -1);
    }
    /// \return the slot of \p key, a new one (the count so far) when unseen.
    int Find(uint64_t key) {
        const size_t mask = mKeys.size() - 1;
        size_t h = (key * 0x9E3779B97F4A7C15ull) >> 17 & mask;
        while (mKeys[h] != UINT64_MAX && mKeys[h] != key) h = (h + 1) & mask;
        if (mKeys[h] == UINT64_MAX) {
            mKeys[h] = key;
            mSlots[h] = mCount++;
        }
        return mSlots[h];
    }
    int Count() const { return mCount; }

private:
    std::vector<uint64_t> mKeys;
    std::vector<int> mSlots;
    int mCount = 0;
};

double Diagonal(const std::vector<double>& xyz) {
    const size_t count = xyz.size() / 3;
    if (count == 0) return 0.0;
    double lo[3] = {xyz[0], xyz[1], xyz[2]}, hi[3] = {xyz[0], xyz[1], xyz[2]};
    for (size_t i = 1; i < count; ++i) {
        for (int a = 0; a < 3; ++a) {
            lo[a] = std::min(lo[a], xyz[3 * i + a]);
            hi[a] = std::max(hi[a], xyz[3 * i + a]);
        }
    }
    return std::sqrt((hi[0] - lo[0]) * (hi[0] - lo[0]) + (hi[1] - lo[1]) * (hi[1] - lo[1]) +
                     (hi[2] - lo[2]) * (hi[2] - lo[2]));
}

int CountVoxels(const std::vector<double>& xyz, double voxelSize) {
    const VoxelKeys keys(xyz, voxelSize);
    const size_t count = xyz.size() / 3;
    VoxelTable table(std::min<size_t>(count, 1 << 16));
    for (size_t i = 0; i < count; ++i) table.Find(keys.Key(&xyz[3 * i]));
    return table.Count();
}

}  // namespace

double ChooseVoxelSize(const std::vector<double>& xyz, int targetCount) {
    const double diagonal = Diagonal(xyz);
    if (!(diagonal > 0.0)) return 0.0;
    const size_t count = xyz.size() / 3;
    std::vector<double> subset;
    const size_t stride = (count + kVoxelEstimatePoints - 1) / kVoxelEstimatePoints;
    for (size_t i = 0; i < count; i += stride) subset.insert(subset.end(), &xyz[3 * i], &xyz[3 * i + 3]);
    // Search the size on a log scale, bracketed: the count falls as the size grows.
    const double smallest = diagonal / kMaxVoxelsPerAxis;
    double low = smallest, high = diagonal;
    double size = std::max(diagonal / std::sqrt(static_cast<double>(targetCount)), smallest);
    for (int step = 0; step < 12; ++step) {
        const int voxels = CountVoxels(subset, size);
        if (std::abs(voxels - targetCount) <= targetCount / 20) break;
        if (voxels > targetCount) {
            low = size;
        } else {
            high = size;
        }
        // A surface keeps about area / size^2 voxels; fall back to bisection in log
        // scale when that guess leaves the bracket.
        double next = size * std::sqrt(static_cast<double>(voxels) / targetCount);
        if (!(next > low && next < high)) next = std::sqrt(low * high);
        size = next;
    }
    return size;
}

void ReduceOnVoxels(const std::vector<double>& xyz,
                    const std::vector<double>& normals,
                    double voxelSize,
                    PointCloud* out) {
    const size_t count = xyz.size() / 3;
    // A cloud far larger than the one the size was chosen for must still fit the keys.
    const VoxelKeys keys(xyz, std::max(voxelSize, Diagonal(xyz) / kMaxVoxelsPerAxis));
    VoxelTable table(count);
    std::vector<uint64_t> slotKey;
    std::vector<double> sums;  // x, y, z, nx, ny, nz, count per slot
    for (size_t i = 0; i < count; ++i) {
        const uint64_t key = keys.Key(&xyz[3 * i]);
        const int slot = table.Find(key);
        if (slot == static_cast<int>(slotKey.size())) {
            slotKey.push_back(key);
            sums.insert(sums.end(), 7, 0.0);
        }
        double* s = &sums[7 * static_cast<size_t>(slot)];
        for (int a = 0; a < 3; ++a) {
            s[a] += xyz[3 * i + a];
            s[3 + a] += normals[3 * i + a];
        }
        s[6] += 1.0;
    }
    std::vector<int> order(slotKey.size());
    for (size_t k = 0; k < order.size(); ++k) order[k] = static_cast<int>(k);
    std::sort(order.begin(), order.end(), [&](int l, int r) { return slotKey[l] < slotKey[r]; });
    *out = PointCloud(true, false, false);
    out->ReservePoint(static_cast<int>(order.size()));
    for (int slot : order) {
        const double* s = &sums[7 * static_cast<size_t>(slot)];
        Vector3 normal(s[3], s[4], s[5]);
        normal.Normalise();
        out->InsertPoint(Vector3(s[0], s[1], s[2]) / s[6], normal);
    }
}

void DescribeAlignCloud(double spacing, AlignCloud& cloud) {
    PointCloudPointList list(&cloud.cloud);
    CopyPointListCoords(&list, &cloud.xyz);
    CopyPointListNormals(&list, &cloud.normals);
    const int count = cloud.Count();
    cloud.descriptors.assign(static_cast<size_t>(count) * kAlignDescriptorDim, 0.0);
    cloud.border.assign(count, 1);
    if (count == 0) return;
    const double outer = kOuterRadius * spacing, inner = kInnerRadius * spacing;
    AlignHashGrid grid;
    grid.Build(cloud.xyz.data(), count, outer);
    std::vector<int> ids;
    for (int i = 0; i < count; ++i) {
        const double* p = cloud.Point(i);
        const double* n = cloud.Normal(i);
        grid.FindDistanceNeighbors(p, 0.5 * outer, 0.5 * outer, &ids);
        double elevation[2] = {0.0, 0.0}, bend[2] = {0.0, 0.0}, used[2] = {0.0, 0.0};
        double tangent[3] = {0.0, 0.0, 0.0};
        for (int j : ids) {
            if (j == i) continue;
            const double* q = cloud.Point(j);
            const double* m = cloud.Normal(j);
            const double d[3] = {q[0] - p[0], q[1] - p[1], q[2] - p[2]};
            const double length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
            if (!(length > 0.0)) continue;
            const double height = d[0] * n[0] + d[1] * n[1] + d[2] * n[2];
            const double turn = 1.0 - (n[0] * m[0] + n[1] * m[1] + n[2] * m[2]);
            for (int a = 0; a < 3; ++a) tangent[a] += d[a] - height * n[a];
            for (int r = 0; r < 2; ++r) {
                if (r == 0 && length > inner) continue;
                elevation[r] += height / length;
                bend[r] += turn;
                used[r] += 1.0;
            }
        }
        double* desc = &cloud.descriptors[static_cast<size_t>(i) * kAlignDescriptorDim];
        for (int r = 0; r < 2; ++r) {
            if (used[r] > 0.0) {
                desc[2 * r] = elevation[r] / used[r];
                desc[2 * r + 1] = bend[r] / used[r];
            }
        }
        if (used[1] >= 3.0) {
            const double offset = std::sqrt(tangent[0] * tangent[0] + tangent[1] * tangent[1] +
                                            tangent[2] * tangent[2]) /
                                  used[1];
            cloud.border[i] = offset > kBorderOffset * outer ? 1 : 0;
        }
    }
}

void BalanceDescriptors(AlignCloud& ref, AlignCloud& from) {
    const int count = ref.Count();
    if (count == 0) return;
    for (int k = 0; k < kAlignDescriptorDim; ++k) {
        double mean = 0.0, square = 0.0;
        for (int i = 0; i < count; ++i) mean += ref.Descriptor(i)[k];
        mean /= count;
        for (int i = 0; i < count; ++i) {
            const double d = ref.Descriptor(i)[k] - mean;
            square += d * d;
        }
        const double spread = std::sqrt(square / count);
        const double scale = spread > 1e-12 ? 1.0 / spread : 1.0;
        for (AlignCloud* c : {&ref, &from}) {
            for (size_t i = k; i < c->descriptors.size(); i += kAlignDescriptorDim) {
                c->descriptors[i] *= scale;
            }
        }
    }
}

}  // namespace ZOL
