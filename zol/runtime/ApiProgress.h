// The process-wide progress value of the running operation, which a host may poll
// from another thread, and the helpers operations use to write it.
#pragma once

#include <zol/runtime/Export.h>

namespace ZOL {

/// \return the last progress value written (0 before any operation). Safe to call
///         from any thread while an operation runs; the read never tears.
ZOL_API double GetApiProgress();
/// Sets the progress to 0, drops every range and clears any suspension.
ZOL_API void ResetApiProgress();

/// Maps \p t in [0, 1] through the innermost range and stores it, unless suspended.
ZOL_API void SetProgress(double t);
/// Ignores progress writes until the matching ResumeProgress.
ZOL_API void SuspendProgress();
/// Undoes one SuspendProgress; never goes below zero depth.
ZOL_API void ResumeProgress();
/// Pushes the bounds of a sub-range [\p begin, \p end]; later SetProgress(t) stores
/// t * end + (1 - t) * begin. Ranges are pushed and popped in pairs.
ZOL_API void PushProgressRange(double begin, double end);
/// Pops the innermost pair pushed by PushProgressRange (no-op when none).
ZOL_API void PopProgressRange();

/// Suspends progress for its lifetime, so that a nested operation's own progress
/// writes do not disturb the caller's; resumes on every path out of the scope.
class ProgressSuspendScope {
public:
    ProgressSuspendScope() { SuspendProgress(); }
    ~ProgressSuspendScope() { ResumeProgress(); }
    ProgressSuspendScope(const ProgressSuspendScope&) = delete;
    ProgressSuspendScope& operator=(const ProgressSuspendScope&) = delete;
};

}  // namespace ZOL
