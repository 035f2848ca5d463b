#include "pool/work_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "pool/split_rows.h"

namespace plenar {
namespace {

using Rows = std::vector<uint32_t>;

TEST(SplitRowsTest, LargerBandsStandFirstAndNoneIsEmpty) {
    EXPECT_EQ(SplitRows(10, 4), (Rows{3, 3, 2, 2}));
    EXPECT_EQ(SplitRows(3, 8), (Rows{1, 1, 1}));
    EXPECT_EQ(SplitRows(8, 4), (Rows{2, 2, 2, 2}));
    EXPECT_EQ(SplitRows(0, 4), Rows{});
    EXPECT_EQ(SplitRows(0xFFFFFFFF, 2), (Rows{0x80000000, 0x7FFFFFFF}));
}

std::string FailureOf(WorkPool& pool) {
    try {
        pool.Wait();
        return {};
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

class WorkPoolTest : public testing::TestWithParam<uint32_t> {};

TEST_P(WorkPoolTest, RunsEveryJobOfThousandsOfBatches) {
    WorkPool pool(GetParam());
    ASSERT_EQ(pool.WorkerCount(), GetParam());
    std::vector<uint32_t> ran(70);
    for (uint32_t batch = 0; batch < 3000; ++batch) {
        const uint32_t jobs = batch % 70;
        RunBatch(pool, jobs, [&](uint32_t i) { ran[i] = batch; });
        for (uint32_t i = 0; i < jobs; ++i) {
            ASSERT_EQ(ran[i], batch) << i;
        }
    }
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

INSTANTIATE_TEST_SUITE_P(Workers, WorkPoolTest, testing::Values(2, 3, 8, 64));

}  // namespace
}  // namespace plenar
