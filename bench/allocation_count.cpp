// Stands in for the allocation functions of the whole program. By itself, as compilers that see both sides of a pair
// take them for unequal.
#include "allocation_count.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> counting = false;
std::atomic<ptrdiff_t> allocated = 0;
std::atomic<ptrdiff_t> most = 0;

void Count(ptrdiff_t change) {
    const ptrdiff_t sum = allocated += change;
    for (ptrdiff_t seen = most; seen < sum && !most.compare_exchange_weak(seen, sum);) {
    }
}

ptrdiff_t SizeOf(void* block) {
    return static_cast<ptrdiff_t>(malloc_usable_size(block));
}

}  // namespace

void* operator new(size_t size) {
    void* block = std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    if (counting.load(std::memory_order_relaxed)) {
        Count(SizeOf(block));
    }
    return block;
}

void operator delete(void* block) noexcept {
    if (block != nullptr && counting.load(std::memory_order_relaxed)) {
        Count(-SizeOf(block));
    }
    std::free(block);
}

void operator delete(void* block, size_t /*size*/) noexcept {
    operator delete(block);
}

namespace plenar_bench {

size_t MostAllocatedDuring(const std::function<void()>& work) {
    allocated = 0;
    most = 0;
    counting = true;
    work();
    counting = false;
    return static_cast<size_t>(most.load());
}

}  // namespace plenar_bench
