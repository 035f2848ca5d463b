// Stands in for operator new and delete of the program: counts blocks, and fails where a test wants that. The
// sanitizers' own versions stand behind these and still watch every block.
#pragma once

#include <cstddef>

#include "testing/fault_site.h"

namespace plenar_test {

extern FaultSite allocations;

// What was allocated since this was made, on whatever thread; one at a time. Without one nothing is counted, and
// allocations cost what they always do.
class AllocationWatch {
public:
    AllocationWatch();
    ~AllocationWatch();
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    // Less those that were released.
    ptrdiff_t Blocks() const;
    // At one time.
    size_t MostBytes() const;
    size_t LargestBlock() const;
};

}  // namespace plenar_test
