// The shared bunny range scans with normals and their ground-truth poses, and the rigid
// motions and pose errors that registration tests and benchmarks are written in.
#pragma once

#include <string>

#include <zol/core/Matrix4x4.h>
#include <zol/core/PointCloud.h>
#include <zol/core/Vector3.h>

namespace zoltest {

/// Scan \p name of the bunny folder ("bun000", "top3", ...) with plane-fit normals of 10
/// neighbours facing its scanner (which looks down -z); read once per process.
const ZOL::PointCloud& BunnyScan(const std::string& name);
/// The transform taking scan \p from onto scan \p to by bun.conf: T_to^-1 * T_from.
ZOL::Matrix4x4 BunnyTruth(const std::string& from, const std::string& to);

/// Rotation by \p degrees about \p axis through \p center, then a shift by \p shift.
ZOL::Matrix4x4 RigidMotion(ZOL::Vector3 axis,
                           double degrees,
                           const ZOL::Vector3& center,
                           const ZOL::Vector3& shift = ZOL::Vector3());
/// A random rotation (axis uniform on the sphere, angle uniform up to \p maxDegrees) about
/// \p center followed by a random shift of up to \p maxShift per axis, from \p seed.
ZOL::Matrix4x4 RandomMotion(unsigned seed,
                            double maxDegrees,
                            const ZOL::Vector3& center,
                            double maxShift);
/// A copy of \p cloud with points moved and normals turned by \p motion.
ZOL::PointCloud Moved(const ZOL::PointCloud& cloud, const ZOL::Matrix4x4& motion);
ZOL::Vector3 Centroid(const ZOL::PointCloud& cloud);

/// How far pose \p found is from pose \p truth: the angle of found * truth^-1 and the
/// distance between the images of \p point under the two.
struct PoseError {
    double degrees;
    double distance;
};
PoseError ComparePoses(const ZOL::Matrix4x4& found,
                       const ZOL::Matrix4x4& truth,
                       const ZOL::Vector3& point);

}  // namespace zoltest
