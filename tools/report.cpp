#include "report.h"

#include <cstdio>

namespace plenar_tool {

namespace {

// Messages of other libraries may hold line breaks.
void PrintLine(std::string line) {
    while (!line.empty() && line.back() == '\n') {
        line.pop_back();
    }
    for (char& c : line) {
        c = c == '\n' ? ' ' : c;
    }
    line += '\n';
    std::fputs(line.c_str(), stderr);
}

}  // namespace

void ReportProblem(const std::string& file, const std::string& text) {
    PrintLine("plenar: " + file + ": " + text);
}

void ReportWarning(const std::string& file, const std::string& text) {
    ReportProblem(file, "warning: " + text);
}

void ReportProgress(size_t done, size_t total, const std::string& text) {
    PrintLine("[" + std::to_string(done) + "/" + std::to_string(total) + "] " + text);
}

}  // namespace plenar_tool
