// Scan registration and merging: coarse alignment then ICP onto the growing model, and
// fusion of every registered scan on one grid of cells.
#include "Merge.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include <zol/core/IPointList.h>
#include <zol/pointcloud/ConsolidatePointCloud.h>
#include <zol/pointcloud/FusePointCloud.h>
#include <zol/pointcloud/PointCloudDensity.h>
#include <zol/pointcloud/PointCloudUtility.h>
#include <zol/registration/RegistratePointCloud.h>
#include <zol/runtime/Ann.h>
#include <zol/runtime/Constants.h>

#include "ProgressBar.h"
#include "ToolCommon.h"

namespace zoltool {

using namespace ZOL;

namespace {
constexpr int kNormalNeighbors = 16;
constexpr int kSpacingNeighbors = 8;
const double kFitCosine = std::cos(25.0 * ZOL_PI / 180.0);  // normals that agree

// The shortest of %.15g, %.16g, %.17g that reads back as the same double.
std::string ShortestNumber(double value) {
    char text[40];
    for (int digits = 15; digits <= 17; ++digits) {
        std::snprintf(text, sizeof(text), "%.*g", digits, value);
        if (std::strtod(text, nullptr) == value) break;
    }
    return text;
}

struct Box {
    Vector3 lo, hi;
    double Diagonal() const { return hi.Distance(lo); }
};

Box BoundingBox(const PointCloud& cloud, const std::string& name) {
    PointCloudPointList list(&cloud);
    Box box;
    const std::uint64_t mark = LibraryLog::Mark();
    if (CalculatePointListBoundingBox(&list, box.lo, box.hi) != 0) {
        Fail(EXIT_BAD_INPUT, name + ": has no usable points", mark);
    }
    return box;
}

// A fusion grid of cells of size \p cell around the first scan, wide enough on every side
// for all the scans, wherever registration puts them: each scan overlaps the model, so
// the model never reaches farther than the sum of the scans' diagonals.
void InitFusion(FusePointCloud& fusion,
                const std::vector<std::unique_ptr<PointCloud>>& scans,
                const std::vector<std::string>& names,
                double cell) {
    const Box first = BoundingBox(*scans[0], names[0]);
    double margin = 0.0;
    for (size_t i = 0; i < scans.size(); ++i) margin += BoundingBox(*scans[i], names[i]).Diagonal();
    margin += cell;
    const Vector3 lo = first.lo - Vector3(margin, margin, margin);
    const Vector3 extent = first.hi - first.lo + Vector3(2 * margin, 2 * margin, 2 * margin);
    int resolution[3];
    for (int axis = 0; axis < 3; ++axis) {
        const double cells = std::ceil(extent[axis] / cell);
        if (!(cells < 1e8)) {
            Fail(EXIT_USAGE,
                 "the fusion cell " + std::to_string(cell) + " is too small for scans this large",
                 0);
        }
        resolution[axis] = std::max(1, static_cast<int>(cells));
    }
    const Vector3 hi =
        lo + Vector3(resolution[0] * cell, resolution[1] * cell, resolution[2] * cell);
    const std::uint64_t mark = LibraryLog::Mark();
    CheckStatus(fusion.Init(resolution[0], resolution[1], resolution[2], lo, hi, true),
                "fusion grid", mark);
}
}  // namespace

bool EnsureNormals(PointCloud& cloud, const std::string& name) {
    if (cloud.HasNormal()) return false;
    ProgressBar bar(name + ": normals");
    const std::uint64_t mark = LibraryLog::Mark();
    CheckStatus(ConsolidatePointCloud::CalculatePointCloudNormal(&cloud, kNormalNeighbors),
                "normal estimation on " + name, mark);
    return true;
}

FitScore::FitScore(const PointCloud& ref, double distance)
    : mRef(ref), mList(&ref), mDistance(distance) {
    mReady = ref.GetPointCount() > 0 && mAnn.Init(&mList, nullptr) == 0;
}

double FitScore::operator()(const PointCloud& from, const Matrix4x4& pose) {
    const int count = from.GetPointCount();
    if (!mReady || count == 0) return 0.0;
    std::vector<double> queries(3 * static_cast<size_t>(count));
    const Vector3* coords = from.GetPointCoordData();
    for (int i = 0; i < count; ++i) {
        const Vector3 p = pose.TransformPoint(coords[i]);
        queries[3 * i] = p.x;
        queries[3 * i + 1] = p.y;
        queries[3 * i + 2] = p.z;
    }
    std::vector<int> nearest(count);
    std::vector<double> squared(count);
    if (mAnn.FindNearestNeighbors(queries.data(), count, 1, nearest.data(), squared.data()) != 0) {
        return 0.0;
    }
    const Vector3* refNormals = mRef.GetPointNormalData();
    const Vector3* normals = from.GetPointNormalData();
    int fitting = 0;
    for (int i = 0; i < count; ++i) {
        if (squared[i] > mDistance * mDistance) continue;
        // Without normals on both sides, distance alone decides.
        fitting += refNormals == nullptr || normals == nullptr ||
                   refNormals[nearest[i]] * pose.RotateVector(normals[i]) > kFitCosine;
    }
    return static_cast<double>(fitting) / count;
}

std::vector<Matrix4x4> CoarseStarts(const PointCloud& ref,
                                    const PointCloud& from,
                                    double accuracy,
                                    ProgressBar& bar,
                                    const std::string& name) {
    std::vector<Matrix4x4> starts(2);
    bar.SetLabel(name + ": coarse alignment");
    std::uint64_t mark = LibraryLog::Mark();
    CheckStatus(RegistratePointCloud::AlignPointCloud(&ref, &from, &starts[0], accuracy),
                "coarse alignment of " + name, mark);
    bar.SetLabel(name + ": coarse alignment, reversed");
    Matrix4x4 reversed;
    mark = LibraryLog::Mark();
    CheckStatus(RegistratePointCloud::AlignPointCloud(&from, &ref, &reversed, accuracy),
                "coarse alignment onto " + name, mark);
    starts[1] = reversed.AffineInverse();
    return starts;
}

Registration RefineBest(const PointCloud& ref,
                        const PointCloud& from,
                        const std::vector<Matrix4x4>& starts,
                        FitScore& score,
                        ProgressBar& bar,
                        const std::string& name) {
    Registration best;
    best.fit = -1.0;
    for (const Matrix4x4& start : starts) {
        bar.SetLabel(name + ": ICP");
        Matrix4x4 correction;
        const std::uint64_t mark = LibraryLog::Mark();
        CheckStatus(RegistratePointCloud::ICPRegistrate(&ref, nullptr, &from, nullptr, &correction,
                                                        &start, true),
                    "ICP of " + name, mark);
        const Matrix4x4 pose = correction * start;
        const double fit = score(from, pose);
        if (fit > best.fit) best = {pose, fit};
    }
    return best;
}

std::unique_ptr<PointCloud> MergeScans(std::vector<std::unique_ptr<PointCloud>>& scans,
                                       const std::vector<std::string>& names,
                                       double cell,
                                       double accuracy,
                                       std::vector<MergedScan>& results,
                                       const std::function<void(int, const MergedScan&)>& onScan) {
    int estimated = 0;
    for (size_t i = 0; i < scans.size(); ++i) estimated += EnsureNormals(*scans[i], names[i]);
    if (estimated > 0) {
        Say("  normals estimated for %d scan%s that had none (%d neighbours each)\n", estimated,
            estimated > 1 ? "s" : "", kNormalNeighbors);
    }
    if (cell <= 0.0) {
        PointCloudPointList list(scans[0].get());
        const std::uint64_t mark = LibraryLog::Mark();
        CheckStatus(CalculatePointListDensity(&list, kSpacingNeighbors, cell),
                    "point spacing of " + names[0], mark);
    }
    FusePointCloud fusion;
    InitFusion(fusion, scans, names, cell);
    auto model = std::make_unique<PointCloud>(true, false, false);
    results.assign(scans.size(), MergedScan());
    for (size_t i = 0; i < scans.size(); ++i) {
        const auto start = std::chrono::steady_clock::now();
        MergedScan& result = results[i];
        result.pose.InitIdentityTransform();
        {
            ProgressBar bar(names[i]);
            if (i > 0) {
                // Coarse poses onto the model both ways, and onto the scan before, which
                // covers what the model's other parts may hide from the coarse search.
                std::vector<Matrix4x4> starts =
                    CoarseStarts(*model, *scans[i], accuracy, bar, names[i]);
                bar.SetLabel(names[i] + ": coarse alignment onto " + names[i - 1]);
                Matrix4x4 onPrevious;
                const std::uint64_t mark = LibraryLog::Mark();
                CheckStatus(RegistratePointCloud::AlignPointCloud(
                                scans[i - 1].get(), scans[i].get(), &onPrevious, accuracy),
                            "coarse alignment of " + names[i] + " onto " + names[i - 1], mark);
                starts.push_back(results[i - 1].pose * onPrevious);
                FitScore score(*model, 2.0 * cell);
                const Registration found =
                    RefineBest(*model, *scans[i], starts, score, bar, names[i]);
                result.pose = found.pose;
                result.fit = found.fit;
            }
            bar.SetLabel(names[i] + ": fusion");
            std::uint64_t mark = LibraryLog::Mark();
            CheckStatus(fusion.UpdateFuseFunction(scans[i].get(), &result.pose, nullptr),
                        "fusion of " + names[i], mark);
            model = std::make_unique<PointCloud>(true, false, false);
            mark = LibraryLog::Mark();
            CheckStatus(fusion.ExtractPointCloud(model.get(), nullptr), "fused model", mark);
        }
        result.seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (onScan) onScan(static_cast<int>(i), result);
    }
    return model;
}

Matrix4x4 ReadMatrix(const std::string& path) {
    std::ifstream in(path);
    if (!in) Fail(EXIT_BAD_INPUT, path + ": cannot be opened for reading", 0);
    std::vector<double> values;
    std::string line;
    for (int lineNumber = 1; std::getline(in, line); ++lineNumber) {
        line = line.substr(0, line.find('#'));
        std::istringstream words(line);
        std::string word;
        while (words >> word) {
            char* end = nullptr;
            const double value = std::strtod(word.c_str(), &end);
            if (end == word.c_str() || *end != '\0' || !std::isfinite(value)) {
                Fail(EXIT_BAD_INPUT,
                     path + ": line " + std::to_string(lineNumber) + ": \"" + word +
                         "\" is not a number",
                     0);
            }
            values.push_back(value);
        }
    }
    if (values.size() != 16 && values.size() != 12) {
        Fail(EXIT_BAD_INPUT,
             path + ": expected 16 numbers (a 4x4 matrix, row after row), found " +
                 std::to_string(values.size()),
             0);
    }
    Matrix4x4 matrix;
    matrix.InitIdentityTransform();
    for (size_t k = 0; k < values.size(); ++k) matrix.SetValue(static_cast<int>(k), values[k]);
    return matrix;
}

std::string FormatMatrix(const Matrix4x4& matrix, const char* indent) {
    std::string text;
    for (int r = 0; r < 4; ++r) {
        text += indent;
        for (int c = 0; c < 4; ++c) {
            text += ShortestNumber(matrix.GetValue(r, c));
            text += c < 3 ? " " : "\n";
        }
    }
    return text;
}

double RotationDegrees(const Matrix4x4& matrix) {
    const double trace = matrix.GetValue(0, 0) + matrix.GetValue(1, 1) + matrix.GetValue(2, 2);
    return std::acos(std::clamp((trace - 1.0) / 2.0, -1.0, 1.0)) * 180.0 / M_PI;
}

}  // namespace zoltool
