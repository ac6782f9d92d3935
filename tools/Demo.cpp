// `zol demo`: scans a built-in clay animal from eight sides, delivers each scan in a random pose,
// merges them with the code of `zol merge` and compares every recovered pose with the
// truth; writes the scans, the merged cloud and a POV-Ray scene (and image).
#include "Demo.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include <zol/pointcloud/PointCloudUtility.h>

#include "Merge.h"
#include "PovScene.h"
#include "ToolCommon.h"
#include "ToolFiles.h"

namespace zoldemo {

using namespace ZOL;
using namespace zoltool;

namespace {
constexpr int kScanCount = 8;
constexpr double kScanDistance = 350.0;  // mm from the scanner to the stone's centre
constexpr double kMaxShift = 100.0;      // mm of random translation per axis
constexpr double kPassDegrees = 1.0;

// A fresh folder under the system's temporary directory (the first free numbered name).
std::filesystem::path MakeWorkDir() {
    std::error_code error;
    const std::filesystem::path base = std::filesystem::temp_directory_path(error);
    for (int i = 0; !error && i < 10000; ++i) {
        const std::filesystem::path dir = base / ("zol-demo-" + std::to_string(i));
        if (std::filesystem::create_directory(dir, error)) return dir;
    }
    return {};
}

double Seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// Mean distance by which \p error moves the points of \p cloud.
double MeanShift(const PointCloud& cloud, const Matrix4x4& error) {
    const Vector3* p = cloud.GetPointCoordData();
    double sum = 0.0;
    for (int i = 0; i < cloud.GetPointCount(); ++i)
        sum += error.TransformPoint(p[i]).Distance(p[i]);
    return cloud.GetPointCount() > 0 ? sum / cloud.GetPointCount() : 0.0;
}
}  // namespace

int RunDemo(const std::string& folder, unsigned seed) {
    std::filesystem::path dir = folder;
    std::error_code error;
    if (dir.empty()) {
        dir = MakeWorkDir();
    } else {
        std::filesystem::create_directories(dir, error);
    }
    if (dir.empty() || !std::filesystem::is_directory(dir, error)) {
        Fail(EXIT_BAD_OUTPUT,
             "cannot create the folder " + (folder.empty() ? "in the temporary directory" : folder),
             0);
    }
    const auto begin = std::chrono::steady_clock::now();
    std::printf(
        "zol demo: a clay animal of about 180 mm scanned from %d sides; each scan arrives in an "
        "unknown pose and is merged as `zol merge` does\n",
        kScanCount);

    const TriMesh stone = MakeFigure();
    std::vector<std::unique_ptr<PointCloud>> scans;
    std::vector<std::string> names;  // "scan3" in messages
    std::vector<Matrix4x4> truth;    // scan coordinates -> world
    for (int i = 0; i < kScanCount; ++i) {
        const auto start = std::chrono::steady_clock::now();
        ScannerView view;
        const double azimuth = 360.0 * i / kScanCount, elevation = i % 2 == 0 ? 25.0 : 0.0;
        view.cameraToWorld = LookFrom(azimuth, elevation, kScanDistance, Vector3());
        std::unique_ptr<PointCloud> scan = ScanObject(stone, view, seed * 1000 + i);
        const Matrix4x4 delivered = RandomPose(seed * 7919 + i, kMaxShift);
        TransformPointCloud(scan.get(), delivered);
        truth.push_back(view.cameraToWorld * delivered.AffineInverse());
        names.push_back("scan" + std::to_string(i));
        WriteCloud((dir / (names.back() + ".ply")).string(), *scan);
        std::printf(
            "  scan %d from azimuth %3.0f, elevation %3.0f degrees: %5d points in a %dx%d "
            "grid, random pose of %5.1f degrees (%.2f s)\n",
            i, azimuth, elevation, scan->GetPointCount(), view.width, view.height,
            RotationDegrees(delivered), Seconds(start));
        scans.push_back(std::move(scan));
    }

    std::printf("merging (coarse alignment, ICP and fusion onto the scans before each):\n");
    const Matrix4x4 toFirst = truth[0].AffineInverse();
    double worstDegrees = 0.0, worstShift = 0.0;
    const auto report = [&](int i, const MergedScan& merged) {
        if (i == 0) {
            std::printf("  scan 0: the frame of the merged cloud; %.2f s\n", merged.seconds);
            return;
        }
        // The true pose of scan i in scan 0's frame, and what is left of it after merging.
        const Matrix4x4 expected = toFirst * truth[i];
        const Matrix4x4 residual = expected.AffineInverse() * merged.pose;
        const double degrees = RotationDegrees(residual);
        const double shift = MeanShift(*scans[i], residual);
        worstDegrees = std::max(worstDegrees, degrees);
        worstShift = std::max(worstShift, shift);
        std::printf("  scan %d: pose error %.3f degrees, %.3f mm; fit %.0f%%; %.2f s\n", i, degrees,
                    shift, 100.0 * merged.fit, merged.seconds);
    };
    std::vector<MergedScan> results;
    std::unique_ptr<PointCloud> merged = MergeScans(scans, names, 0.0, 0.5, results, report);

    const std::string cloudFile = (dir / "merged.ply").string();
    const std::string sceneFile = (dir / "merged.pov").string();
    const std::string imageFile = (dir / "merged.png").string();
    WriteCloud(cloudFile, *merged);
    WriteCloudScene(sceneFile, *merged, "the merged figure");
    const bool rendered = RenderScene(sceneFile, imageFile, 800, 600);

    std::printf("largest pose error %.3f degrees, %.3f mm; %d merged points; %.1f s in all\n",
                worstDegrees, worstShift, merged->GetPointCount(), Seconds(begin));
    std::printf("files in %s:\n", dir.string().c_str());
    std::printf("  scan0.ply .. scan%d.ply   the scans as the scanner delivered them\n",
                kScanCount - 1);
    std::printf("  merged.ply               the merged cloud\n");
    std::printf("  merged.pov               its POV-Ray scene\n");
    if (rendered) {
        std::printf("  merged.png               the scene rendered by povray\n");
    } else {
        std::printf("  (povray is not installed: no merged.png)\n");
    }
    std::printf("the same merge by hand: zol merge %s/scan*.ply -o merged.ply\n",
                dir.string().c_str());
    return worstDegrees <= kPassDegrees ? 0 : 1;
}

}  // namespace zoldemo
