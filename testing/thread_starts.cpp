#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>

#include "testing/fault_site.h"

namespace plenar_test {

FaultSite threadStarts;

}  // namespace plenar_test

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
