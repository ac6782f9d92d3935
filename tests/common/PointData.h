// Point sets for the neighbour-search tests and a brute-force k-nearest oracle.
#pragma once

#include <string>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/core/Vector3.h>

#include "tests/common/ThreadCountScope.h"

namespace zoltest {

/// \p count points uniform in [-extent, extent]^3 from a fixed seed.
std::vector<ZOL::Vector3> RandomPoints(int count, unsigned seed, double extent = 1.0);
/// Unit vectors in random directions from a fixed seed.
std::vector<ZOL::Vector3> RandomNormals(int count, unsigned seed);
/// The points of a cloud file (a PLY range scan, say) in file order, as Parser reads
/// them; empty when it cannot be read.
std::vector<ZOL::Vector3> LoadPlyVertices(const std::string& path);
/// A cloud holding \p points (and \p normals when given).
ZOL::PointCloud MakeCloud(const std::vector<ZOL::Vector3>& points,
                          const std::vector<ZOL::Vector3>* normals = nullptr);

/// One neighbour: index and squared distance.
struct Neighbor {
    int id;
    double squaredDistance;
};
/// The \p k nearest of \p points to \p query by exhaustive search, nearest first (ties
/// by index), squared distances summed over x, y, z in that order.
std::vector<Neighbor> BruteForceNearest(const std::vector<ZOL::Vector3>& points,
                                        const ZOL::Vector3& query,
                                        int k);

}  // namespace zoltest
