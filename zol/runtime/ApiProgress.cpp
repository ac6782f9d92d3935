// Progress state: created on first use and never destroyed. The reported value is read
// by the host's polling thread without a lock; the rest is written by the calling thread
// and also by pool workers whose tasks call exported operations as sub-steps (inside a
// suspension), so it sits behind one mutex. Progress is written per milestone, not per
// point, so the lock costs nothing measurable.
#include <zol/runtime/ApiProgress.h>

#include <atomic>
#include <mutex>
#include <vector>

namespace ZOL {

namespace {
struct ProgressState {
    double currentProgress = 0.0;
    std::atomic<double> reportedProgress{0.0};
    std::vector<double> progressRanges;
    int suspendDepth = 0;
    std::mutex mutex;  // guards everything above except reportedProgress
};

ProgressState& State() {
    static ProgressState* state = new ProgressState();  // lives until the process ends
    return *state;
}
}  // namespace

double GetApiProgress() { return State().reportedProgress.load(std::memory_order_relaxed); }

void ResetApiProgress() {
    ProgressState& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.currentProgress = 0.0;
    s.reportedProgress.store(0.0, std::memory_order_relaxed);
    s.progressRanges.clear();
    s.suspendDepth = 0;
}

void SetProgress(double t) {
    ProgressState& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.suspendDepth != 0) return;
    double value = t;
    const std::size_t n = s.progressRanges.size();
    if (n > 0) {
        // A lone entry is a caller bug; at() raises rather than reading garbage.
        const double a = s.progressRanges.at(n - 2);
        const double b = s.progressRanges.at(n - 1);
        value = t * b + (1.0 - t) * a;
    }
    s.currentProgress = value;
    s.reportedProgress.store(value, std::memory_order_relaxed);
}

void SuspendProgress() {
    ProgressState& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    ++s.suspendDepth;
}

void ResumeProgress() {
    ProgressState& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.suspendDepth > 0) --s.suspendDepth;
}

void PushProgressRange(double begin, double end) {
    ProgressState& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.progressRanges.push_back(begin);
    s.progressRanges.push_back(end);
}

void PopProgressRange() {
    ProgressState& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.progressRanges.size() >= 2) s.progressRanges.resize(s.progressRanges.size() - 2);
}

}  // namespace ZOL
