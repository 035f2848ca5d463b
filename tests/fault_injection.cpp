#include "fault_injection.h"

#include <dlfcn.h>
#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace plenar_test {

FaultSite allocations;
FaultSite threadStarts;
std::atomic<int64_t> liveBlocks{0};
std::atomic<size_t> largestBlock{0};

namespace {

void* allocate(size_t size, size_t alignment) {
    void* block = nullptr;
    if (allocations.strikes() || posix_memalign(&block, alignment, std::max<size_t>(size, 1)) != 0) {
        throw std::bad_alloc();
    }
    ++liveBlocks;
    largestBlock = std::max<size_t>(largestBlock, size);
    return block;
}

void release(void* block) {
    liveBlocks -= block != nullptr ? 1 : 0;
    std::free(block);
}

}  // namespace
}  // namespace plenar_test

using plenar_test::allocate;
using plenar_test::release;

void* operator new(size_t size) {
    return allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new[](size_t size) {
    return allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(size_t size, std::align_val_t alignment) {
    return allocate(size, static_cast<size_t>(alignment));
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete(void* block, size_t) noexcept {
    release(block);
}
void operator delete[](void* block, size_t) noexcept {
    release(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    release(block);
}
void operator delete(void* block, size_t, std::align_val_t) noexcept {
    release(block);
}

// Found ahead of the C library's by all libraries of the program. A sanitizer that is linked statically has its own
// under another name.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument) noexcept {
    static void* const sanitizers = dlsym(RTLD_DEFAULT, "__interceptor_pthread_create");
    static void* const next = sanitizers != nullptr ? sanitizers : dlsym(RTLD_NEXT, "pthread_create");
    return plenar_test::threadStarts.strikes()
               ? EAGAIN
               : reinterpret_cast<decltype(&pthread_create)>(next)(thread, attributes, start, argument);
}
