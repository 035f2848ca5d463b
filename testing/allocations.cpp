#include "testing/allocations.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace plenar_test {

FaultSite allocations;

namespace {

std::atomic<bool> counting = false;
std::atomic<ptrdiff_t> blocks = 0;
std::atomic<ptrdiff_t> bytes = 0;
std::atomic<ptrdiff_t> mostBytes = 0;
std::atomic<ptrdiff_t> largestBlock = 0;

void Raise(std::atomic<ptrdiff_t>& most, ptrdiff_t value) {
    for (ptrdiff_t seen = most; seen < value && !most.compare_exchange_weak(seen, value);) {
    }
}

void Count(void* block, ptrdiff_t change, size_t asked = 0) {
    if (counting.load(std::memory_order_relaxed)) {
        blocks += change;
        Raise(mostBytes, bytes += change * static_cast<ptrdiff_t>(malloc_usable_size(block)));
        Raise(largestBlock, static_cast<ptrdiff_t>(asked));
    }
}

void* Allocate(size_t size, size_t alignment) {
    const bool isUsual = alignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__;
    void* block = allocations.Strikes() ? nullptr
                  : isUsual             ? std::malloc(std::max<size_t>(size, 1))
                                        : std::aligned_alloc(alignment, (size + alignment - 1) & ~(alignment - 1));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    Count(block, 1, size);
    return block;
}

void Release(void* block) {
    if (block != nullptr) {
        Count(block, -1);
        std::free(block);
    }
}

}  // namespace

AllocationWatch::AllocationWatch() {
    blocks = bytes = mostBytes = largestBlock = 0;
    counting = true;
}
AllocationWatch::~AllocationWatch() {
    counting = false;
}
ptrdiff_t AllocationWatch::Blocks() const {
    return blocks;
}
size_t AllocationWatch::MostBytes() const {
    return static_cast<size_t>(mostBytes.load());
}
size_t AllocationWatch::LargestBlock() const {
    return static_cast<size_t>(largestBlock.load());
}

}  // namespace plenar_test

using plenar_test::Allocate;
using plenar_test::Release;

// The forms for arrays call these.
void* operator new(size_t size) {
    return Allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(size_t size, std::align_val_t alignment) {
    return Allocate(size, static_cast<size_t>(alignment));
}
void operator delete(void* block) noexcept {
    Release(block);
}
void operator delete(void* block, size_t) noexcept {
    Release(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    Release(block);
}
void operator delete(void* block, size_t, std::align_val_t) noexcept {
    Release(block);
}
