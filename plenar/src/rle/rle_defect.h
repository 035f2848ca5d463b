#pragma once

#include <cstdint>

namespace plenar {

// What can be wrong with a coded plane.
enum class RleDefect : uint8_t {
    kNone,
    kStreamPastEnd,
    kRunPastBand,
    kEmptyRuns,
    kGroupPastList,
    kBandStartPastEnd,
    kRowSum,
};

// Throws out_of_range with the defect's message; returns for kNone.
void RleThrowDefect(RleDefect defect);

}  // namespace plenar
