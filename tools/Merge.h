// Registration and merging of scans, shared by `zol register`, `zol merge` and
// `zol demo`, so that the demo shows exactly what the merge command does.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <zol/core/IPointList.h>
#include <zol/core/Matrix4x4.h>
#include <zol/core/PointCloud.h>
#include <zol/runtime/Ann.h>

namespace zoltool {

class ProgressBar;

/// Gives a cloud without normals plane-fit normals from 16 neighbours, facing its scanner
/// for a grid cloud and away from the middle otherwise. \p name names it in messages.
/// \return whether normals were estimated.
bool EnsureNormals(ZOL::PointCloud& cloud, const std::string& name);

/// How well a pose lays a cloud onto \p ref: the share of its points that land within
/// \p distance of a point of \p ref whose normal agrees within 25 degrees.
class FitScore {
public:
    FitScore(const ZOL::PointCloud& ref, double distance);
    double operator()(const ZOL::PointCloud& from, const ZOL::Matrix4x4& pose);

private:
    const ZOL::PointCloud& mRef;
    ZOL::PointCloudPointList mList;
    ZOL::Ann mAnn;
    double mDistance;
    bool mReady = false;
};

/// A pose and how well it fits.
struct Registration {
    ZOL::Matrix4x4 pose;
    double fit = 0.0;
};

/// Coarse poses of \p from on \p ref from any start: \p from aligned onto \p ref, and
/// \p ref onto \p from, inverted (the search is not symmetric; one direction often finds
/// what the other misses). \p bar shows the step; \p name names \p from in messages.
/// Fails with EXIT_FAILED.
std::vector<ZOL::Matrix4x4> CoarseStarts(const ZOL::PointCloud& ref,
                                         const ZOL::PointCloud& from,
                                         double accuracy,
                                         ProgressBar& bar,
                                         const std::string& name);

/// Refines every start pose by ICP of \p from onto \p ref and keeps the one that \p score
/// rates best. Fails with EXIT_FAILED.
Registration RefineBest(const ZOL::PointCloud& ref,
                        const ZOL::PointCloud& from,
                        const std::vector<ZOL::Matrix4x4>& starts,
                        FitScore& score,
                        ProgressBar& bar,
                        const std::string& name);

/// What merging found for one scan.
struct MergedScan {
    ZOL::Matrix4x4 pose;   ///< scan coordinates -> the first scan's coordinates
    double fit = 1.0;      ///< its FitScore on the model before it, at two cells
    double seconds = 0.0;  ///< registration and fusion time
};

/// Registers every scan onto the fusion of the scans before it (coarse alignment from
/// CoarseStarts and onto the scan before, each refined by ICP; the best fit wins) and
/// fuses it there, on a grid of cells of \p cell model units (0: the point
/// spacing of the first scan). Scans without normals get them first. \p onScan is called
/// after each scan. \return the fused cloud, one point per occupied cell, with normals.
std::unique_ptr<ZOL::PointCloud> MergeScans(
    std::vector<std::unique_ptr<ZOL::PointCloud>>& scans,
    const std::vector<std::string>& names,
    double cell,
    double accuracy,
    std::vector<MergedScan>& results,
    const std::function<void(int, const MergedScan&)>& onScan);

/// The 16 numbers of a 4x4 matrix, row after row, from a text file ("#" starts a
/// comment); 12 numbers are read as the upper 3x4 rows. Fails with EXIT_BAD_INPUT.
ZOL::Matrix4x4 ReadMatrix(const std::string& path);

/// A matrix as four lines of four numbers that read back exactly, each after \p indent.
std::string FormatMatrix(const ZOL::Matrix4x4& matrix, const char* indent);

/// Angle in degrees of the rotation part of \p matrix.
double RotationDegrees(const ZOL::Matrix4x4& matrix);

}  // namespace zoltool
