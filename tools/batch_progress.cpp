#include "batch_progress.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>

#include "report.h"

namespace plenar_tool {

namespace {

constexpr std::chrono::milliseconds kShowInterval{100};
constexpr long long kSecondsPerMinute = 60;

std::string Rate(double framesPerSecond) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.1f frames/s", framesPerSecond);
    return text;
}

// "1:05", minutes and seconds.
std::string Duration(double seconds) {
    const auto whole = std::llround(seconds);
    const std::string rest = std::to_string(whole % kSecondsPerMinute);
    return std::to_string(whole / kSecondsPerMinute) + (rest.size() == 1 ? ":0" : ":") + rest;
}

}  // namespace

BatchProgress::BatchProgress(const std::vector<Task>& tasks, bool quiet)
    : tasks_(tasks),
      quiet_(quiet || tasks.size() == 1),
      terminal_(isatty(STDERR_FILENO) == 1),
      start_(Clock::now()),
      outcomes_(tasks.size(), Outcome::NotDone) {}

BatchProgress::~BatchProgress() {
    if (terminal_ && !quiet_) {
        ShowStatus("");
    }
}

void BatchProgress::Finish(size_t index, const TaskResult& result) {
    if (quiet_) {
        return;
    }
    const std::lock_guard lock(mutex_);
    outcomes_[index] = result.outcome;
    ++finished_;
    failed_ += result.outcome == Outcome::Failed ? 1 : 0;
    kept_ += result.outcome == Outcome::Kept ? 1 : 0;
    if (terminal_) {
        ShowRate();
    } else {
        PrintLines();
    }
}

void BatchProgress::ShowRate() {
    const auto now = Clock::now();
    if (now - lastShown_ < kShowInterval && finished_ < tasks_.size()) {
        return;
    }
    lastShown_ = now;
    std::string line = "[" + std::to_string(finished_) + "/" + std::to_string(tasks_.size()) + "]";
    const double seconds = std::chrono::duration<double>(now - start_).count();
    if (const auto worked = static_cast<double>(finished_ - kept_); worked > 0 && seconds > 0) {
        const double rate = worked / seconds;
        line += " " + Rate(rate) + ", " + Duration(static_cast<double>(tasks_.size() - finished_) / rate) + " left";
    }
    if (failed_ != 0) {
        line += ", " + std::to_string(failed_) + " failed";
    }
    ShowStatus(line);
}

// A frame's line waits until those of all frames before it are out.
void BatchProgress::PrintLines() {
    for (; printed_ < tasks_.size() && outcomes_[printed_] != Outcome::NotDone; ++printed_) {
        const Task& task = tasks_[printed_];
        const Outcome outcome = outcomes_[printed_];
        ReportLine("[" + std::to_string(printed_ + 1) + "/" + std::to_string(tasks_.size()) + "] " + task.input +
                   (outcome == Outcome::Failed ? " failed"
                    : outcome == Outcome::Kept ? " -> " + task.output + " kept"
                                               : " -> " + task.output));
    }
}

}  // namespace plenar_tool
