// Reduction of a cloud to voxel means with plane-fit normals for coarse alignment, and
// the curvature descriptors of the reduced points.
#include <zol/registration/AlignFeatureInternal.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <zol/core/IPointList.h>
#include <zol/registration/AlignHashGridInternal.h>
#include <zol/runtime/GeneralMatrixInternal.h>

#include <Eigen/Dense>

namespace ZOL {

namespace {

/// Points used to estimate the voxel size; enough for a few hundred voxels.
constexpr int kVoxelEstimatePoints = 20000;
/// Voxels per axis that a packed key can address (21 bits).
constexpr double kMaxVoxelsPerAxis = 2000000.0;
/// Descriptor radii in reduction spacings, ascending.
constexpr int kRadiusCount = kAlignDescriptorDim / 2;
constexpr double kDescriptorRadii[kRadiusCount] = {1.5, 2.0, 2.5, 3.0, 4.0};
/// Fewer neighbours than this leave a curvature pair at zero.
constexpr int kMinFitPoints = 8;
/// Values kept per voxel: sum x y z, sum of normals, count, then xx xy xz yy yz zz of
/// the coordinates taken from the cloud's lower corner (small numbers, no cancellation).
constexpr int kVoxelSums = 13;

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
    const double* Min() const { return mMin; }

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
        const size_t h = Probe(key);
        if (mKeys[h] == UINT64_MAX) {
            mKeys[h] = key;
            mSlots[h] = mCount++;
        }
        return mSlots[h];
    }
    /// \return the slot of \p key, or -1.
    int Lookup(uint64_t key) const {
        const size_t h = Probe(key);
        return mKeys[h] == UINT64_MAX ? -1 : mSlots[h];
    }
    int Count() const { return mCount; }

private:
    size_t Probe(uint64_t key) const {
        const size_t mask = mKeys.size() - 1;
        size_t h = (key * 0x9E3779B97F4A7C15ull) >> 17 & mask;
        while (mKeys[h] != UINT64_MAX && mKeys[h] != key) h = (h + 1) & mask;
        return h;
    }

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
    VoxelTable table(count);
    for (size_t i = 0; i < count; ++i) table.Find(keys.Key(&xyz[3 * i]));
    return table.Count();
}

/// Scatter of a set of points from its moments (count, sums, second moments about a
/// common origin): centroid (about that origin), eigenvalues ascending and the normal.
struct Scatter {
    double centroid[3] = {0.0, 0.0, 0.0};
    double eigenvalues[3] = {0.0, 0.0, 0.0};
    Vector3 normal;
    bool valid = false;

    /// \param[in] m count, sum x y z, xx xy xz yy yz zz.
    explicit Scatter(const double* m) {
        const double w = m[0];
        if (w < 3.0) return;
        for (int a = 0; a < 3; ++a) centroid[a] = m[1 + a] / w;
        const double* c = centroid;
        GeneralMatrix3 cov;
        cov.Init();
        const double xx = m[4] / w - c[0] * c[0], xy = m[5] / w - c[0] * c[1];
        const double xz = m[6] / w - c[0] * c[2], yy = m[7] / w - c[1] * c[1];
        const double yz = m[8] / w - c[1] * c[2], zz = m[9] / w - c[2] * c[2];
        cov.SetValue(0, 0, xx);
        cov.SetValue(1, 0, xy);
        cov.SetValue(2, 0, xz);
        cov.SetValue(0, 1, xy);
        cov.SetValue(1, 1, yy);
        cov.SetValue(2, 1, yz);
        cov.SetValue(0, 2, xz);
        cov.SetValue(1, 2, yz);
        cov.SetValue(2, 2, zz);
        GeneralMatrixEigenSolver solver;
        if (solver.ComputeDirect(cov) != 0) return;
        for (int k = 0; k < 3; ++k) eigenvalues[k] = std::max(0.0, solver.GetEigenValue(k));
        normal = solver.GetEigenVector(0);
        valid = eigenvalues[1] > 0.0;
    }
};

}  // namespace

void AlignCloud::CopyFlat() {
    PointCloudPointList list(&cloud);
    CopyPointListCoords(&list, &xyz);
    CopyPointListNormals(&list, &normals);
}

double ChooseVoxelSize(const std::vector<double>& xyz, int targetCount) {
    const double diagonal = Diagonal(xyz);
    if (!(diagonal > 0.0)) return 0.0;
    const size_t count = xyz.size() / 3;
    std::vector<double> subset;
    const size_t stride = (count + kVoxelEstimatePoints - 1) / kVoxelEstimatePoints;
    for (size_t i = 0; i < count; i += stride) {
        subset.insert(subset.end(), &xyz[3 * i], &xyz[3 * i + 3]);
    }
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
                    AlignCloud* out) {
    const size_t count = xyz.size() / 3;
    // A cloud far larger than the one the size was chosen for must still fit the keys.
    const double size = std::max(voxelSize, Diagonal(xyz) / kMaxVoxelsPerAxis);
    const VoxelKeys keys(xyz, size);
    const double* origin = keys.Min();
    VoxelTable table(count);
    std::vector<uint64_t> slotKey;
    std::vector<double> sums;
    for (size_t i = 0; i < count; ++i) {
        const uint64_t key = keys.Key(&xyz[3 * i]);
        const int slot = table.Find(key);
        if (slot == static_cast<int>(slotKey.size())) {
            slotKey.push_back(key);
            sums.insert(sums.end(), kVoxelSums, 0.0);
        }
        double* s = &sums[kVoxelSums * static_cast<size_t>(slot)];
        const double p[3] = {xyz[3 * i] - origin[0], xyz[3 * i + 1] - origin[1],
                             xyz[3 * i + 2] - origin[2]};
        for (int a = 0; a < 3; ++a) {
            s[a] += p[a];
            s[3 + a] += normals[3 * i + a];
        }
        s[6] += 1.0;
        s[7] += p[0] * p[0];
        s[8] += p[0] * p[1];
        s[9] += p[0] * p[2];
        s[10] += p[1] * p[1];
        s[11] += p[1] * p[2];
        s[12] += p[2] * p[2];
    }
    std::vector<int> order(slotKey.size());
    for (size_t k = 0; k < order.size(); ++k) order[k] = static_cast<int>(k);
    std::sort(order.begin(), order.end(), [&](int l, int r) { return slotKey[l] < slotKey[r]; });

    out->cloud = PointCloud(true, false, false);
    out->cloud.ReservePoint(static_cast<int>(order.size()));
    for (int slot : order) {
        const double* s = &sums[kVoxelSums * static_cast<size_t>(slot)];
        // The plane of the 3 x 3 x 3 block: a voxel alone holds too little surface for a
        // stable normal, and the block is the same wherever the mean lies in the voxel.
        double block[10] = {};
        const uint64_t key = slotKey[slot];
        const int64_t index[3] = {static_cast<int64_t>(key >> 42),
                                  static_cast<int64_t>((key >> 21) & 0x1FFFFF),
                                  static_cast<int64_t>(key & 0x1FFFFF)};
        for (int dx = -1; dx <= 1; ++dx) {
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dz = -1; dz <= 1; ++dz) {
                    const int64_t x = index[0] + dx, y = index[1] + dy, z = index[2] + dz;
                    if (x < 0 || y < 0 || z < 0) continue;
                    const int other =
                        table.Lookup(static_cast<uint64_t>(x) << 42 |
                                     static_cast<uint64_t>(y) << 21 | static_cast<uint64_t>(z));
                    if (other < 0) continue;
                    const double* t = &sums[kVoxelSums * static_cast<size_t>(other)];
                    block[0] += t[6];
                    for (int a = 0; a < 3; ++a) block[1 + a] += t[a];
                    for (int q = 0; q < 6; ++q) block[4 + q] += t[7 + q];
                }
            }
        }
        Vector3 normal(s[3], s[4], s[5]);
        normal.Normalise();
        const Scatter scatter(block);
        if (scatter.valid) normal = scatter.normal * (scatter.normal * normal < 0.0 ? -1.0 : 1.0);
        const Vector3 mean(s[0] / s[6] + origin[0], s[1] / s[6] + origin[1],
                           s[2] / s[6] + origin[2]);
        out->cloud.InsertPoint(mean, normal);
    }
    out->CopyFlat();
}

void DescribeAlignCloud(double spacing, AlignCloud& cloud) {
    const int count = cloud.Count();
    cloud.descriptors.assign(static_cast<size_t>(count) * kAlignDescriptorDim, 0.0);
    if (count == 0) return;
    const double outer = kDescriptorRadii[kRadiusCount - 1] * spacing;
    AlignHashGrid grid;
    grid.Build(cloud.xyz.data(), count, outer);
    std::vector<int> ids;
    struct Local {
        double distance, x, y, z;
        int id;
    };
    std::vector<Local> local;
    for (int i = 0; i < count; ++i) {
        const double* p = cloud.Point(i);
        const Vector3 n(cloud.Normal(i)[0], cloud.Normal(i)[1], cloud.Normal(i)[2]);
        Vector3 u = std::abs(n.x) < 0.9 ? Vector3(1, 0, 0).CrossProduct(n)
                                        : Vector3(0, 1, 0).CrossProduct(n);
        u.Normalise();
        const Vector3 v = n.CrossProduct(u);
        // Neighbours in the tangent frame, in units of the outer radius, nearest first.
        grid.FindDistanceNeighbors(p, 0.5 * outer, 0.5 * outer, &ids);
        local.clear();
        for (int j : ids) {
            const double* q = cloud.Point(j);
            const Vector3 d(q[0] - p[0], q[1] - p[1], q[2] - p[2]);
            local.push_back({d.Length() / outer, d * u / outer, d * v / outer, d * n / outer, j});
        }
        std::sort(local.begin(), local.end(), [](const Local& l, const Local& r) {
            return l.distance != r.distance ? l.distance < r.distance : l.id < r.id;
        });
        // One pass grows the normal equations of z = a x^2 + b xy + c y^2 + d x + e y + f
        // radius by radius; the Hessian's eigenvalues are the principal curvatures.
        Eigen::Matrix<double, 6, 6> normal = Eigen::Matrix<double, 6, 6>::Zero();
        Eigen::Matrix<double, 6, 1> right = Eigen::Matrix<double, 6, 1>::Zero();
        size_t next = 0;
        double* desc = &cloud.descriptors[static_cast<size_t>(i) * kAlignDescriptorDim];
        for (int r = 0; r < kRadiusCount; ++r) {
            const double radius = kDescriptorRadii[r] / kDescriptorRadii[kRadiusCount - 1];
            for (; next < local.size() && local[next].distance <= radius; ++next) {
                const Local& l = local[next];
                Eigen::Matrix<double, 6, 1> row;
                row << l.x * l.x, l.x * l.y, l.y * l.y, l.x, l.y, 1.0;
                normal.selfadjointView<Eigen::Lower>().rankUpdate(row);
                right += row * l.z;
            }
            if (next < static_cast<size_t>(kMinFitPoints)) continue;
            const Eigen::Matrix<double, 6, 1> c =
                normal.selfadjointView<Eigen::Lower>().ldlt().solve(right);
            if (!c.allFinite()) continue;
            const double mean = c[0] + c[2];
            const double spread = std::sqrt((c[0] - c[2]) * (c[0] - c[2]) + c[1] * c[1]);
            desc[2 * r] = (mean + spread) * radius;
            desc[2 * r + 1] = (mean - spread) * radius;
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
