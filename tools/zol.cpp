// The zol command-line tool. `zol demo` runs the library end to end over data it makes
// itself (a generated scan) and prints what each step found, with timings; `zol replay`
// runs a recorded API call again from its dump file.
#include <string>

#include <CLI/CLI.hpp>

#include "Demo.h"
#include "Replay.h"

int main(int argc, char** argv) {
    CLI::App app{"zol: geometry processing with zolc2017"};
    app.require_subcommand(1);
    CLI::App* demo = app.add_subcommand("demo", "run the library on data it makes itself");
    CLI::App* replay =
        app.add_subcommand("replay", "run a recorded call again from its .dump file");
    std::string dumpFile;
    std::string outFile;
    replay->add_option("file", dumpFile, "the .dump file")->required()->check(CLI::ExistingFile);
    replay->add_option("--out", outFile,
                       "write the result mesh or cloud here (format by extension)");
    CLI11_PARSE(app, argc, argv);
    if (demo->parsed()) return zoldemo::RunDemo();
    if (replay->parsed()) return zoltool::RunReplay(dumpFile, outFile);
    return 0;
}
