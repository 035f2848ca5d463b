// How far a batch is: one line that changes on a terminal, elsewhere a line a frame in the order of the frames.
#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include "task_plan.h"
#include "task_result.h"

namespace plenar_tool {

class BatchProgress {
public:
    // A quiet one says nothing.
    BatchProgress(const std::vector<Task>& tasks, bool quiet);
    ~BatchProgress();
    BatchProgress(const BatchProgress&) = delete;
    BatchProgress& operator=(const BatchProgress&) = delete;

    void Finish(size_t index, const TaskResult& result);

private:
    using Clock = std::chrono::steady_clock;

    void ShowRate();
    void PrintLines();

    const std::vector<Task>& tasks_;
    const bool quiet_;
    const bool terminal_;
    const Clock::time_point start_;
    std::mutex mutex_;
    std::vector<Outcome> outcomes_;
    size_t finished_ = 0;
    size_t failed_ = 0;
    size_t kept_ = 0;
    size_t printed_ = 0;
    Clock::time_point lastShown_;
};

}  // namespace plenar_tool
