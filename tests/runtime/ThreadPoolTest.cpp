// ThreadPool: FIFO order, WaitAll, the stop-and-join shutdown, task ownership and the
// log lines of misuse.
#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include <zol/runtime/Constants.h>
#include <zol/runtime/ThreadPool.h>

#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

/// Writes its id into its own slot of a caller-owned array.
class SlotTask : public TaskBase {
public:
    SlotTask(std::vector<int>* slots, int id) : mpSlots(slots), mId(id) {}
    void Run() override { (*mpSlots)[mId] = mId * mId; }

private:
    std::vector<int>* mpSlots;
    int mId;
};

/// Appends its id to a shared log (safe on a single worker only).
class OrderTask : public TaskBase {
public:
    OrderTask(std::vector<int>* order, int id) : mpOrder(order), mId(id) {}
    void Run() override { mpOrder->push_back(mId); }

private:
    std::vector<int>* mpOrder;
    int mId;
};

/// Counts runs and destructions in shared atomics.
class CountingTask : public TaskBase {
public:
    CountingTask(std::atomic<int>* runs, std::atomic<int>* destroyed, int taskType = TASK_WORK)
        : TaskBase(taskType), mpRuns(runs), mpDestroyed(destroyed) {}
    ~CountingTask() override { ++*mpDestroyed; }
    void Run() override { ++*mpRuns; }

private:
    std::atomic<int>* mpRuns;
    std::atomic<int>* mpDestroyed;
};

}  // namespace

TEST(ThreadPool, RunsEveryTaskIntoItsOwnSlot) {
    std::vector<int> slots(8, -1);
    {
        ThreadPool pool;
        ASSERT_EQ(pool.InitThreads(2), 2);
        for (int i = 0; i < 8; ++i) ASSERT_EQ(pool.InsertTask(new SlotTask(&slots, i)), RESULT_OK);
        pool.WaitAll();
    }
    for (int i = 0; i < 8; ++i) EXPECT_EQ(slots[i], i * i);
}

TEST(ThreadPool, OneWorkerTakesTasksInInsertionOrder) {
    std::vector<int> order;
    const std::vector<int> ids = {5, 3, 9, 0, 7, 1, 8, 2, 6, 4};
    ThreadPool pool;
    ASSERT_EQ(pool.InitThreads(1), 1);
    for (int id : ids) pool.InsertTask(new OrderTask(&order, id));
    pool.WaitAll();
    EXPECT_EQ(order, ids);
    // A second round on the same pool keeps the order too.
    order.clear();
    for (int id : ids) pool.InsertTask(new OrderTask(&order, id));
    pool.WaitAll();
    EXPECT_EQ(order, ids);
}

TEST(ThreadPool, ManyTasksOnManyWorkersAllRunAndAreReleased) {
    std::atomic<int> runs{0}, destroyed{0};
    {
        ThreadPool pool;
        ASSERT_EQ(pool.InitThreads(8), 8);
        EXPECT_EQ(pool.GetThreadCount(), 8);
        for (int i = 0; i < 5000; ++i) pool.InsertTask(new CountingTask(&runs, &destroyed));
        pool.WaitAll();
        EXPECT_EQ(runs.load(), 5000);
        EXPECT_EQ(destroyed.load(), 5000);
    }
}

TEST(ThreadPool, WaitAllWithNothingInsertedReturns) {
    ThreadPool pool;
    pool.InitThreads(3);
    pool.WaitAll();
    pool.WaitAll();
    ThreadPool empty;
    empty.WaitAll();
}

TEST(ThreadPool, DestructorStopsIdleWorkersAndLogsTheirCount) {
    zoltest::LogCapture log;
    for (int workers : {0, 1, 4}) {
        ThreadPool pool;
        EXPECT_EQ(pool.InitThreads(workers), workers);
    }
    EXPECT_EQ(log.Lines(),
              (std::vector<std::string>{"ThreadPool Free Memory... mThreadList.size =0",
                                        "ThreadPool Free Memory... mThreadList.size =1",
                                        "ThreadPool Free Memory... mThreadList.size =4"}));
}

TEST(ThreadPool, DestructorFinishesQueuedWorkBeforeStopping) {
    std::atomic<int> runs{0}, destroyed{0};
    {
        ThreadPool pool;
        pool.InitThreads(2);
        for (int i = 0; i < 200; ++i) pool.InsertTask(new CountingTask(&runs, &destroyed));
    }  // no WaitAll: the stop tasks queue behind the work
    EXPECT_EQ(runs.load(), 200);
    EXPECT_EQ(destroyed.load(), 200);
}

TEST(ThreadPool, TasksLeftWithoutWorkersAreReleasedUnrun) {
    std::atomic<int> runs{0}, destroyed{0};
    {
        ThreadPool pool;
        EXPECT_EQ(pool.InitThreads(0), 0);
        pool.InsertTask(new CountingTask(&runs, &destroyed));
        pool.InsertTask(new CountingTask(&runs, &destroyed));
        pool.WaitAll();  // nobody could finish them: returns instead of hanging
    }
    EXPECT_EQ(runs.load(), 0);
    EXPECT_EQ(destroyed.load(), 2);
}

TEST(ThreadPool, TaskOfUnknownKindIsNeitherRunNorReleased) {
    std::atomic<int> runs{0}, destroyed{0};
    auto* odd = new CountingTask(&runs, &destroyed, 7);
    {
        ThreadPool pool;
        pool.InitThreads(1);
        pool.InsertTask(odd);
        pool.InsertTask(new CountingTask(&runs, &destroyed));
    }
    EXPECT_EQ(runs.load(), 1);
    EXPECT_EQ(destroyed.load(), 1);
    delete odd;  // still the caller's
}

TEST(ThreadPool, NullTaskIsRejectedWithItsLogLine) {
    zoltest::LogCapture log;
    {
        ThreadPool pool;
        EXPECT_EQ(pool.InsertTask(nullptr), RESULT_INVALID_INPUT);
    }
    EXPECT_EQ(log.Lines(),
              (std::vector<std::string>{"Error: ThreadPool::InsertTask NULL input.",
                                        "ThreadPool Free Memory... mThreadList.size =0"}));
}
