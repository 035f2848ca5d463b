#include "batch_summary.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "phase_timer.h"
#include "report.h"
#include "stream_io.h"

namespace plenar_tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr size_t kMaxNames = 20;  // in one line
constexpr std::string_view kReportHead = "{\n  \"report\": \"plenar\"";

std::string Count(size_t count) {
    return std::to_string(count) + (count == 1 ? " frame" : " frames");
}

std::string Seconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.2f s", seconds);
    return text;
}

std::string Names(const Batch& batch, Outcome outcome) {
    std::string names;
    size_t count = 0;
    for (size_t i = 0; i < batch.tasks.size(); ++i) {
        if (batch.results[i].outcome == outcome && ++count <= kMaxNames) {
            names += (names.empty() ? "" : ", ") + batch.tasks[i].input;
        }
    }
    return count <= kMaxNames ? names : names + " and " + std::to_string(count - kMaxNames) + " more";
}

void PrintOutcome(const Batch& batch) {
    const size_t failed = CountOutcome(batch.results, Outcome::Failed);
    const size_t kept = CountOutcome(batch.results, Outcome::Kept);
    const size_t done = CountOutcome(batch.results, Outcome::Done);
    std::string line =
        "plenar: " + Count(done) + " of " + std::to_string(batch.tasks.size()) + " done in " + Seconds(batch.seconds);
    if (kept != 0) {
        line += ", " + std::to_string(kept) + " kept";
    }
    ReportLine(line + (failed == 0 ? "" : ", " + std::to_string(failed) + " failed: " + Names(batch, Outcome::Failed)));
}

void PrintTimes(const Batch& batch) {
    std::string line = "plenar: time of " + std::to_string(batch.jobs) + (batch.jobs == 1 ? " job:" : " jobs:");
    double rest = 0;
    for (const TaskResult& result : batch.results) {
        rest += result.seconds;
    }
    for (size_t i = 0; i < kPhaseNames.size(); ++i) {
        const double seconds = PhaseSeconds(static_cast<Phase>(i));
        rest -= seconds;
        line += " " + std::string(kPhaseNames[i]) + " " + Seconds(seconds) + ",";
    }
    ReportLine(line + " other " + Seconds(std::max(rest, 0.0)) + "; " + Seconds(batch.seconds) + " by the clock");
}

Json TaskJson(const Task& task, const TaskResult& result) {
    Json json = {{"input", task.input},
                 {"output", task.output},
                 {"status", kOutcomeNames[static_cast<size_t>(result.outcome)]},
                 {"seconds", result.seconds}};
    if (!result.error.empty()) {
        json["error"] = result.error;
    }
    if (!result.warnings.empty()) {
        json["warnings"] = result.warnings;
    }
    return json;
}

}  // namespace

void PrintSummary(const Batch& batch, const BatchOptions& options) {
    const bool failed = CountOutcome(batch.results, Outcome::Failed) != 0;
    if (batch.stopSignal != 0) {
        ReportLine("plenar: stopped by the signal " + std::string(sigabbrev_np(batch.stopSignal)) + ": " +
                   Count(CountOutcome(batch.results, Outcome::NotDone)) + " not done");
    }
    if (batch.tasks.size() > 1 && (failed || batch.stopSignal != 0 || !options.quiet)) {
        PrintOutcome(batch);
    }
    if (options.timing) {
        PrintTimes(batch);
    }
}

void CheckReportTarget(const std::string& file) {
    if (file.empty() || IsStream(file) || !std::filesystem::exists(file)) {
        return;
    }
    std::array<char, kReportHead.size()> head{};
    std::ifstream(file, std::ios::binary).read(head.data(), head.size());
    if (std::string_view(head.data(), head.size()) != kReportHead) {
        throw UsageError("--report " + file + ": this file exists and is not a report");
    }
}

void WriteReport(const Batch& batch, const std::string& file) {
    Json json = {{"report", "plenar"}, {"seconds", batch.seconds}, {"jobs", batch.jobs}};
    for (size_t i = 0; i < kOutcomeNames.size(); ++i) {
        json["counts"][std::string(kOutcomeNames[i])] = CountOutcome(batch.results, static_cast<Outcome>(i));
    }
    for (size_t i = 0; i < kPhaseNames.size(); ++i) {
        json["times"][std::string(kPhaseNames[i])] = PhaseSeconds(static_cast<Phase>(i));
    }
    if (batch.stopSignal != 0) {
        json["signal"] = sigabbrev_np(batch.stopSignal);
    }
    json["frames"] = Json::array();
    for (size_t i = 0; i < batch.tasks.size(); ++i) {
        json["frames"].push_back(TaskJson(batch.tasks[i], batch.results[i]));
    }
    // File names need not be UTF-8.
    errno = 0;
    std::ofstream stream(file, std::ios::binary);
    stream << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    stream.close();
    if (!stream) {
        const int code = errno;
        std::error_code ignored;
        if (std::filesystem::is_regular_file(file, ignored)) {
            std::filesystem::remove(file, ignored);
        }
        throw std::runtime_error("can't write the report: " + std::generic_category().message(code));
    }
}

}  // namespace plenar_tool
