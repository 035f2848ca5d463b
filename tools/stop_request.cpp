#include "stop_request.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <initializer_list>

namespace plenar_tool {

namespace {

std::atomic<int> firstSignal{0};

static_assert(std::atomic<int>::is_always_lock_free, "a signal handler can take no lock");

int Event() {
    static const int kDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return kDescriptor;
}

// The event is made before the first signal can come, so that the handler only reads it.
void Remember(int signalNumber) {
    const int savedErrno = errno;
    int none = 0;
    firstSignal.compare_exchange_strong(none, signalNumber);
    const uint64_t one = 1;
    // Only an event that stands already can make this fail.
    [[maybe_unused]] const ssize_t written = write(Event(), &one, sizeof(one));
    errno = savedErrno;
}

}  // namespace

void StopOnSignals() {
    Event();
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        sigaction(signalNumber, nullptr, &action);
        if (action.sa_handler == SIG_IGN) {
            continue;
        }
        action = {};
        action.sa_handler = Remember;
        action.sa_flags = SA_RESTART;
        sigaction(signalNumber, &action, nullptr);
    }
}

bool StopRequested() {
    return StopSignal() != 0;
}

int StopSignal() {
    return firstSignal.load();
}

int StopDescriptor() {
    return Event();
}

}  // namespace plenar_tool
