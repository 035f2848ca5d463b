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

void* Allocate(size_t size, size_t alignment) {
    void* block = nullptr;
    if (allocations.Strikes() || posix_memalign(&block, alignment, std::max<size_t>(size, 1)) != 0) {
        throw std::bad_alloc();
    }
    ++liveBlocks;
    largestBlock = std::max<size_t>(largestBlock, size);
    return block;
}

void Release(void* block) {
    liveBlocks -= block != nullptr ? 1 : 0;
    std::free(block);
}

}  // namespace
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

// Found ahead of the C library's by all libraries of the program. A sanitizer that is linked statically has its own
// under another name.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument) noexcept {
    static void* const kSanitizers = dlsym(RTLD_DEFAULT, "__interceptor_pthread_create");
    static void* const kNext = kSanitizers != nullptr ? kSanitizers : dlsym(RTLD_NEXT, "pthread_create");
    return plenar_test::threadStarts.Strikes()
               ? EAGAIN
               : reinterpret_cast<decltype(&pthread_create)>(kNext)(thread, attributes, start, argument);
}
