// Demo steps over point clouds: the scan's vertices as an oriented, coloured cloud,
// its neighbour index queried on one and two threads, and the point-cloud files.
#include <cmath>
#include <cstdio>
#include <vector>

#include "Demo.h"

namespace zoldemo {

using namespace ZOL;

namespace {
constexpr int kNeighbors = 8;

// The cache of every point after a search on \p threads threads (timed without the
// index build).
std::vector<int> NeighboursWithInfo(PointCloud& cloud, int threads, int& status, double& ms) {
    SetThreadCount(threads);
    PointCloudInfo info;
    status = info.InitAnn(&cloud, kNeighbors);
    const double start = Profiler::GetTime();
    if (status == 0) status = info.FindNearestNeighbors(kNeighbors, &cloud, nullptr);
    ms = 1000.0 * (Profiler::GetTime() - start);
    std::vector<int> ids;
    for (int p = 0; status == 0 && p < cloud.GetPointCount(); ++p) {
        const int* row = info.GetCachedNeighborIds(p);
        if (row == nullptr) break;
        ids.insert(ids.end(), row, row + info.GetCachedNeighborCount(p));
    }
    SetThreadCount(0);
    return ids;
}

// Mean distance from each point to its nearest other point, from one search result.
double MeanSpacing(const std::vector<double>& squaredDistances, int pointCount) {
    double sum = 0.0;
    for (int p = 0; p < pointCount; ++p) sum += std::sqrt(squaredDistances[p * kNeighbors + 1]);
    return pointCount > 0 ? sum / pointCount : 0.0;
}
}  // namespace

StepResult BuildCloud(DemoContext& context) {
    PointCloud& cloud = context.cloud;
    cloud.Clear();
    for (int v = 0; v < context.scene.GetVertexCount(); ++v) {
        const Vector3 p = context.scene.GetVertexCoord(v);
        const int id = cloud.InsertPoint(p, context.scene.GetVertexNormal(v));
        cloud.SetPointColor(id, Vector3(0.5 + 0.25 * p.x, 0.5 + 0.25 * p.y, 0.5 * p.z));
    }
    std::printf("  %d oriented points coloured by position\n", cloud.GetPointCount());
    return {cloud.GetPointCount() == context.scene.GetVertexCount(),
            Format("%d points", cloud.GetPointCount())};
}

StepResult IndexCloudWithInfo(DemoContext& context) {
    int status1 = 0, status2 = 0;
    double ms1 = 0.0, ms2 = 0.0;
    const std::vector<int> one = NeighboursWithInfo(context.cloud, 1, status1, ms1);
    const std::vector<int> two = NeighboursWithInfo(context.cloud, 2, status2, ms2);
    const bool same = !one.empty() && one == two;
    std::printf(
        "  PointCloudInfo, %d neighbours of every point: 1 thread %.2f ms, 2 threads "
        "%.2f ms, same lists: %s\n",
        kNeighbors, ms1, ms2, same ? "yes" : "NO");
    return {status1 == 0 && status2 == 0 && same,
            Format("%d-nn lists equal on 1 and 2 threads", kNeighbors)};
}

StepResult IndexCloudWithAnn(DemoContext& context) {
    PointCloudPointList list(&context.cloud);
    Ann ann;
    const int initStatus = ann.Init(&list, nullptr);
    const int count = list.GetPointCount();
    std::vector<int> ids1(static_cast<size_t>(count) * kNeighbors), ids2(ids1.size());
    std::vector<double> dist1(ids1.size()), dist2(ids1.size());
    SetThreadCount(1);
    double start = Profiler::GetTime();
    const int status1 = ann.FindNearestNeighbors(&list, kNeighbors, ids1.data(), dist1.data());
    const double ms1 = 1000.0 * (Profiler::GetTime() - start);
    SetThreadCount(2);
    start = Profiler::GetTime();
    const int status2 = ann.FindNearestNeighbors(&list, kNeighbors, ids2.data(), dist2.data());
    const double ms2 = 1000.0 * (Profiler::GetTime() - start);
    SetThreadCount(0);
    const double spacing = status1 == 0 ? MeanSpacing(dist1, count) : 0.0;
    std::printf(
        "  Ann over %d points (init %d), %d neighbours of every point: 1 thread %.2f ms, "
        "2 threads %.2f ms (status %d, %d), same lists: %s\n",
        ann.GetPointCount(), initStatus, kNeighbors, ms1, ms2, status1, status2,
        ids1 == ids2 && dist1 == dist2 ? "yes" : "NO");
    std::printf("  mean distance to the nearest other point: %.4f\n", spacing);
    return {initStatus == 0 && status1 == 0 && status2 == 0 && ids1 == ids2 && dist1 == dist2,
            Format("mean spacing %.4f", spacing)};
}

StepResult RoundTripCloudFiles(DemoContext& context) {
    PointCloud& cloud = context.cloud;
    bool ok = true;
    for (const char* extension : {"zbp", "zpc", "ply", "casc", "obj", "asc"}) {
        const std::string name = (context.workDir / (std::string("scan.") + extension)).string();
        const int status = Parser::ExportPointCloud(name, &cloud);
        PointCloud* back = Parser::ImportPointCloud(name);
        double worst = 0.0;
        const bool sameCount = back != nullptr && back->GetPointCount() == cloud.GetPointCount();
        for (int i = 0; sameCount && i < back->GetPointCount(); ++i) {
            worst = std::fmax(worst, back->GetPointCoord(i).Distance(cloud.GetPointCoord(i)));
        }
        std::printf("  %-4s write %d, read %d points (normals %s, colours %s), largest error %g\n",
                    extension, status, back ? back->GetPointCount() : -1,
                    back && back->HasNormal() ? "yes" : "no",
                    back && back->HasColor() ? "yes" : "no", worst);
        ok = ok && status == 0 && sameCount && worst == 0.0;
        delete back;
    }
    return {ok, "zbp zpc ply casc obj asc read back exactly"};
}

// A scanner-style grid cloud: a tilted plane seen through a 16 x 12 grid with holes.
StepResult RoundTripGridCloud(DemoContext& context) {
    PointCloud grid(false, false, true);
    grid.InitGrid(16, 12);
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 16; ++x) {
            if ((x * 7 + y * 3) % 5 == 0) continue;  // cells the scanner missed
            grid.SetGridCoord(x, y, Vector3(x * 0.01, y * 0.01, 0.5 + 0.002 * x));
        }
    }
    const std::string name = (context.workDir / "grid.zbg").string();
    const int status = Parser::ExportGridPointCloud(name, &grid);
    PointCloud* back = Parser::ImportPointCloud(name);
    const int valid = back ? back->GetValidGridCount() : -1;
    std::printf("  %d x %d grid: %d valid cells written (status %d), %d read back\n",
                grid.GetWidth(), grid.GetHeight(), grid.GetValidGridCount(), status, valid);
    delete back;
    return {status == 0 && valid == grid.GetValidGridCount(), Format("%d grid cells", valid)};
}

}  // namespace zoldemo
