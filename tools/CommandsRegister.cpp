// `zol register` and `zol merge`: the pose of one scan on another, and many scans merged
// into one cloud (the everyday job of a scanning application).
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include <zol/core/IPointList.h>
#include <zol/pointcloud/PointCloudDensity.h>
#include <zol/pointcloud/PointCloudUtility.h>

#include "Commands.h"
#include "Merge.h"
#include "ProgressBar.h"
#include "ToolCommon.h"
#include "ToolFiles.h"

namespace zoltool {

using namespace ZOL;

namespace {
// Writes \p text as the whole of \p path, through a temporary name.
void WriteText(const std::string& path, const std::string& text) {
    AtomicOutput output(path);
    std::ofstream out(output.Path(), std::ios::binary);
    out << text;
    out.close();
    if (!out) Fail(EXIT_BAD_OUTPUT, path + ": cannot be written", 0);
    output.Commit();
}

}  // namespace

void RunRegister(const RegisterOptions& options) {
    std::unique_ptr<PointCloud> ref = LoadCloud(options.ref, 3);
    std::unique_ptr<PointCloud> from = LoadCloud(options.from, 3);
    Matrix4x4 init;
    if (!options.init.empty()) init = ReadMatrix(options.init);
    if (!options.out.empty()) CheckOutputName(options.out, false, from->HasGridTopology());
    if (!options.matrixOut.empty()) CheckOutputFolder(options.matrixOut);
    for (auto [cloud, name] : {std::pair{ref.get(), &options.ref}, {from.get(), &options.from}}) {
        if (EnsureNormals(*cloud, *name))
            Say("%s: normals estimated (the file has none)\n", name->c_str());
    }

    const auto start = std::chrono::steady_clock::now();
    PointCloudPointList refList(ref.get());
    double spacing = 0.0;
    const std::uint64_t mark = LibraryLog::Mark();
    CheckStatus(CalculatePointListDensity(&refList, 8, spacing), "point spacing of " + options.ref,
                mark);
    Registration found;
    {
        ProgressBar bar(options.from);
        const std::vector<Matrix4x4> starts =
            options.init.empty() ? CoarseStarts(*ref, *from, options.accuracy, bar, options.from)
                                 : std::vector<Matrix4x4>{init};
        FitScore score(*ref, 2.0 * spacing);
        found = RefineBest(*ref, *from, starts, score, bar, options.from);
    }
    const Matrix4x4& pose = found.pose;
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    std::printf("%s onto %s: %s (%.1f s)\n", options.from.c_str(), options.ref.c_str(),
                options.init.empty() ? "coarse alignment, then ICP" : "ICP from the given pose",
                seconds);
    const Vector3 t = pose.GetTranslation();
    std::printf("  rotation %.3f degrees, translation (%.6g, %.6g, %.6g)\n", RotationDegrees(pose),
                t.x, t.y, t.z);
    std::printf("  %.0f%% of the points land within twice the point spacing (%.6g) of %s\n",
                100.0 * found.fit, spacing, options.ref.c_str());
    std::printf("pose (4 x 4, row after row; maps %s into the coordinates of %s):\n%s",
                options.from.c_str(), options.ref.c_str(), FormatMatrix(pose, "  ").c_str());
    if (!options.matrixOut.empty()) {
        WriteText(options.matrixOut, FormatMatrix(pose, ""));
        std::printf("pose -> %s\n", options.matrixOut.c_str());
    }
    if (!options.out.empty()) {
        TransformPointCloud(from.get(), pose);
        WriteCloud(options.out, *from);
        std::printf("moved cloud -> %s\n", options.out.c_str());
    }
}

void RunMerge(const MergeOptions& options) {
    if (options.scans.size() < 2) Fail(EXIT_USAGE, "merge needs at least two scans", 0);
    std::vector<std::unique_ptr<PointCloud>> scans;
    for (const std::string& name : options.scans) scans.push_back(LoadCloud(name, 3));
    CheckOutputName(options.out, false);
    if (!options.posesOut.empty()) CheckOutputFolder(options.posesOut);

    std::vector<MergedScan> results;
    const auto report = [&](int i, const MergedScan& scan) {
        const std::string name = std::filesystem::path(options.scans[i]).filename().string();
        if (i == 0) {
            Say("  %-20s %8d points  the frame of the result          %6.1f s\n", name.c_str(),
                scans[i]->GetPointCount(), scan.seconds);
            return;
        }
        Say("  %-20s %8d points  rotation %7.2f deg, fit %3.0f%%  %6.1f s\n", name.c_str(),
            scans[i]->GetPointCount(), RotationDegrees(scan.pose), 100.0 * scan.fit, scan.seconds);
        if (scan.fit < 0.2) {
            std::fprintf(stderr,
                         "zol merge: warning: %s barely overlaps the scans before it; its pose "
                         "is doubtful\n",
                         options.scans[i].c_str());
        }
    };
    Say("merging %zu scans onto %s\n", scans.size(), options.scans[0].c_str());
    std::unique_ptr<PointCloud> merged =
        MergeScans(scans, options.scans, options.cell, options.accuracy, results, report);
    WriteCloud(options.out, *merged);
    std::printf("merged %zu scans: %d points -> %s\n", scans.size(), merged->GetPointCount(),
                options.out.c_str());
    if (!options.posesOut.empty()) {
        std::string text;
        for (size_t i = 0; i < scans.size(); ++i) {
            text += "# " + options.scans[i] + "\n" + FormatMatrix(results[i].pose, "");
        }
        WriteText(options.posesOut, text);
        std::printf("poses -> %s\n", options.posesOut.c_str());
    }
}

}  // namespace zoltool
