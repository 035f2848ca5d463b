// General lossless coders, for the planes that the library codes as runs.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "measurement.h"

namespace plenar_bench {

struct CoderPeer {
    std::string name;
    std::function<Work(const std::vector<uint8_t>& plain)> encode;
    std::function<Work(const std::vector<uint8_t>& plain)> decode;
};

// Those that were found when this was built. Their works take and give the whole plane at once; `plain` must outlive
// them.
std::vector<CoderPeer> CoderPeers();

}  // namespace plenar_bench
