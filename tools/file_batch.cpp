#include "file_batch.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <set>
#include <thread>

#include "report.h"

namespace plenar_tool {

namespace fs = std::filesystem;

std::vector<Task> PlanTasks(const BatchOptions& options, const std::string& extension) {
    if (options.outDir.empty()) {
        if (options.files.size() != 2) {
            throw UsageError("give one input and one output file, or any number of inputs and --out-dir");
        }
        return {{options.files[0], options.files[1]}};
    }
    std::vector<Task> tasks;
    std::set<fs::path> outputs;
    for (const std::string& input : options.files) {
        const fs::path output = fs::path(options.outDir) / fs::path(input).filename().replace_extension(extension);
        if (!outputs.insert(output).second) {
            throw UsageError("more than one input would be written to " + output.string());
        }
        tasks.push_back({input, output.string()});
    }
    return tasks;
}

int RunTasks(const std::vector<Task>& tasks, const BatchOptions& options,
             const std::function<Worker(uint32_t numThreads)>& makeWorker) {
    if (!options.outDir.empty()) {
        fs::create_directories(options.outDir);
    }
    const bool single = tasks.size() == 1;
    const auto numThreads = static_cast<uint32_t>(options.threads >= 0 ? options.threads : single ? 0 : 1);
    const size_t wanted = options.jobs != 0 ? options.jobs : std::max(1U, std::thread::hardware_concurrency());
    const size_t jobs = std::min(wanted, tasks.size());

    std::atomic<size_t> next{0};
    std::atomic<size_t> done{0};
    std::atomic<bool> failed{false};
    const auto work = [&] {
        Worker worker;
        for (size_t i = next++; i < tasks.size(); i = next++) {
            const Task& task = tasks[i];
            std::string outcome = " -> " + task.output;
            try {
                if (!worker) {
                    worker = makeWorker(numThreads);
                }
                worker(task);
            } catch (const std::exception& error) {
                failed = true;
                outcome = " failed";
                ReportProblem(task.input, error.what());
            }
            if (!single) {
                ReportProgress(++done, tasks.size(), task.input + outcome);
            }
        }
    };
    {
        std::vector<std::jthread> helpers;
        while (helpers.size() + 1 < jobs) {
            helpers.emplace_back(work);
        }
        work();
    }
    return failed ? 1 : 0;
}

}  // namespace plenar_tool
