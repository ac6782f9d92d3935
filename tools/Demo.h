// The steps of `zol demo`: each takes the shared context, prints what it found and
// returns a one-line result for the closing summary.
#pragma once

#include <filesystem>
#include <string>

#include <zol/zol.h>

namespace zoldemo {

/// What the steps hand on to each other.
struct DemoContext {
    std::filesystem::path workDir;  ///< temporary folder for the files the demo writes
    ZOL::TriMesh scene;             ///< the generated scan: a sphere resting on a table
    int sphereTriangleCount = 0;    ///< the sphere's triangles come first, the table's after
    int tableTriangleCount = 0;
    ZOL::PointCloud cloud{true, true, false};  ///< the scan's vertices as oriented points
};

/// Outcome of one step: whether every call it made succeeded, and a short summary.
struct StepResult {
    bool ok;
    std::string summary;
};

/// printf into a std::string.
std::string Format(const char* format, ...);

// Value types, progress and log (DemoValues.cpp).
StepResult DemoValueTypes(DemoContext& context);
StepResult DemoProgress(DemoContext& context);
StepResult DemoLog(DemoContext& context);

// The scan mesh (DemoScan.cpp).
StepResult GenerateScan(DemoContext& context);
StepResult FuseScan(DemoContext& context);
StepResult UpdateScanNormals(DemoContext& context);
StepResult MeasureScan(DemoContext& context);
StepResult BuildQueryTree(DemoContext& context);
StepResult DetectScanShapes(DemoContext& context);
StepResult RoundTripMeshFiles(DemoContext& context);

// Point clouds (DemoCloud.cpp).
StepResult BuildCloud(DemoContext& context);
StepResult IndexCloudWithInfo(DemoContext& context);
StepResult IndexCloudWithAnn(DemoContext& context);
StepResult RoundTripCloudFiles(DemoContext& context);
StepResult RoundTripGridCloud(DemoContext& context);

/// Runs every step in order and prints the summary. \return 0 when all succeeded.
int RunDemo();

}  // namespace zoldemo
