#include "file_batch.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

#include "batch_progress.h"
#include "batch_summary.h"
#include "report.h"
#include "resume.h"
#include "stop_request.h"

namespace plenar_tool {

namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;
using MakeWorker = std::function<Worker(uint32_t numThreads)>;

constexpr int kSignalStatus = 128;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void MakeFolder(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        throw std::runtime_error("can't make the folder " + folder + ": " + error.message());
    }
}

// One thread's share of a batch.
class Job {
public:
    Job(const MakeWorker& makeWorker, uint32_t numThreads, bool resume)
        : makeWorker_(makeWorker), numThreads_(numThreads), resume_(resume) {}

    TaskResult Do(const Task& task) {
        const auto start = Clock::now();
        TaskResult result;
        result.outcome = Try(task, result.error);
        result.warnings = TakeWarnings();
        result.seconds = SecondsSince(start);
        return result;
    }

private:
    Outcome Try(const Task& task, std::string& errorText) try {
        if (resume_ && IsOutputComplete(task)) {
            return Outcome::Kept;
        }
        if (!worker_) {
            worker_ = makeWorker_(numThreads_);
        }
        worker_(task);
        return Outcome::Done;
    } catch (const Stopped&) {
        return Outcome::NotDone;
    } catch (const std::exception& error) {
        errorText = error.what();
        ReportProblem(task.input, errorText);
        return Outcome::Failed;
    }

    const MakeWorker& makeWorker_;
    uint32_t numThreads_;
    bool resume_;
    Worker worker_;
};

bool TryReport(const Batch& batch, const std::string& file) try {
    if (!file.empty()) {
        WriteReport(batch, file);
    }
    return true;
} catch (const std::exception& error) {
    ReportProblem(file, error.what());
    return false;
}

// Runs `work` on this thread and on as many others as it takes, or as the system grants.
void RunJobs(size_t jobs, const std::function<void()>& work) {
    std::vector<std::jthread> helpers;
    try {
        while (helpers.size() + 1 < jobs) {
            helpers.emplace_back(work);
        }
    } catch (const std::system_error& error) {
        ReportLine("plenar: only " + std::to_string(helpers.size() + 1) + " of " + std::to_string(jobs) +
                   " jobs could be started: " + error.what());
    }
    work();
}

}  // namespace

int RunTasks(const std::vector<Task>& tasks, const BatchOptions& options, const MakeWorker& makeWorker) {
    StopOnSignals();
    CheckReportTarget(options.report);
    if (const std::string folder = OutputFolder(options); !folder.empty()) {
        MakeFolder(folder);
    }
    const auto numThreads = static_cast<uint32_t>(options.threads >= 0 ? options.threads : tasks.size() == 1 ? 0 : 1);
    const size_t wanted = options.jobs != 0 ? options.jobs : std::max(1U, std::thread::hardware_concurrency());

    const auto start = Clock::now();
    Batch batch{tasks, std::vector<TaskResult>(tasks.size()), std::min(wanted, tasks.size())};
    {
        BatchProgress progress(tasks, options.quiet);
        std::atomic<size_t> next{0};
        RunJobs(batch.jobs, [&] {
            Job job(makeWorker, numThreads, options.resume);
            for (size_t i = next++; i < tasks.size() && !StopRequested(); i = next++) {
                batch.results[i] = job.Do(tasks[i]);
                progress.Finish(i, batch.results[i]);
            }
        });
    }
    batch.seconds = SecondsSince(start);
    batch.stopSignal = StopSignal();
    PrintSummary(batch, options);
    const bool reported = TryReport(batch, options.report);
    if (batch.stopSignal != 0) {
        return kSignalStatus + batch.stopSignal;
    }
    return reported && CountOutcome(batch.results, Outcome::Failed) == 0 ? 0 : 1;
}

}  // namespace plenar_tool
