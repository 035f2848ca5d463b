#include "pool/work_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "testing/allocations.h"
#include "testing/message_of.h"

namespace plenar {
namespace {

using plenar_test::allocations;
using plenar_test::AllocationWatch;
using plenar_test::MessageOf;
using plenar_test::threadStarts;

std::string FailureOf(WorkPool& pool) {
    return MessageOf([&pool] { pool.Wait(); });
}

class WorkPoolTest : public testing::TestWithParam<uint32_t> {};

TEST_P(WorkPoolTest, RunsEveryJobOfManyBatches) {
    WorkPool pool(GetParam());
    ASSERT_EQ(pool.WorkerCount(), GetParam());
    std::vector<uint32_t> ran(70);
    std::atomic<uint32_t> ranOnWorkers{0};
    const std::thread::id owner = std::this_thread::get_id();
    for (uint32_t batch = 0; batch < 100000; ++batch) {
        const uint32_t jobs = batch % 70;
        RunBatch(pool, UINT64_MAX, jobs, [&](uint32_t i) {
            ran[i] = batch;
            ranOnWorkers += std::this_thread::get_id() != owner ? 1 : 0;
            // Jobs as short as these are done before a worker wakes up, unless one gives way.
            if (i == 0 && batch % GetParam() == 0) {
                std::this_thread::yield();
            }
        });
        ASSERT_EQ(std::count(ran.begin(), ran.begin() + jobs, batch), jobs);
    }
    EXPECT_GT(ranOnWorkers, 0U);
}

TEST_P(WorkPoolTest, DealsJobsRoundToQueuesThatOneThreadRunsInWait) {
    WorkPool pool(GetParam());
    std::vector<std::thread::id> runners(3 * GetParam());
    std::atomic<uint32_t> started{0};
    for (auto& runner : runners) {
        pool.Enqueue([&] {
            ++started;
            runner = std::this_thread::get_id();
        });
    }
    std::this_thread::yield();
    EXPECT_EQ(started, 0U);
    pool.Wait();
    for (size_t i = 0; i < runners.size(); ++i) {
        EXPECT_EQ(runners[i], runners[i % GetParam()]);
    }
}

TEST_P(WorkPoolTest, AFailureReachesWaitOnceAndStopsNoOtherJob) {
    WorkPool pool(GetParam());
    for (int round = 0; round < 200; ++round) {
        std::atomic<uint32_t> ran{0};
        for (uint32_t i = 0; i < 3 * GetParam(); ++i) {
            pool.Enqueue([&ran, i] {
                ++ran;
                if (i % 2 == 1) {
                    throw std::runtime_error("job failed");
                }
            });
        }
        pool.Enqueue(std::function<void()>());
        const std::string failure = FailureOf(pool);
        EXPECT_TRUE(failure == "job failed" || failure == "bad_function_call") << failure;
        EXPECT_EQ(ran, 3 * GetParam());
        EXPECT_EQ(FailureOf(pool), "");
        pool.Enqueue([&ran] { ++ran; });
        EXPECT_EQ(FailureOf(pool), "");
    }
}

// Two jobs of the same queue, which one thread runs in order.
TEST_P(WorkPoolTest, TheEarliestFailureIsTheOneTold) {
    WorkPool pool(GetParam());
    for (uint32_t i = 0; i <= GetParam(); ++i) {
        pool.Enqueue([&, i] {
            if (i % GetParam() == 0) {
                throw std::runtime_error(i == 0 ? "earlier" : "later");
            }
        });
    }
    EXPECT_EQ(FailureOf(pool), "earlier");
}

TEST_P(WorkPoolTest, ABatchThatLacksMemoryIsDroppedAndTheNextOneRuns) {
    WorkPool pool(GetParam());
    std::atomic<uint32_t> ran{0};
    const auto job = [&ran] { ++ran; };
    pool.Enqueue(job);
    allocations.Arm(1);
    EXPECT_EQ(MessageOf([&] { pool.Enqueue(job); }), "std::bad_alloc");
    allocations.Disarm();
    pool.Enqueue(job);
    EXPECT_EQ(FailureOf(pool), "");
    EXPECT_EQ(ran, 1U);
}

TEST_P(WorkPoolTest, IsDestroyedWhateverItsLastBatchWas) {
    for (int round = 0; round < 10; ++round) {
        WorkPool unused(GetParam());
        WorkPool waiting(GetParam());
        waiting.Enqueue([] { FAIL() << "a batch that nobody released has run"; });
        WorkPool failed(GetParam());
        failed.Enqueue([] { throw std::runtime_error("job failed"); });
        EXPECT_EQ(FailureOf(failed), "job failed");
    }
}

TEST(WorkPoolStart, CostsWhatTheThreadsThatStartCost) {
    const uint32_t count = 1000000;
    const AllocationWatch watch;
    threadStarts.Arm(3);
    EXPECT_NE(MessageOf([] { WorkPool pool(count); }), "");
    EXPECT_TRUE(threadStarts.Disarm());
    EXPECT_LE(watch.LargestBlock(), count * sizeof(std::thread));
}

INSTANTIATE_TEST_SUITE_P(With, WorkPoolTest, testing::Values(2, 3, 64),
                         [](const auto& test) { return std::to_string(test.param) + "Workers"; });

}  // namespace
}  // namespace plenar
