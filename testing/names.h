// Orders and types by name.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace plenar_test {

inline constexpr uint32_t kOrderCount = 16;

std::string OrderName(uint32_t order);
std::string TypeName(uint32_t type);

// "RGBA_Uint16", which may stand in the name of a test.
std::string PairName(const std::pair<uint32_t, uint32_t>& orderAndType);

}  // namespace plenar_test
