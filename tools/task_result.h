// What became of the tasks of a batch.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace plenar_tool {

// Kept: a complete output was there already.
enum class Outcome { NotDone, Done, Kept, Failed };

inline constexpr std::array<std::string_view, 4> kOutcomeNames{"not done", "done", "kept", "failed"};

struct TaskResult {
    Outcome outcome = Outcome::NotDone;
    std::string error;
    std::vector<std::string> warnings;
    double seconds = 0;
};

inline size_t CountOutcome(const std::vector<TaskResult>& results, Outcome outcome) {
    return static_cast<size_t>(std::count_if(results.begin(), results.end(),
                                             [&](const TaskResult& result) { return result.outcome == outcome; }));
}

}  // namespace plenar_tool
