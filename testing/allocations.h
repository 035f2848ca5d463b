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
    ptrdiff_t Blocks() const { return blocks_; }
    // At one time.
    size_t MostBytes() const { return static_cast<size_t>(mostBytes_.load()); }
    size_t LargestBlock() const { return static_cast<size_t>(largestBlock_.load()); }

    // A block that comes or goes, and the size that was asked for.
    static void Count(void* block, ptrdiff_t change, size_t asked);

private:
    inline static std::atomic<bool> isCounting_ = false;
    inline static std::atomic<ptrdiff_t> blocks_ = 0;
    inline static std::atomic<ptrdiff_t> bytes_ = 0;
    inline static std::atomic<ptrdiff_t> mostBytes_ = 0;
    inline static std::atomic<ptrdiff_t> largestBlock_ = 0;
};

}  // namespace plenar_test
