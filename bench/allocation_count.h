#pragma once

#include <cstddef>
#include <functional>

namespace plenar_bench {

// The most bytes that were allocated with operator new at one time while `work` ran, on whatever thread; what stood
// before doesn't count.
size_t MostAllocatedDuring(const std::function<void()>& work);

}  // namespace plenar_bench
