// Bunny scans with normals, bun.conf poses, rigid motions and pose errors.
#include "tests/common/ScanData.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <mutex>
#include <random>
#include <sstream>

#include <zol/pointcloud/ConsolidatePointCloud.h>

#include "tests/common/PointData.h"
#include "tests/common/TestData.h"

namespace zoltest {

namespace {

/// T_i of bun.conf: quaternion (x, y, z, w) and translation; the pose maps scan
/// coordinates into the frame of bun000 as R(q)^T p + t.
ZOL::Matrix4x4 BunnyPose(const std::string& name) {
    std::ifstream in(DataPath("bunny/bun.conf"));
    std::string line;
    ZOL::Matrix4x4 pose;
    pose.InitIdentityTransform();
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::string keyword, file;
        double t[3], q[4];
        if (!(words >> keyword >> file >> t[0] >> t[1] >> t[2] >> q[0] >> q[1] >> q[2] >> q[3]) ||
            keyword != "bmesh" || file != name + ".ply") {
            continue;
        }
        const double x = q[0], y = q[1], z = q[2], w = q[3];
        const double r[3][3] = {
            {1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)},
            {2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)},
            {2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)}};
        for (int a = 0; a < 3; ++a) {
            for (int b = 0; b < 3; ++b) pose.SetValue(a, b, r[b][a]);
            pose.SetValue(a, 3, t[a]);
        }
    }
    return pose;
}

}  // namespace

const ZOL::PointCloud& BunnyScan(const std::string& name) {
    static std::mutex lock;
    static std::map<std::string, ZOL::PointCloud> scans;
    std::lock_guard<std::mutex> guard(lock);
    auto found = scans.find(name);
    if (found != scans.end()) return found->second;
    ZOL::PointCloud& scan = scans[name];
    scan = MakeCloud(LoadPlyVertices(DataPath("bunny/" + name + ".ply")));
    const ZOL::Vector3 view(0.0, 0.0, -1.0);
    ZOL::ConsolidatePointCloud::CalculatePointCloudNormal(&scan, 10, &view);
    return scan;
}

ZOL::Matrix4x4 BunnyTruth(const std::string& from, const std::string& to) {
    return BunnyPose(to).AffineInverse() * BunnyPose(from);
}

ZOL::Matrix4x4 RigidMotion(ZOL::Vector3 axis,
                           double degrees,
                           const ZOL::Vector3& center,
                           const ZOL::Vector3& shift) {
    axis.Normalise();
    const double a = degrees * M_PI / 180.0, c = std::cos(a), s = std::sin(a), t = 1.0 - c;
    const double x = axis.x, y = axis.y, z = axis.z;
    const double r[3][3] = {{t * x * x + c, t * x * y - s * z, t * x * z + s * y},
                            {t * x * y + s * z, t * y * y + c, t * y * z - s * x},
                            {t * x * z - s * y, t * y * z + s * x, t * z * z + c}};
    ZOL::Matrix4x4 m;
    m.InitIdentityTransform();
    for (int i = 0; i < 3; ++i) {
        double moved = center[i] + shift[i];
        for (int j = 0; j < 3; ++j) {
            m.SetValue(i, j, r[i][j]);
            moved -= r[i][j] * center[j];
        }
        m.SetValue(i, 3, moved);
    }
    return m;
}

ZOL::Matrix4x4 RandomMotion(unsigned seed,
                            double maxDegrees,
                            const ZOL::Vector3& center,
                            double maxShift) {
    std::mt19937 rng(seed);
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const ZOL::Vector3 axis(normal(rng), normal(rng), normal(rng));
    const double degrees = unit(rng) * maxDegrees;
    const ZOL::Vector3 shift((2 * unit(rng) - 1) * maxShift, (2 * unit(rng) - 1) * maxShift,
                             (2 * unit(rng) - 1) * maxShift);
    return RigidMotion(axis, degrees, center, shift);
}

ZOL::PointCloud Moved(const ZOL::PointCloud& cloud, const ZOL::Matrix4x4& motion) {
    ZOL::PointCloud moved(cloud);
    for (int i = 0; i < moved.GetPointCount(); ++i) {
        moved.SetPointCoord(i, motion.TransformPoint(moved.GetPointCoord(i)));
        if (moved.HasNormal())
            moved.SetPointNormal(i, motion.RotateVector(moved.GetPointNormal(i)));
    }
    return moved;
}

ZOL::Vector3 Centroid(const ZOL::PointCloud& cloud) {
    ZOL::PointCloud& points = const_cast<ZOL::PointCloud&>(cloud);
    ZOL::Vector3 sum;
    for (int i = 0; i < points.GetPointCount(); ++i) sum += points.GetPointCoord(i);
    return sum / std::max(points.GetPointCount(), 1);
}

PoseError ComparePoses(const ZOL::Matrix4x4& found,
                       const ZOL::Matrix4x4& truth,
                       const ZOL::Vector3& point) {
    const ZOL::Matrix4x4 difference = found * truth.AffineInverse();
    const double trace =
        difference.GetValue(0, 0) + difference.GetValue(1, 1) + difference.GetValue(2, 2);
    const double cosine = std::max(-1.0, std::min(1.0, (trace - 1.0) / 2.0));
    return {std::acos(cosine) * 180.0 / M_PI,
            found.TransformPoint(point).Distance(truth.TransformPoint(point))};
}

}  // namespace zoltest
