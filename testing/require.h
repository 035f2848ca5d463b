#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace plenar_test {

// What is always so. Otherwise a test fails, and a fuzz target has a finding.
inline void Require(bool holds, std::string_view what) {
    if (!holds) {
        throw std::logic_error("not so: " + std::string(what));
    }
}

}  // namespace plenar_test
