// What is said of a batch at its end, to the user and to programs.
#pragma once

#include <string>
#include <vector>

#include "task_plan.h"
#include "task_result.h"

namespace plenar_tool {

struct Batch {
    const std::vector<Task>& tasks;
    std::vector<TaskResult> results;
    size_t jobs = 1;
    double seconds = 0;
    int stopSignal = 0;
};

// Lines on stderr: what failed and what is not done; how long it took where `options` ask for it.
void PrintSummary(const Batch& batch, const BatchOptions& options);

// Throws UsageError when `file` exists and isn't a report of an earlier batch.
void CheckReportTarget(const std::string& file);

// Also when a stop is requested, which other writers take as the end of their work. Throws std::runtime_error.
void WriteReport(const Batch& batch, const std::string& file);

}  // namespace plenar_tool
