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

/// Counts runs and destructions; with an order list (one worker only) it also records
/// its id there.
class ProbeTask : public TaskBase {
public:
    ProbeTask(std::atomic<int>* runs,
              std::atomic<int>* destroyed,
              int taskType = TASK_WORK,
              std::vector<int>* order = nullptr,
              int id = 0)
        : TaskBase(taskType), mpRuns(runs), mpDestroyed(destroyed), mpOrder(order), mId(id) {}
    ~ProbeTask() override { ++*mpDestroyed; }
    void Run() override {
        ++*mpRuns;
        if (mpOrder) mpOrder->push_back(mId);
    }

private:
    std::atomic<int>* mpRuns;
    std::atomic<int>* mpDestroyed;
    std::vector<int>* mpOrder;
    int mId;
};

}  // namespace

TEST(ThreadPool, ManyTasksOnManyWorkersAllRunAndAreReleased) {
    std::atomic<int> runs{0}, destroyed{0};
    ThreadPool pool;
    ASSERT_EQ(pool.InitThreads(8), 8);
    EXPECT_EQ(pool.GetThreadCount(), 8);
    for (int i = 0; i < 5000; ++i)
        ASSERT_EQ(pool.InsertTask(new ProbeTask(&runs, &destroyed)), RESULT_OK);
    pool.WaitAll();
    EXPECT_EQ(runs.load(), 5000);
    EXPECT_EQ(destroyed.load(), 5000);
    pool.WaitAll();  // nothing left: returns at once
}

TEST(ThreadPool, OneWorkerTakesTasksInInsertionOrder) {
    std::atomic<int> runs{0}, destroyed{0};
    std::vector<int> order;
    const std::vector<int> ids = {5, 3, 9, 0, 7, 1, 8, 2, 6, 4};
    ThreadPool pool;
    ASSERT_EQ(pool.InitThreads(1), 1);
    for (int round = 0; round < 2; ++round) {  // a second round keeps the order too
        order.clear();
        for (int id : ids)
            pool.InsertTask(new ProbeTask(&runs, &destroyed, TaskBase::TASK_WORK, &order, id));
        pool.WaitAll();
        EXPECT_EQ(order, ids);
    }
}

TEST(ThreadPool, DestructorFinishesQueuedWorkStopsWorkersAndLogsTheirCountAndANullTask) {
    zoltest::LogCapture log;
    std::atomic<int> runs{0}, destroyed{0};
    for (int workers : {0, 1, 4}) {
        ThreadPool pool;
        EXPECT_EQ(pool.InitThreads(workers), workers);
        if (workers == 1) {
            EXPECT_EQ(pool.InsertTask(nullptr), RESULT_INVALID_INPUT);
        }
        for (int i = 0; workers == 4 && i < 200; ++i) {  // no WaitAll: the stop tasks queue last
            pool.InsertTask(new ProbeTask(&runs, &destroyed));
        }
    }
    EXPECT_EQ(runs.load(), 200);
    EXPECT_EQ(destroyed.load(), 200);
    EXPECT_EQ(log.Lines(),
              (std::vector<std::string>{"ThreadPool Free Memory... mThreadList.size =0",
                                        "Error: ThreadPool::InsertTask NULL input.",
                                        "ThreadPool Free Memory... mThreadList.size =1",
                                        "ThreadPool Free Memory... mThreadList.size =4"}));
}

TEST(ThreadPool, TasksLeftWithoutWorkersAreReleasedUnrunAndUnknownKindsStayTheCallers) {
    std::atomic<int> runs{0}, destroyed{0};
    {
        ThreadPool pool;
        EXPECT_EQ(pool.InitThreads(0), 0);
        pool.InsertTask(new ProbeTask(&runs, &destroyed));
        pool.InsertTask(new ProbeTask(&runs, &destroyed));
        pool.WaitAll();  // nobody could finish them: returns instead of hanging
    }
    EXPECT_EQ(runs.load(), 0);
    EXPECT_EQ(destroyed.load(), 2);
    auto* odd = new ProbeTask(&runs, &destroyed, 7);
    {
        ThreadPool pool;
        pool.InitThreads(1);
        pool.InsertTask(odd);
        pool.InsertTask(new ProbeTask(&runs, &destroyed));
    }
    EXPECT_EQ(runs.load(), 1);
    EXPECT_EQ(destroyed.load(), 3);
    delete odd;
}
