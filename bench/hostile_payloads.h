// Payloads made to cost as much as possible, and honest ones of the same size to hold them against.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "frame_work.h"

namespace plenar_bench {

struct HostilePayload {
    std::string name;
    Frame frame;  // what the decode asks for
    std::function<std::vector<uint8_t>()> make;
};

std::vector<HostilePayload> HostilePayloads();

// The payload of a picture of that arrangement, encoded by the library, of just as many bytes. A coded plane is noise
// for as many rows as fit and flat below; a rest is slack behind its last band. For sizes that no encode gets down to,
// a flat plane's own.
std::vector<uint8_t> HonestPayload(const Frame& frame, size_t size);

}  // namespace plenar_bench
