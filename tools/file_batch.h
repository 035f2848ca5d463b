// One file or many, each with its output.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "task_plan.h"

namespace plenar_tool {

// Does all tasks, with one worker (and so one codec object) on each of `jobs` threads; that many frames are read, coded
// and written at a time, and are in memory. What goes wrong with one file is reported and doesn't stop the others. A
// signal does: frames in work are finished or dropped. Returns the program's exit status.
using Worker = std::function<void(const Task&)>;
int RunTasks(const std::vector<Task>& tasks, const BatchOptions& options,
             const std::function<Worker(uint32_t numThreads)>& makeWorker);

}  // namespace plenar_tool
