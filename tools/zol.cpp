// The zol command-line tool. `zol demo` runs the library over data it makes itself.
#include <CLI/CLI.hpp>

#include <cstdio>

#include <zol/zol.h>

namespace {
int RunDemo() {
    using namespace ZOL;
    Vector3 v(3, 4, 0);
    const double length = v.Normalise();
    std::printf("zolc2017 demo: |(3,4,0)| = %g, unit = (%g, %g, %g)\n", length, v.x, v.y, v.z);
    std::printf("threads: %d\n", GetThreadCount());
    return 0;
}
}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"zol: geometry processing with zolc2017"};
    app.require_subcommand(1);
    CLI::App* demo = app.add_subcommand("demo", "run the library on built-in data");
    CLI11_PARSE(app, argc, argv);
    if (demo->parsed()) return RunDemo();
    return 0;
}
