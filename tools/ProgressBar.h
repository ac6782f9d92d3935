// A progress bar on standard error for the long steps of `zol`, fed by polling the
// library's process-wide progress value from a second thread, as a host's window would.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

namespace zoltool {

/// Draws "label [#####.....]  45%" on standard error while it lives, redrawing every
/// 100 ms from GetApiProgress(). Draws nothing when standard error is not a terminal or
/// --quiet was given; the line is erased when the bar ends, so results printed after
/// it stand alone.
class ProgressBar {
public:
    explicit ProgressBar(const std::string& label);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Changes the text in front of the bar (e.g. the step of a multi-step command).
    void SetLabel(const std::string& label);

    /// \return whether bars are drawn in this process (stderr is a terminal, not quiet).
    static bool Enabled();

private:
    void Run();
    void Draw(double progress);

    std::mutex mLabelLock;
    std::string mLabel;
    std::atomic<bool> mStop{false};
    std::thread mThread;
};

}  // namespace zoltool
