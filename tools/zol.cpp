// The zol command-line tool: the library's file, point-cloud, registration and scene
// operations for people who want to try it on their files without writing a host
// program, plus `zol demo` (scans of a built-in object merged end to end) and `zol replay`.
#include <cstdio>
#include <functional>
#include <string>

#include <CLI/CLI.hpp>

#include <zol/runtime/ThreadCount.h>

#include "Commands.h"
#include "Demo.h"
#include "Replay.h"
#include "ToolCommon.h"
#include "ToolFiles.h"

using namespace zoltool;

namespace {
const char* const kExitCodes =
    "Exit codes: 0 done; 1 an operation failed; 2 bad command line; 3 an input file is "
    "missing, unreadable, damaged or empty; 4 an output file cannot be written.";

const std::string kInputHelp =
    std::string("meshes: ") + kMeshFormats + "; point clouds: " + kCloudFormats;

// One subcommand: its name for messages and what to run once the line is parsed.
struct Command {
    CLI::App* app;
    std::function<int()> run;
};

CLI::App* AddCommand(CLI::App& app,
                     std::vector<Command>& commands,
                     const char* name,
                     const char* description,
                     std::function<void()> run) {
    CLI::App* sub = app.add_subcommand(name, description);
    sub->footer(kExitCodes);
    sub->fallthrough();  // the global options may follow the subcommand
    commands.push_back({sub, [run] {
                            run();
                            return 0;
                        }});
    return sub;
}
}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"zol: geometry processing with zolc2017 on mesh and point-cloud files"};
    app.footer(kExitCodes);
    app.require_subcommand(1);
    GlobalOptions& globals = Globals();
    app.add_option("--threads", globals.threads, "worker threads (default: one per processor)")
        ->check(CLI::Range(1, 1024));
    app.add_option("--log", globals.logFile,
                   "keep the library's log in this file (default: a temporary file)");
    app.add_flag("-q,--quiet", globals.quiet, "no progress bar and no step messages");

    std::vector<Command> commands;
    std::string in, out;

    CLI::App* info = AddCommand(app, commands, "info",
                                "counts, bounding box, normals, colours and scanner grid of a file",
                                [&] { RunInfo(in); });
    info->add_option("file", in, kInputHelp)->required();

    CLI::App* convert = AddCommand(app, commands, "convert", "write a file in another format",
                                   [&] { RunConvert(in, out); });
    convert->add_option("in", in, kInputHelp)->required();
    convert->add_option("out", out, "output file; the extension names the format")->required();

    NormalsOptions normals;
    CLI::App* normalsApp =
        AddCommand(app, commands, "normals",
                   "estimate point normals (facing the scanner for a scanner-grid cloud)",
                   [&] { RunNormals(normals); });
    normalsApp->add_option("in", normals.in, "point cloud (a mesh gives its vertices)")->required();
    normalsApp->add_option("out", normals.out, "output point cloud")->required();
    normalsApp->add_option("-k,--neighbors", normals.neighbors, "points per plane fit")
        ->check(CLI::Range(4, 1000))
        ->capture_default_str();
    normalsApp->add_flag("--flip", normals.flip, "reverse the normals afterwards");

    SampleOptions sample;
    CLI::App* sampleApp = AddCommand(app, commands, "sample", "keep a subset of the points",
                                     [&] { RunSample(sample); });
    sampleApp->add_option("in", sample.in, "point cloud (a mesh gives its vertices)")->required();
    sampleApp->add_option("out", sample.out, "output point cloud")->required();
    sampleApp
        ->add_option("-m,--method", sample.method,
                     "uniform: evenly spread (farthest point); geometry: features first; grid: "
                     "one point per cell")
        ->check(CLI::IsMember({"uniform", "geometry", "grid"}))
        ->capture_default_str();
    sampleApp->add_option("-n,--count", sample.count, "samples (uniform, geometry)")
        ->check(CLI::PositiveNumber);
    sampleApp
        ->add_option("-r,--ratio", sample.ratio, "share of the points when --count is not given")
        ->check(CLI::Range(0.0, 1.0))
        ->capture_default_str();
    sampleApp
        ->add_option("--interval", sample.interval,
                     "grid cell size in model units (default: twice the point spacing)")
        ->check(CLI::PositiveNumber);
    sampleApp
        ->add_option("--uniform-weight", sample.uniformWeight,
                     "geometry: share of evenly spread samples")
        ->check(CLI::Range(0.0, 1.0))
        ->capture_default_str();
    sampleApp->add_option("--seed", sample.seed, "index of the first sample")
        ->capture_default_str();

    SmoothOptions smooth;
    CLI::App* smoothApp =
        AddCommand(app, commands, "smooth", "smooth positions (keeping creases) or normals",
                   [&] { RunSmooth(smooth); });
    smoothApp->add_option("in", smooth.in, "point cloud (a mesh gives its vertices)")->required();
    smoothApp->add_option("out", smooth.out, "output point cloud")->required();
    smoothApp->add_option("-m,--method", smooth.method, "geometry or normals")
        ->check(CLI::IsMember({"geometry", "normals"}))
        ->capture_default_str();
    smoothApp->add_option("-k,--neighbors", smooth.neighbors, "neighbours per point")
        ->check(CLI::Range(4, 1000))
        ->capture_default_str();
    smoothApp->add_option("-i,--iterations", smooth.iterations, "geometry: passes")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    smoothApp
        ->add_option("--sharp-angle", smooth.sharpAngle,
                     "geometry: degrees between normals beyond which points do not pull")
        ->check(CLI::Range(0.0, 180.0))
        ->capture_default_str();
    smoothApp
        ->add_option("--normal-weight", smooth.normalWeight,
                     "normals: weight of a point's own normal against its neighbours'")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();

    int densityNeighbors = 8;
    CLI::App* density = AddCommand(app, commands, "density", "the point spacing of a cloud",
                                   [&] { RunDensity(in, densityNeighbors); });
    density->add_option("file", in, "point cloud (a mesh gives its vertices)")->required();
    density->add_option("-k,--neighbors", densityNeighbors, "the point itself and its neighbours")
        ->check(CLI::Range(2, 1000))
        ->capture_default_str();

    RegisterOptions registration;
    CLI::App* registerApp = AddCommand(
        app, commands, "register",
        "the pose that lays FROM onto REF: coarse alignment then ICP, or ICP from --init",
        [&] { RunRegister(registration); });
    registerApp->add_option("ref", registration.ref, "the cloud that stays")->required();
    registerApp->add_option("from", registration.from, "the cloud that moves")->required();
    registerApp->add_option("-o,--out", registration.out, "write the moved FROM cloud here");
    registerApp->add_option("--init", registration.init,
                            "text file with a 4x4 start pose (16 numbers, row after row): "
                            "skips the coarse alignment");
    registerApp->add_option("--matrix", registration.matrixOut,
                            "write the pose here (readable by --init)");
    registerApp->add_option("--accuracy", registration.accuracy, "coarse alignment effort, 0 to 1")
        ->check(CLI::Range(0.0, 1.0))
        ->capture_default_str();

    MergeOptions merge;
    CLI::App* mergeApp =
        AddCommand(app, commands, "merge",
                   "register each scan onto the scans before it and fuse them into one cloud",
                   [&] { RunMerge(merge); });
    mergeApp->add_option("scans", merge.scans, "two or more scans; the first fixes the frame")
        ->required();
    mergeApp->add_option("-o,--out", merge.out, "the merged point cloud")->required();
    mergeApp
        ->add_option("--cell", merge.cell,
                     "fusion cell size in model units (default: the first scan's spacing)")
        ->check(CLI::PositiveNumber);
    mergeApp->add_option("--poses", merge.posesOut, "write each scan's pose here");
    mergeApp->add_option("--accuracy", merge.accuracy, "coarse alignment effort, 0 to 1")
        ->check(CLI::Range(0.0, 1.0))
        ->capture_default_str();

    PovOptions pov;
    bool noRender = false;
    CLI::App* povApp =
        AddCommand(app, commands, "pov",
                   "a POV-Ray scene of a mesh or cloud, rendered to PNG with povray", [&] {
                       pov.render = !noRender;
                       RunPov(pov);
                   });
    povApp->add_option("in", pov.in, kInputHelp)->required();
    povApp->add_option("out", pov.out, "the scene (.pov)")->required();
    povApp->add_option("--png", pov.png, "the rendered image (default: OUT with .png)");
    povApp->add_flag("--no-render", noRender, "write the scene only");
    povApp->add_option("--width", pov.width, "image width in pixels")
        ->check(CLI::Range(16, 8192))
        ->capture_default_str();
    povApp->add_option("--height", pov.height, "image height in pixels")
        ->check(CLI::Range(16, 8192))
        ->capture_default_str();

    std::string demoDir;
    unsigned demoSeed = 1;
    CLI::App* demo =
        app.add_subcommand("demo", "scan a built-in object from several sides and merge the scans");
    demo->footer(kExitCodes);
    demo->fallthrough();
    demo->add_option("--dir", demoDir, "write the results here (default: a temporary folder)");
    demo->add_option("--seed", demoSeed, "seed of the scanner noise and the scans' random poses")
        ->capture_default_str();
    commands.push_back({demo, [&] { return zoldemo::RunDemo(demoDir, demoSeed); }});

    std::string dumpFile, replayOut;
    CLI::App* replay =
        app.add_subcommand("replay", "run a recorded call again from its .dump file");
    replay->footer(kExitCodes);
    replay->fallthrough();
    replay->add_option("file", dumpFile, "the .dump file")->required()->check(CLI::ExistingFile);
    replay->add_option("--out", replayOut,
                       "write the result mesh or cloud here (format by extension)");
    commands.push_back({replay, [&] { return RunReplay(dumpFile, replayOut); }});

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const std::vector<std::string> rest = app.remaining();
        if (app.get_subcommands().empty() && !rest.empty() && rest[0][0] != '-') {
            std::fprintf(stderr, "zol: unknown command \"%s\" (see zol --help)\n", rest[0].c_str());
            return EXIT_USAGE;
        }
        return app.exit(error) == 0 ? EXIT_OK : EXIT_USAGE;
    }
    if (globals.threads > 0) ZOL::SetThreadCount(globals.threads);
    LibraryLog::Open(globals.logFile);
    int code = EXIT_OK;
    for (const Command& command : commands) {
        if (!command.app->parsed()) continue;
        try {
            code = command.run();
        } catch (const ToolFailure& failure) {
            std::fflush(stdout);
            std::fprintf(stderr, "zol %s: %s\n", command.app->get_name().c_str(),
                         failure.message.c_str());
            code = failure.code;
        }
    }
    LibraryLog::Close();
    return code;
}
