// Kernels of other libraries that do the same as one of our conversions, or a part of it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "frame_work.h"
#include "measurement.h"

namespace plenar_bench {

struct Peer {
    std::string name;
    std::function<Work()> prepare;
};

// The peers that were found when this was built and have a like conversion; they work in the same memories. A peer that
// leaves alpha out moves fewer bytes, and its work says so.
std::vector<Peer> ConversionPeers(const Frame& frame, Direction direction);

}  // namespace plenar_bench
