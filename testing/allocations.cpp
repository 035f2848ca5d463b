#include "testing/allocations.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace plenar_test {

FaultSite allocations;

namespace {

void Raise(std::atomic<ptrdiff_t>& most, ptrdiff_t value) {
    for (ptrdiff_t seen = most; seen < value && !most.compare_exchange_weak(seen, value);) {
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
    AllocationWatch::Count(block, 1, size);
    return block;
}

void Release(void* block) {
    if (block != nullptr) {
        AllocationWatch::Count(block, -1, 0);
        std::free(block);
    }
}

}  // namespace

AllocationWatch::AllocationWatch() {
    blocks_ = bytes_ = mostBytes_ = largestBlock_ = 0;
    isCounting_ = true;
}

AllocationWatch::~AllocationWatch() {
    isCounting_ = false;
}

void AllocationWatch::Count(void* block, ptrdiff_t change, size_t asked) {
    if (isCounting_.load(std::memory_order_relaxed)) {
        blocks_ += change;
        Raise(mostBytes_, bytes_ += change * static_cast<ptrdiff_t>(malloc_usable_size(block)));
        Raise(largestBlock_, static_cast<ptrdiff_t>(asked));
    }
}

}  // namespace plenar_test

using plenar_test::Allocate;
using plenar_test::Release;

void* operator new(size_t size) {
    return Allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new[](size_t size) {
    return Allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(size_t size, std::align_val_t alignment) {
    return Allocate(size, static_cast<size_t>(alignment));
}
void operator delete(void* block) noexcept {
    Release(block);
}
void operator delete[](void* block) noexcept {
    Release(block);
}
void operator delete(void* block, size_t) noexcept {
    Release(block);
}
void operator delete[](void* block, size_t) noexcept {
    Release(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    Release(block);
}
void operator delete(void* block, size_t, std::align_val_t) noexcept {
    Release(block);
}
