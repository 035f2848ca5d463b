#pragma once

#include <exception>
#include <string>

namespace plenar_test {

// The message of the call's failure, or "" if there is none.
template <class Call>
std::string MessageOf(const Call& call) {
    try {
        call();
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "";
}

}  // namespace plenar_test
