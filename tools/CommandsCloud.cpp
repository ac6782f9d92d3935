// The point-cloud subcommands: `zol normals`, `zol sample`, `zol smooth`, `zol density`.
// Each reads one file, runs library operations under a progress bar and writes the result.
#include <cmath>
#include <cstdio>
#include <vector>

#include <zol/core/IPointList.h>
#include <zol/pointcloud/ConsolidatePointCloud.h>
#include <zol/pointcloud/PointCloudDensity.h>
#include <zol/pointcloud/SamplePointCloud.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/PointCloudInfo.h>

#include "Commands.h"
#include "Merge.h"
#include "ProgressBar.h"
#include "ToolCommon.h"
#include "ToolFiles.h"

namespace zoltool {

using namespace ZOL;

namespace {
double Spacing(PointCloud& cloud, const std::string& file, int neighbors) {
    PointCloudPointList list(&cloud);
    double density = 0.0;
    const std::uint64_t mark = LibraryLog::Mark();
    CheckStatus(CalculatePointListDensity(&list, neighbors, density), "point spacing of " + file,
                mark);
    return density;
}
}  // namespace

void RunNormals(const NormalsOptions& options) {
    std::unique_ptr<PointCloud> cloud = LoadCloud(options.in, 3);
    CheckOutputName(options.out, false, cloud->HasGridTopology());
    {
        ProgressBar bar("normals");
        const std::uint64_t mark = LibraryLog::Mark();
        CheckStatus(
            ConsolidatePointCloud::CalculatePointCloudNormal(cloud.get(), options.neighbors),
            "normal estimation on " + options.in, mark);
        if (options.flip) ConsolidatePointCloud::ReversePointCloudNormal(cloud.get());
    }
    WriteCloud(options.out, *cloud);
    Say("%s: normals of %d points from %d neighbours%s -> %s\n", options.in.c_str(),
        cloud->GetPointCount(), options.neighbors, options.flip ? ", reversed" : "",
        options.out.c_str());
}

void RunSample(const SampleOptions& options) {
    std::unique_ptr<PointCloud> cloud = LoadCloud(options.in);
    CheckOutputName(options.out, false);
    const int pointCount = cloud->GetPointCount();
    std::vector<int> ids;
    std::string detail;
    if (options.method == "grid") {
        const double interval =
            options.interval > 0.0 ? options.interval : 2.0 * Spacing(*cloud, options.in, 8);
        ProgressBar bar("grid sample");
        const std::uint64_t mark = LibraryLog::Mark();
        CheckStatus(SamplePointCloud::GridSample(cloud.get(), interval, ids),
                    "grid sampling of " + options.in, mark);
        char text[64];
        std::snprintf(text, sizeof(text), "cell %.6g", interval);
        detail = text;
    } else {
        const int count =
            options.count > 0
                ? options.count
                : std::max(1, static_cast<int>(std::lround(options.ratio * pointCount)));
        if (count > pointCount) {
            Fail(EXIT_USAGE,
                 "--count " + std::to_string(count) + " exceeds the " + std::to_string(pointCount) +
                     " points of " + options.in,
                 0);
        }
        if (options.method == "geometry" && EnsureNormals(*cloud, options.in)) {
            Say("%s: normals estimated (the file has none)\n", options.in.c_str());
        }
        ids.resize(count);
        ProgressBar bar(options.method + " sample");
        const std::uint64_t mark = LibraryLog::Mark();
        const int status = options.method == "geometry"
                               ? SamplePointCloud::GeometrySample(
                                     cloud.get(), count, ids.data(), options.uniformWeight,
                                     options.neighbors, options.seed, SAMPLE_QUALITY_LOW)
                               : SamplePointCloud::UniformSample(cloud.get(), count, ids.data(),
                                                                 options.seed, SAMPLE_QUALITY_LOW);
        CheckStatus(status, options.method + " sampling of " + options.in, mark);
        detail = options.method;
    }
    WriteCloud(options.out, *CloudSubset(*cloud, ids));
    Say("%s: %d of %d points (%s) -> %s\n", options.in.c_str(), static_cast<int>(ids.size()),
        pointCount, detail.c_str(), options.out.c_str());
}

void RunSmooth(const SmoothOptions& options) {
    std::unique_ptr<PointCloud> cloud = LoadCloud(options.in, 3);
    CheckOutputName(options.out, false, cloud->HasGridTopology());
    if (EnsureNormals(*cloud, options.in)) {
        Say("%s: normals estimated (the file has none)\n", options.in.c_str());
    }
    {
        ProgressBar bar("smooth " + options.method);
        const std::uint64_t mark = LibraryLog::Mark();
        if (options.method == "normals") {
            CheckStatus(ConsolidatePointCloud::SmoothNormal(cloud.get(), options.normalWeight,
                                                            options.neighbors, nullptr),
                        "normal smoothing of " + options.in, mark);
        } else {
            PointCloudInfo info;
            CheckStatus(ConsolidatePointCloud::_SmoothGeometryByNormal(
                            cloud.get(), info, options.neighbors, options.sharpAngle * ONE_RADIAN,
                            options.iterations, nullptr),
                        "geometry smoothing of " + options.in, mark);
            // The points moved: their normals follow the new surface.
            CheckStatus(UpdatePointCloudNormal(cloud.get(), options.neighbors),
                        "normal update of " + options.in, mark);
        }
    }
    WriteCloud(options.out, *cloud);
    Say("%s: %s of %d points smoothed -> %s\n", options.in.c_str(),
        options.method == "normals" ? "normals" : "positions", cloud->GetPointCount(),
        options.out.c_str());
}

void RunDensity(const std::string& file, int neighbors) {
    std::unique_ptr<PointCloud> cloud = LoadCloud(file, 2);
    double spacing = 0.0;
    {
        ProgressBar bar("density");
        spacing = Spacing(*cloud, file, neighbors);
    }
    std::printf(
        "%s: point spacing %.6g (%d points; median of the mean distance to the %d nearest "
        "other points)\n",
        file.c_str(), spacing, cloud->GetPointCount(),
        std::min(neighbors, cloud->GetPointCount()) - 1);
}

}  // namespace zoltool
