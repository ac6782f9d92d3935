// The zol command-line tool. `zol demo` runs the library end to end over data it makes
// itself (a generated scan) and prints what each step found, with timings.
#include <CLI/CLI.hpp>

#include "Demo.h"

int main(int argc, char** argv) {
    CLI::App app{"zol: geometry processing with zolc2017"};
    app.require_subcommand(1);
    CLI::App* demo = app.add_subcommand("demo", "run the library on data it makes itself");
    CLI11_PARSE(app, argc, argv);
    if (demo->parsed()) return zoldemo::RunDemo();
    return 0;
}
