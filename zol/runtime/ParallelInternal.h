// The one way the library runs a step on worker threads: a fresh ThreadPool, one *MT
// task per slice, WaitAll, results read in task order by the caller. Every parallel
// step goes through RunTasks so that they all share one rule for a pool that starts
// fewer workers than asked and one log line for it.
#pragma once

#include <algorithm>
#include <utility>

#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ThreadCount.h>
#include <zol/runtime/ThreadPool.h>

namespace ZOL {

/// The number of tasks a parallel step splits into: GetThreadCount(), at least 1, and
/// never more than \p itemCount (when positive) so that no task is empty.
inline int ParallelTaskCount(int itemCount = 0) {
    int n = std::max(GetThreadCount(), 1);
    if (itemCount > 0) n = std::min(n, itemCount);
    return n;
}

/// First item of contiguous slice \p t when \p count items are split into \p parts
/// slices; slice t is [SliceBegin(count, t, parts), SliceBegin(count, t + 1, parts)).
inline int SliceBegin(int count, int t, int parts) {
    return static_cast<int>(static_cast<long long>(count) * t / parts);
}

/// What a parallel step logs when it cannot run.
struct ParallelLines {
    /// The step's name; a pool without enough workers logs "<name>: invalid thread
    /// count = " and the number started.
    const char* name;
    /// The whole line logged when a task cannot be queued.
    const char* insertFailed;
};

/// Runs \p taskCount tasks, makeTask(t, taskCount) for t = 0 .. taskCount-1, each a new
/// TaskBase (an *MT task) that writes only its own output slots, on a fresh pool of
/// taskCount workers, and waits for all of them.
///
/// The rule for a pool that starts fewer workers than asked: the step still runs every
/// task on the workers it has (the split depends on the task count, never on the
/// workers, so results are the same) unless fewer than \p minWorkers started; then it
/// logs "<name>: invalid thread count = <started>" and fails.
/// \return RESULT_OK; RESULT_STEP_FAIL (-3) when too few workers start or a task cannot
///         be queued (the tasks already queued still finish before it returns).
template <typename MakeTask>
int RunTasks(int taskCount, MakeTask&& makeTask, const ParallelLines& lines, int minWorkers = 1) {
    ThreadPool pool;
    const int started = pool.InitThreads(taskCount);
    if (started < std::max(minWorkers, 1)) {
        return LogFailure(RESULT_STEP_FAIL, lines.name, ": invalid thread count = ", started);
    }
    for (int t = 0; t < taskCount; ++t) {
        if (pool.InsertTask(makeTask(t, taskCount)) != RESULT_OK) {
            // The pool keeps and releases a task it could not hand out.
            pool.WaitAll();
            return LogFailure(RESULT_STEP_FAIL, lines.insertFailed);
        }
    }
    pool.WaitAll();
    return RESULT_OK;
}

/// A task that runs a callable with its slice number: for steps whose Part names no
/// task class of its own.
template <typename Body>
class FunctionMT : public TaskBase {
public:
    FunctionMT(const Body* body, int taskId, int taskCount)
        : mpBody(body), mTaskId(taskId), mTaskCount(taskCount) {}
    void Run() override { (*mpBody)(mTaskId, mTaskCount); }

private:
    const Body* mpBody;
    int mTaskId;
    int mTaskCount;
};

/// Runs body(t, taskCount) for every slice t on the workers, as RunTasks does.
template <typename Body>
int ParallelFor(int taskCount, const Body& body, const ParallelLines& lines) {
    return RunTasks(
        taskCount, [&body](int t, int n) -> TaskBase* { return new FunctionMT<Body>(&body, t, n); },
        lines);
}

}  // namespace ZOL
