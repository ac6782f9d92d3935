// The progress bar thread: polls, redraws one line in place, erases it at the end.
#include "ProgressBar.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

#include <zol/runtime/ApiProgress.h>

#include "ToolCommon.h"

namespace zoltool {

namespace {
constexpr int kBarWidth = 30;
constexpr std::size_t kLabelWidth = 40;
}  // namespace

bool ProgressBar::Enabled() { return !Globals().quiet && isatty(STDERR_FILENO) == 1; }

ProgressBar::ProgressBar(const std::string& label) : mLabel(label) {
    if (Enabled()) mThread = std::thread([this] { Run(); });
}

ProgressBar::~ProgressBar() {
    if (!mThread.joinable()) return;
    mStop = true;
    mThread.join();
    std::fputs("\r\033[K", stderr);  // erase the bar's line
    std::fflush(stderr);
}

void ProgressBar::SetLabel(const std::string& label) {
    std::lock_guard<std::mutex> lock(mLabelLock);
    mLabel = label;
}

void ProgressBar::Run() {
    while (!mStop) {
        Draw(ZOL::GetApiProgress());
        for (int i = 0; i < 10 && !mStop; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
}

void ProgressBar::Draw(double progress) {
    progress = std::clamp(progress, 0.0, 1.0);
    const int filled = static_cast<int>(progress * kBarWidth + 0.5);
    char bar[kBarWidth + 1];
    for (int i = 0; i < kBarWidth; ++i) bar[i] = i < filled ? '#' : '.';
    bar[kBarWidth] = '\0';
    std::string label;
    {
        std::lock_guard<std::mutex> lock(mLabelLock);
        label = mLabel;
    }
    // One terminal line: a long label keeps its end, where the step is named.
    if (label.size() > kLabelWidth) label = "..." + label.substr(label.size() - kLabelWidth + 3);
    std::fprintf(stderr, "\r\033[K%s [%s] %3d%%", label.c_str(), bar,
                 static_cast<int>(progress * 100.0 + 0.5));
    std::fflush(stderr);
}

}  // namespace zoltool
