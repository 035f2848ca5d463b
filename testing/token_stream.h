// Streams of coded planes, token by token as some input decides. They are sound, and their samples follow from the
// tokens.
#pragma once

#include "testing/fuzz_input.h"

namespace plenar_test {

// The stream of so many samples of 8 or 16 bits, which are appended to `plain`.
Bytes TakeStream(FuzzInput& input, uint32_t depth, uint64_t samples, Bytes& plain);

}  // namespace plenar_test
