#include "pool/work_pool.h"

#include <algorithm>
#include <chrono>

namespace plenar {

namespace {

// How long a thread that waits spins before it sleeps. A frame of several planes, or frames back to back, find the
// workers awake; a host that pauses for longer gets its processors back.
constexpr std::chrono::microseconds kSpinTime{50};

// Waits for the condition for that time, yielding the processor to whoever else can use it.
template <class Condition>
void SpinFor(const Condition& condition) {
    const auto end = std::chrono::steady_clock::now() + kSpinTime;
    while (!condition() && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
}

}  // namespace

// The delegated constructor makes the pool complete before the first thread starts, so that a thread that fails to
// start brings the destructor, which stops and joins the others.
WorkPool::WorkPool(uint32_t workerCount) : WorkPool() {
    workers_.reserve(workerCount);
    const uint32_t processors = std::thread::hardware_concurrency();
    workersSpin_ = workerCount <= processors;
    // The owner needs a processor to itself, or it would take a worker's.
    ownerSpins_ = workerCount < processors;
    // Queues come one by one, so that a count beyond what the machine can run costs no more memory than the threads
    // that start.
    for (uint32_t i = 0; i < workerCount; ++i) {
        Queue& queue = queues_.emplace_back();
        workers_.emplace_back([this, &queue] { Work(queue); });
    }
}

WorkPool::~WorkPool() {
    for (size_t i = 0; i < workers_.size(); ++i) {
        queues_[i].state = Stopped;
        queues_[i].state.notify_one();
        workers_[i].join();
    }
}

void WorkPool::DropBatch() {
    for (Queue& queue : queues_) {
        queue.jobs.clear();
    }
    nextQueue_ = 0;
    enqueued_ = 0;
}

void WorkPool::Wait() {
    const size_t filled = std::min(enqueued_, queues_.size());
    nextQueue_ = 0;
    enqueued_ = 0;
    errors_.clear();
    pending_ = static_cast<uint32_t>(filled);
    for (size_t i = 0; i < filled; ++i) {
        queues_[i].state = Ready;
        if (i != 0) {
            queues_[i].state.notify_one();
        }
    }
    for (size_t i = 0; i < filled; ++i) {
        RunIfReady(queues_[i]);
    }
    AwaitFinish();
    if (!errors_.empty()) {
        std::rethrow_exception(errors_.front());
    }
}

void WorkPool::AwaitFinish() {
    if (ownerSpins_) {
        SpinFor([this] { return pending_ == 0; });
    }
    for (uint32_t left = pending_; left != 0; left = pending_) {
        pending_.wait(left);
    }
}

void WorkPool::Work(Queue& queue) {
    const auto idle = [&queue] { return queue.state == Idle || queue.state == Taken; };
    for (;;) {
        if (workersSpin_) {
            SpinFor([&] { return !idle(); });
        }
        for (uint32_t state = queue.state; idle(); state = queue.state) {
            queue.state.wait(state);
        }
        if (!RunIfReady(queue) && queue.state == Stopped) {
            return;
        }
    }
}

// Takes the queue, if it is released and nobody else has taken it, and runs its jobs.
bool WorkPool::RunIfReady(Queue& queue) {
    uint32_t expected = Ready;
    if (!queue.state.compare_exchange_strong(expected, Taken)) {
        return false;
    }
    RunJobs(queue);
    queue.state = Idle;
    if (--pending_ == 0) {
        pending_.notify_one();
    }
    return true;
}

void WorkPool::RunJobs(Queue& queue) {
    for (Job& job : queue.jobs) {
        try {
            job();
        } catch (const std::exception&) {
            const std::lock_guard lock(mutex_);
            errors_.push_back(std::current_exception());
        }
    }
    queue.jobs.clear();
}

uint32_t WorkerCountFor(uint32_t numThreads) {
    const uint32_t count = numThreads != 0 ? numThreads : std::thread::hardware_concurrency();
    return count == 1 ? 0 : count;
}

}  // namespace plenar
