#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "testing/fuzz_input.h"

namespace plenar_fuzz {

using namespace plenar_test;

// What a target states to be always so: ends the process otherwise, as a finding.
inline void Require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "not so: %s\n", what);
        std::abort();
    }
}

inline void RequireNone(const std::string& failure) {
    Require(failure.empty(), failure.c_str());
}

}  // namespace plenar_fuzz
