// `zol demo`: runs the steps in order in a temporary folder, polls the progress value
// from a second thread as a host's progress bar would, and closes with a timed summary.
#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <system_error>
#include <thread>
#include <vector>

#include "Demo.h"

namespace zoldemo {

using namespace ZOL;

std::string Format(const char* format, ...) {
    char buffer[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof(buffer), format, args);
    va_end(args);
    return buffer;
}

namespace {
struct Step {
    const char* name;
    StepResult (*run)(DemoContext&);
};

const Step kSteps[] = {
    {"value types", DemoValueTypes},
    {"progress", DemoProgress},
    {"log", DemoLog},
    {"generate scan", GenerateScan},
    {"FuseVertex", FuseScan},
    {"UpdateNormal", UpdateScanNormals},
    {"MeasureMesh", MeasureScan},
    {"MeshQueryTool::Init", BuildQueryTree},
    {"DetectShape", DetectScanShapes},
    {"mesh files", RoundTripMeshFiles},
    {"point cloud", BuildCloud},
    {"PointCloudInfo", IndexCloudWithInfo},
    {"Ann", IndexCloudWithAnn},
    {"point-cloud files", RoundTripCloudFiles},
    {"grid cloud file", RoundTripGridCloud},
};

// A fresh folder under the system's temporary directory (the first free numbered name).
std::filesystem::path MakeWorkDir() {
    std::error_code error;
    const std::filesystem::path base = std::filesystem::temp_directory_path(error);
    for (int i = 0; !error && i < 1000; ++i) {
        const std::filesystem::path dir = base / ("zol-demo-" + std::to_string(i));
        if (std::filesystem::create_directory(dir, error)) return dir;
    }
    return {};
}

// Reads the progress value in a loop, as a host's progress bar would, until stopped.
class ProgressPoller {
public:
    ProgressPoller() : mThread([this] { Poll(); }) {}
    ~ProgressPoller() { Stop(); }
    void Stop() {
        mStop = true;
        if (mThread.joinable()) mThread.join();
    }
    int Polls() const { return mPolls; }
    double Last() const { return mLast; }

private:
    void Poll() {
        while (!mStop) {
            mLast = GetApiProgress();
            ++mPolls;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    std::atomic<bool> mStop{false};
    std::atomic<int> mPolls{0};
    std::atomic<double> mLast{0.0};
    std::thread mThread;
};
}  // namespace

int RunDemo() {
    DemoContext context;
    context.workDir = MakeWorkDir();
    if (context.workDir.empty()) {
        std::printf("zol demo: cannot create a folder in the temporary directory\n");
        return 1;
    }
    LogSystem::SetLogFileName((context.workDir / "tracklog.txt").string());
    std::printf("zolc2017 demo (files in %s)\n", context.workDir.string().c_str());

    ProgressPoller poller;
    std::vector<double> times;
    std::vector<StepResult> results;
    for (const Step& step : kSteps) {
        std::printf("[%s]\n", step.name);
        const double start = Profiler::GetTime();
        results.push_back(step.run(context));
        times.push_back(Profiler::GetTime() - start);
    }
    poller.Stop();

    std::printf("\nsummary\n");
    int failures = 0;
    double total = 0.0;
    for (size_t i = 0; i < results.size(); ++i) {
        std::printf("  %-4s %-20s %9.2f ms  %s\n", results[i].ok ? "ok" : "FAIL", kSteps[i].name,
                    1000.0 * times[i], results[i].summary.c_str());
        failures += results[i].ok ? 0 : 1;
        total += times[i];
    }
    std::printf("  progress polled %d times from a second thread, last value %g\n", poller.Polls(),
                poller.Last());
    std::printf("%zu steps, %d failed, %.1f ms\n", results.size(), failures, 1000.0 * total);

    LogSystem::SetLogFileName("tracklog.txt");  // releases the file in the folder
    std::error_code error;
    std::filesystem::remove_all(context.workDir, error);
    return failures == 0 ? 0 : 1;
}

}  // namespace zoldemo
