#pragma once

#include <pthread.h>

#include <optional>

namespace plenar {

// A thread that keeps to itself in the host's process: no signal of the host's is handled on it, it bears a name of its
// own, and its stack is small.
class WorkerThread {
public:
    using Body = void* (*)(void*);

    // Runs body(argument). Throws std::system_error if no thread can be started.
    void Start(Body body, void* argument);

    // Returns when the body has; at once, if the thread was never started.
    void Join();

private:
    std::optional<pthread_t> thread_;
};

}  // namespace plenar
