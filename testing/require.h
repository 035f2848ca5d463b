#pragma once

#include <stdexcept>
#include <string>

namespace plenar_test {

// What is always so. Otherwise a test fails, and a fuzz target has a finding.
inline void Require(bool holds, const std::string& what) {
    if (!holds) {
        throw std::logic_error("not so: " + what);
    }
}

}  // namespace plenar_test
