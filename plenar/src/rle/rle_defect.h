#pragma once

#include <cstdint>

namespace plenar {

// What can be wrong with a coded plane.
enum class RleDefect : uint8_t {
    None,
    StreamPastEnd,
    RunPastBand,
    EmptyRuns,
    GroupPastList,
    BandStartPastEnd,
    RowSum,
};

}  // namespace plenar
