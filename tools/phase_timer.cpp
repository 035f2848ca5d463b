#include "phase_timer.h"

#include <atomic>
#include <cstdint>

namespace plenar_tool {

namespace {

using Clock = std::chrono::steady_clock;

std::array<std::atomic<int64_t>, kPhaseNames.size()> nanoseconds{};
thread_local int depth = 0;

}  // namespace

PhaseTimer::PhaseTimer(Phase phase) : phase_(phase), start_(Clock::now()) {
    ++depth;
}

PhaseTimer::~PhaseTimer() {
    if (--depth == 0) {
        nanoseconds[static_cast<size_t>(phase_)] +=
            std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start_).count();
    }
}

double PhaseSeconds(Phase phase) {
    return std::chrono::duration<double>(std::chrono::nanoseconds(nanoseconds[static_cast<size_t>(phase)])).count();
}

}  // namespace plenar_tool
