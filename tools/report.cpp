#include "report.h"

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <utility>

namespace plenar_tool {

namespace {

constexpr const char* kClearLine = "\r\x1b[K";

std::mutex lineMutex;
std::string status;
thread_local std::vector<std::string> warnings;

}  // namespace

void ReportLine(const std::string& text) {
    std::string line = text;
    // Messages of other libraries may hold line breaks.
    while (!line.empty() && line.back() == '\n') {
        line.pop_back();
    }
    std::replace(line.begin(), line.end(), '\n', ' ');
    line += '\n';
    const std::lock_guard lock(lineMutex);
    if (!status.empty()) {
        line = kClearLine + line + status;
    }
    std::fputs(line.c_str(), stderr);
}

void ReportProblem(const std::string& file, const std::string& text) {
    ReportLine("plenar: " + file + ": " + text);
}

void ReportWarning(const std::string& file, const std::string& text) {
    warnings.push_back(text);
    ReportProblem(file, "warning: " + text);
}

std::vector<std::string> TakeWarnings() {
    return std::exchange(warnings, {});
}

void ShowStatus(const std::string& text) {
    const std::lock_guard lock(lineMutex);
    status = text;
    std::fputs((kClearLine + status).c_str(), stderr);
}

}  // namespace plenar_tool
