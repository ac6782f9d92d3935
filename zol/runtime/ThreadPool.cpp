// ThreadPool: worker loop, task queue and the stop-and-join shutdown.
#include <zol/runtime/ThreadPool.h>

#include <new>
#include <system_error>
#include <thread>

#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

/// Tells the worker that takes it to leave its loop.
class StopTask : public TaskBase {
public:
    StopTask() : TaskBase(TASK_STOP) {}
    void Run() override {}
};

}  // namespace

TaskBase::TaskBase() : mTaskType(TASK_WORK) {}

TaskBase::TaskBase(int taskType) : mTaskType(taskType) {}

void TaskBase::Release() { delete this; }

TaskBase::~TaskBase() = default;

/// Per-worker start record: the pool it serves and its thread.
struct ThreadPool::ThreadRecord {
    ThreadPool* mpPool;
    std::thread mThread;
};

ThreadPool::ThreadPool()
    : mpMutex(new (std::nothrow) std::mutex),
      mpTaskAvailable(new (std::nothrow) std::condition_variable),
      mpTaskFinished(new (std::nothrow) std::condition_variable),
      mPendingCount(0) {}

ThreadPool::~ThreadPool() {
    LogLine("ThreadPool Free Memory... mThreadList.size =", mThreadList.size());
    for (size_t i = 0; i < mThreadList.size(); ++i) InsertTask(new StopTask);
    // Each live worker takes exactly one stop task and returns; joining makes sure
    // none of them still runs inside the pool when the members below go away.
    for (ThreadRecord* record : mThreadList) {
        if (record->mThread.joinable()) record->mThread.join();
        delete record;
    }
    mThreadList.clear();
    for (TaskBase* task : mTaskList) task->Release();
    mTaskList.clear();
    delete mpTaskFinished;
    delete mpTaskAvailable;
    delete mpMutex;
}

int ThreadPool::InitThreads(int count) {
    if (!mpMutex || !mpTaskAvailable || !mpTaskFinished) return 0;
    int started = 0;
    for (int i = 0; i < count; ++i) {
        ThreadRecord* record = new (std::nothrow) ThreadRecord{this, std::thread()};
        if (!record) continue;
        try {
            record->mThread = std::thread([record] { record->mpPool->WorkerLoop(); });
        } catch (const std::system_error&) {
            delete record;
            continue;
        }
        mThreadList.push_back(record);
        ++started;
    }
    return started;
}

int ThreadPool::InsertTask(TaskBase* task) {
    if (!task) return LogFailure(RESULT_INVALID_INPUT, "Error: ThreadPool::InsertTask NULL input.");
    {
        // A missing mutex (its allocation failed) makes the lock a no-op.
        std::unique_lock<std::mutex> lock;
        if (mpMutex) lock = std::unique_lock<std::mutex>(*mpMutex);
        mTaskList.push_back(task);
        ++mPendingCount;
    }
    // The task is queued either way, so the pool releases it; the caller must not.
    if (!mpTaskAvailable) {
        return LogFailure(RESULT_STEP_FAIL, "ThreadPool::InsertTask: WakeSingle failed");
    }
    mpTaskAvailable->notify_one();
    return RESULT_OK;
}

void ThreadPool::WaitAll() {
    if (!mpMutex || !mpTaskFinished || mThreadList.empty()) return;
    std::unique_lock<std::mutex> lock(*mpMutex);
    mpTaskFinished->wait(lock, [this] { return mPendingCount < 1; });
}

int ThreadPool::GetThreadCount() const { return static_cast<int>(mThreadList.size()); }

void ThreadPool::FinishTask() {
    {
        std::lock_guard<std::mutex> lock(*mpMutex);
        --mPendingCount;
    }
    mpTaskFinished->notify_all();
}

void ThreadPool::WorkerLoop() {
    for (;;) {
        TaskBase* task = nullptr;
        {
            std::unique_lock<std::mutex> lock(*mpMutex);
            mpTaskAvailable->wait(lock, [this] { return !mTaskList.empty(); });
            task = mTaskList.front();
            mTaskList.pop_front();
        }
        if (!task) return;
        const int taskType = task->GetTaskType();
        if (taskType == TaskBase::TASK_WORK) {
            // A task must not throw; if one does, count it as finished so that WaitAll
            // and the other tasks are not held up, and keep serving the queue.
            try {
                task->Run();
            } catch (...) {
            }
            task->Release();
            FinishTask();
        } else if (taskType == TaskBase::TASK_STOP) {
            task->Release();
            FinishTask();
            return;
        }
        // Any other kind is skipped: not run, not released, not counted.
    }
}

}  // namespace ZOL
