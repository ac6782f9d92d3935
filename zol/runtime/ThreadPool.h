// The worker pool that multi-threaded steps create for themselves: a FIFO queue of
// tasks guarded by one mutex and two condition variables, served by a fixed set of
// worker threads, and destroyed (workers joined) before the step returns.
#pragma once

#include <condition_variable>
#include <list>
#include <mutex>
#include <vector>

#include <zol/runtime/Export.h>

namespace ZOL {

/// One unit of work for a ThreadPool. Derived tasks carry their inputs by pointer and
/// write their results into caller-owned slots, because the pool destroys a task (via
/// Release) as soon as it has run.
class ZOL_API TaskBase {
public:
    /// Task kinds: a worker runs a work task and leaves its loop on a stop task.
    enum TaskType : int { TASK_STOP = 0, TASK_WORK = 1 };

    /// A work task.
    TaskBase();
    /// \param[in] taskType TASK_WORK, TASK_STOP, or any other value for a task that the
    ///            workers skip without running, releasing or counting it.
    explicit TaskBase(int taskType);
    /// The work. Must not throw.
    virtual void Run() = 0;
    /// Destroys the task (delete this); the pool calls it after Run.
    virtual void Release();
    virtual ~TaskBase();

    int GetTaskType() const { return mTaskType; }
    void SetTaskType(int taskType) { mTaskType = taskType; }

protected:
    int mTaskType;
};

/// Pool of worker threads over a FIFO task queue.
///
/// Usage: InitThreads(n); InsertTask one task per worker; WaitAll(); read the results in
/// task order; destroy the pool. The destructor stops and joins every worker, so once
/// it returns no worker touches the pool or any task again.
class ZOL_API ThreadPool {
public:
    /// Empty queue, no workers.
    ThreadPool();
    /// Sends one stop task per worker, joins the workers and releases every task still
    /// queued. Logs "ThreadPool Free Memory... mThreadList.size =" with the worker count.
    ~ThreadPool();
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    /// Starts \p count workers.
    /// \return the number actually started (a worker whose thread cannot be created is
    ///         skipped); callers compare it with \p count.
    int InitThreads(int count);
    /// Appends \p task to the queue and wakes one idle worker. The pool owns every
    /// non-null task from here on, also when RESULT_STEP_FAIL is returned (the task stays
    /// queued and is released by the destructor).
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) for a null task ("Error:
    ///         ThreadPool::InsertTask NULL input."); RESULT_STEP_FAIL (-3) when the pool has
    ///         no task-available condition ("ThreadPool::InsertTask: WakeSingle failed").
    int InsertTask(TaskBase* task);
    /// Blocks until every inserted task has finished. Returns at once when nothing is
    /// pending, and also when the pool has no worker that could finish a pending task.
    void WaitAll();
    /// \return the number of worker threads started (the size of mThreadList).
    int GetThreadCount() const;

private:
    struct ThreadRecord;

    void WorkerLoop();
    void FinishTask();

    std::vector<ThreadRecord*> mThreadList;
    std::list<TaskBase*> mTaskList;
    std::mutex* mpMutex;
    std::condition_variable* mpTaskAvailable;
    std::condition_variable* mpTaskFinished;
    int mPendingCount;
};

}  // namespace ZOL
