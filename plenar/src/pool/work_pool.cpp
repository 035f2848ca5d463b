#include "pool/work_pool.h"

#include <chrono>

namespace plenar {

namespace {

// How long a thread that waits goes on looking before it sleeps. A frame of several planes, or frames back to back,
// find the workers awake; a host that pauses for longer gets its processors back.
constexpr std::chrono::microseconds lookOutTime{50};

// Waits for the condition for that while, leaving the processor to whoever else can use it.
template <class Condition>
void LookOutFor(const Condition& condition) {
    const auto end = std::chrono::steady_clock::now() + lookOutTime;
    while (!condition() && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
}

}  // namespace

// The delegated constructor makes the pool complete before the first thread starts, so that a thread that fails to
// start brings the destructor, which stops and joins the others.
WorkPool::WorkPool(uint32_t workerCount) : WorkPool() {
    queues.resize(workerCount);
    workers.reserve(workerCount);
    const uint32_t processors = std::thread::hardware_concurrency();
    workersLookOut = workerCount <= processors;
    // The owner needs a processor to itself, or it would take a worker's.
    ownerLooksOut = workerCount < processors;
    for (Queue& queue : queues) {
        workers.emplace_back([this, &queue] { Work(queue); });
    }
}

WorkPool::~WorkPool() {
    {
        const std::lock_guard lock(mutex);
        stop = true;
    }
    wakeup.notify_all();
    for (std::thread& worker : workers) {
        worker.join();
    }
}

void WorkPool::DropBatch() {
    for (Queue& queue : queues) {
        queue.clear();
    }
    nextQueue = 0;
    pending = 0;
}

void WorkPool::Wait() {
    if (pending == 0) {
        return;
    }
    {
        const std::lock_guard lock(mutex);
        errors.clear();
        nextQueue = 0;
        running = true;
        ++batches;
    }
    wakeup.notify_all();
    AwaitFinish();
    const std::lock_guard lock(mutex);
    running = false;
    if (!errors.empty()) {
        std::rethrow_exception(errors.front());
    }
}

void WorkPool::AwaitFinish() {
    const auto done = [this] { return pending == 0; };
    if (ownerLooksOut) {
        LookOutFor(done);
    }
    if (!done()) {
        std::unique_lock lock(mutex);
        finished.wait(lock, done);
    }
}

void WorkPool::Work(Queue& queue) {
    uint32_t lastBatch = 0;
    while (AwaitJobs(queue, lastBatch)) {
        const size_t taken = queue.size();
        RunJobs(queue);
        FinishJobs(taken);
    }
}

// Returns false when the pool is being destroyed.
bool WorkPool::AwaitJobs(const Queue& queue, uint32_t& lastBatch) {
    if (workersLookOut) {
        LookOutFor([&] { return batches != lastBatch || stop; });
    }
    std::unique_lock lock(mutex);
    wakeup.wait(lock, [&] { return stop || (running && !queue.empty()); });
    lastBatch = batches;
    return !stop;
}

void WorkPool::RunJobs(Queue& queue) {
    for (Job& job : queue) {
        try {
            job();
        } catch (const std::exception&) {
            const std::lock_guard lock(mutex);
            errors.push_back(std::current_exception());
        }
    }
    queue.clear();
}

void WorkPool::FinishJobs(size_t count) {
    if (pending.fetch_sub(count) == count) {
        // Taking the lock makes sure that the owner has either seen the count at 0 or sleeps by now.
        { const std::lock_guard lock(mutex); }
        finished.notify_one();
    }
}

uint32_t WorkerCountFor(uint32_t numThreads) {
    const uint32_t count = numThreads != 0 ? numThreads : std::thread::hardware_concurrency();
    return count == 1 ? 0 : count;
}

}  // namespace plenar
