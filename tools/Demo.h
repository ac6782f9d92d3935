// `zol demo`: a built-in object scanned from several sides as a range scanner would see
// it, each scan delivered in an unknown pose, merged by the code of `zol merge`, with the
// recovered poses checked against the truth.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <zol/core/Matrix4x4.h>
#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>

namespace zoldemo {

/// The built-in object: a lumpy clay animal about 180 mm long (units: mm), as a triangle
/// mesh of overlapping closed parts with outward normals (a scanner sees their envelope).
ZOL::TriMesh MakeFigure();

/// Where a simulated scanner stands and how it sees.
struct ScannerView {
    ZOL::Matrix4x4 cameraToWorld;  ///< camera frame: x right, y up, looking along -z
    int width = 240;               ///< grid cells across
    int height = 180;              ///< grid cells up
    double fieldOfView = 36.0;     ///< degrees across the width
    double depthNoise = 0.05;      ///< standard deviation along the ray, model units
};

/// The camera pose looking at \p target from \p distance at \p azimuth degrees about the
/// world's y axis and \p elevation degrees above its x-z plane.
ZOL::Matrix4x4 LookFrom(double azimuth,
                        double elevation,
                        double distance,
                        const ZOL::Vector3& target);

/// A range scan of \p object: the nearest surface point along the ray of every grid cell,
/// with noise along the ray from \p seed, in camera coordinates, as a grid cloud (cell x
/// grows to the right, y upwards, as seen from the scanner). Surfaces seen at more than
/// 75 degrees from the ray are missed, as a real scanner misses them.
std::unique_ptr<ZOL::PointCloud> ScanObject(const ZOL::TriMesh& object,
                                            const ScannerView& view,
                                            unsigned seed);

/// A random rigid motion: a rotation drawn evenly over all rotations and a translation of
/// up to \p maxShift in each axis.
ZOL::Matrix4x4 RandomPose(unsigned seed, double maxShift);

/// Runs the demo, writing its files in \p folder (a fresh temporary folder when empty).
/// \return 0 when every scan was merged within 1 degree of its true pose, 1 otherwise
///         (and the tool's exit codes for files it cannot write).
int RunDemo(const std::string& folder, unsigned seed = 1);

}  // namespace zoldemo
