// What the program says on stderr: one line each, safe from several threads.
#pragma once

#include <string>
#include <vector>

namespace plenar_tool {

// "plenar: FILE: what is wrong"
void ReportProblem(const std::string& file, const std::string& text);
void ReportWarning(const std::string& file, const std::string& text);

// The texts of this thread's warnings since the last call.
std::vector<std::string> TakeWarnings();

void ReportLine(const std::string& text);

// A line at the foot of a terminal, which the next one replaces; an empty one removes it.
void ShowStatus(const std::string& text);

}  // namespace plenar_tool
