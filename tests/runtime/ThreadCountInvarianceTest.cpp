// Every operation that runs on the worker threads gives bit-identical results on 1, 2
// and 8 threads: one row of the operation table (tests/common) per operation. The thread
// sanitizer stage of CI runs these rows too.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <zol/runtime/Constants.h>

#include "tests/common/OperationTable.h"
#include "tests/common/ThreadCountScope.h"

namespace {

using zoltest::Operation;
using zoltest::Outcome;

std::vector<Operation> ParallelOperations() {
    std::vector<Operation> rows;
    for (const Operation& operation : zoltest::Operations()) {
        if (operation.parallel) rows.push_back(operation);
    }
    return rows;
}

class ThreadCountInvariance : public ::testing::TestWithParam<Operation> {};

TEST_P(ThreadCountInvariance, ResultsAreBitIdenticalOnOneTwoAndEightThreads) {
    const Operation& operation = GetParam();
    Outcome reference;
    for (int threads : {1, 2, 8}) {
        zoltest::ThreadCountScope scope(threads);
        const Outcome outcome = operation.run(zoltest::LibraryContainers());
        if (threads == 1) {
            reference = outcome;
            for (int status : outcome.statuses) EXPECT_EQ(status, ZOL::RESULT_OK);
            EXPECT_FALSE(outcome.values.empty());
            continue;
        }
        EXPECT_EQ(zoltest::Difference(reference, outcome), "") << threads << " threads";
    }
}

INSTANTIATE_TEST_SUITE_P(Operations,
                         ThreadCountInvariance,
                         ::testing::ValuesIn(ParallelOperations()),
                         [](const ::testing::TestParamInfo<Operation>& row) {
                             return std::string(row.param.name);
                         });

}  // namespace
