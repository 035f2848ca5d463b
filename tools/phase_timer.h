// Where the time of a batch goes.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <string_view>

namespace plenar_tool {

enum class Phase { Read, Code, Write };

inline constexpr std::array<std::string_view, 3> kPhaseNames{"reading", "coding", "writing"};

// Counts the time from here to the end of the scope as time of this phase. A timer within the scope of another counts
// nothing, so that no time counts twice.
class PhaseTimer {
public:
    explicit PhaseTimer(Phase phase);
    ~PhaseTimer();
    PhaseTimer(const PhaseTimer&) = delete;
    PhaseTimer& operator=(const PhaseTimer&) = delete;

private:
    Phase phase_;
    std::chrono::steady_clock::time_point start_;
};

// The sum over all threads so far.
double PhaseSeconds(Phase phase);

}  // namespace plenar_tool
