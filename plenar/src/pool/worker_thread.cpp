#include "pool/worker_thread.h"

#include <link.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): the signal masks of POSIX

#include <cstddef>
#include <system_error>

namespace plenar {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define PLENAR_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define PLENAR_SANITIZED 1
#endif
#endif

// Jobs run in about 32 KiB; sanitizers put red zones around all that stands there.
#if defined(PLENAR_SANITIZED)
constexpr size_t kStackBytes = size_t{2} << 20;
#else
constexpr size_t kStackBytes = size_t{256} << 10;
#endif

// The longest name that Linux takes has 15 letters.
constexpr char kName[] = "plenar-worker";

// Signals that tell of what the thread itself has done, or that a profiler counts every thread's time by.
constexpr int kOwnSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS, SIGPROF};

void Require(int error, const char* what) {
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), what);
    }
}

// While it lives, threads that the calling thread starts begin with all other signals blocked: what the host hasn't
// blocked yet might otherwise be handled on a worker, and what it waits for later be lost to one.
class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t blocked;
        sigfillset(&blocked);
        for (const int signal : kOwnSignals) {
            sigdelset(&blocked, signal);
        }
        pthread_sigmask(SIG_SETMASK, &blocked, &before_);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t before_;
};

// What the thread-local objects of the program and its libraries take at most; they are cut off the stacks of threads.
size_t ThreadLocalBytes() {
    size_t bytes = 0;
    dl_iterate_phdr(
        [](dl_phdr_info* module, size_t /*size*/, void* sum) {
            for (size_t i = 0; i < module->dlpi_phnum; ++i) {
                const auto& segment = module->dlpi_phdr[i];
                *static_cast<size_t*>(sum) += segment.p_type == PT_TLS ? segment.p_memsz + segment.p_align : 0;
            }
            return 0;
        },
        &bytes);
    return bytes;
}

class Attributes {
public:
    Attributes() {
        Require(pthread_attr_init(&attributes_), "pthread_attr_init");
        pthread_attr_setstacksize(&attributes_, kStackBytes + ThreadLocalBytes());
    }
    ~Attributes() { pthread_attr_destroy(&attributes_); }

    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const pthread_attr_t* Get() const { return &attributes_; }

private:
    pthread_attr_t attributes_;
};

}  // namespace

void WorkerThread::Start(Body body, void* argument) {
    const Attributes attributes;
    const BlockedSignals blocked;
    pthread_t thread;
    Require(pthread_create(&thread, attributes.Get(), body, argument), "a worker thread can't be started");
    thread_ = thread;
    pthread_setname_np(thread, kName);
}

void WorkerThread::Join() {
    if (thread_) {
        pthread_join(*thread_, nullptr);
    }
}

}  // namespace plenar
