// One file or many, each with its output.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace plenar_tool {

class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Task {
    std::string input;
    std::string output;
};

// What `encode` and `decode` have in common.
struct BatchOptions {
    std::vector<std::string> files;  // INPUT OUTPUT, or inputs only when outDir is given
    std::string outDir;
    uint32_t jobs = 0;     // 0: one for each processor
    int64_t threads = -1;  // of one encoder or decoder, -1: chosen by the number of files
};

// With outDir, each output is named after its input, with `extension` in place of the input's. Throws UsageError when
// the files don't make sense together.
std::vector<Task> PlanTasks(const BatchOptions& options, const std::string& extension);

// Does all tasks, with one worker (and so one codec object) on each of `jobs` threads. What goes wrong with one file is
// reported and doesn't stop the others. Returns the program's exit status.
using Worker = std::function<void(const Task&)>;
int RunTasks(const std::vector<Task>& tasks, const BatchOptions& options,
             const std::function<Worker(uint32_t numThreads)>& makeWorker);

}  // namespace plenar_tool
