// What the program says on stderr: one line each, safe from several threads.
#pragma once

#include <string>

namespace plenar_tool {

// "plenar: FILE: what is wrong"
void ReportProblem(const std::string& file, const std::string& text);
void ReportWarning(const std::string& file, const std::string& text);
void ReportProgress(size_t done, size_t total, const std::string& text);

}  // namespace plenar_tool
