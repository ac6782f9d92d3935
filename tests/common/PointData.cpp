// Seeded point generators, the points of a file and the brute-force oracle.
#include "tests/common/PointData.h"

#include <algorithm>
#include <memory>
#include <random>

#include <zol/io/Parser.h>

namespace zoltest {

std::vector<ZOL::Vector3> RandomPoints(int count, unsigned seed, double extent) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> coord(-extent, extent);
    std::vector<ZOL::Vector3> points(static_cast<size_t>(count));
    for (ZOL::Vector3& p : points) {
        p.x = coord(rng);
        p.y = coord(rng);
        p.z = coord(rng);
    }
    return points;
}

std::vector<ZOL::Vector3> RandomNormals(int count, unsigned seed) {
    std::vector<ZOL::Vector3> normals = RandomPoints(count, seed);
    for (ZOL::Vector3& n : normals) {
        if (n.Normalise() < 1e-9) n = ZOL::Vector3(0, 0, 1);
    }
    return normals;
}

std::vector<ZOL::Vector3> LoadPlyVertices(const std::string& path) {
    const std::unique_ptr<ZOL::PointCloud> cloud(ZOL::Parser::ImportPointCloud(path));
    std::vector<ZOL::Vector3> points;
    for (int i = 0; cloud && i < cloud->GetPointCount(); ++i)
        points.push_back(cloud->GetPointCoord(i));
    return points;
}

ZOL::PointCloud MakeCloud(const std::vector<ZOL::Vector3>& points,
                          const std::vector<ZOL::Vector3>* normals) {
    ZOL::PointCloud cloud(normals != nullptr, false, false);
    cloud.ReservePoint(static_cast<int>(points.size()));
    for (size_t i = 0; i < points.size(); ++i) {
        if (normals) {
            cloud.InsertPoint(points[i], (*normals)[i]);
        } else {
            cloud.InsertPoint(points[i]);
        }
    }
    return cloud;
}

std::vector<Neighbor> BruteForceNearest(const std::vector<ZOL::Vector3>& points,
                                        const ZOL::Vector3& query,
                                        int k) {
    std::vector<Neighbor> all(points.size());
    for (size_t i = 0; i < points.size(); ++i) {
        double d = 0.0;
        for (int a = 0; a < 3; ++a) {
            const double t = query[a] - points[i][a];
            d += t * t;
        }
        all[i] = {static_cast<int>(i), d};
    }
    const size_t kk = std::min(all.size(), static_cast<size_t>(std::max(k, 0)));
    std::partial_sort(
        all.begin(), all.begin() + kk, all.end(), [](const Neighbor& a, const Neighbor& b) {
            return a.squaredDistance != b.squaredDistance ? a.squaredDistance < b.squaredDistance
                                                          : a.id < b.id;
        });
    all.resize(kk);
    return all;
}

}  // namespace zoltest
