// The subcommands of `zol`, one function each, called by main once the command line is
// parsed. They end with a ToolFailure (see ToolCommon.h) when something goes wrong.
#pragma once

#include <string>
#include <vector>

namespace zoltool {

/// `zol info FILE`: kind, counts, bounding box, normals, colours, grid.
void RunInfo(const std::string& file);

/// `zol convert IN OUT`.
void RunConvert(const std::string& in, const std::string& out);

/// `zol normals IN OUT`: estimates and orients normals.
struct NormalsOptions {
    std::string in, out;
    int neighbors = 16;  ///< points per plane fit
    bool flip = false;   ///< reverse the normals afterwards
};
void RunNormals(const NormalsOptions& options);

/// `zol sample IN OUT`.
struct SampleOptions {
    std::string in, out;
    std::string method = "uniform";  ///< uniform, geometry or grid
    int count = 0;                   ///< samples; 0: ratio of the point count
    double ratio = 0.1;              ///< share of the points when count is 0
    double interval = 0.0;           ///< grid cell size; 0: twice the point spacing
    double uniformWeight = 0.5;      ///< geometry: share of evenly spread samples
    int neighbors = 16;              ///< geometry: neighbours of the flatness measure
    int seed = 0;                    ///< first sample
};
void RunSample(const SampleOptions& options);

/// `zol smooth IN OUT`.
struct SmoothOptions {
    std::string in, out;
    std::string method = "geometry";  ///< geometry or normals
    int neighbors = 16;
    int iterations = 3;         ///< geometry passes
    double sharpAngle = 30.0;   ///< geometry: degrees beyond which neighbours do not pull
    double normalWeight = 1.0;  ///< normals: weight of a point's own normal
};
void RunSmooth(const SmoothOptions& options);

/// `zol density FILE`: the point spacing.
void RunDensity(const std::string& file, int neighbors);

/// `zol register REF FROM`.
struct RegisterOptions {
    std::string ref, from;
    std::string out;        ///< the moved cloud; empty for none
    std::string init;       ///< 4x4 start pose; given: ICP alone
    std::string matrixOut;  ///< write the result pose here; empty for none
    double accuracy = 0.5;  ///< coarse alignment effort, 0..1
};
void RunRegister(const RegisterOptions& options);

/// `zol merge SCAN... -o OUT`.
struct MergeOptions {
    std::vector<std::string> scans;
    std::string out;
    std::string posesOut;  ///< write every scan's pose here; empty for none
    double cell = 0.0;     ///< fusion cell size; 0: the first scan's point spacing
    double accuracy = 0.5;
};
void RunMerge(const MergeOptions& options);

/// `zol pov IN OUT.pov`.
struct PovOptions {
    std::string in, out;
    std::string png;  ///< rendered image; empty: OUT with ".png" when povray exists
    bool render = true;
    int width = 800, height = 600;
};
void RunPov(const PovOptions& options);

}  // namespace zoltool
