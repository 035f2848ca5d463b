#include "pool/work_pool.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace plenar {

namespace {

// How long a thread that waits spins before it sleeps. A frame of several planes, or frames back to back, find the
// workers awake; a host that pauses for longer gets its processors back.
constexpr std::chrono::microseconds kSpinTime{50};

// Work on no more bytes than these wakes no worker.
std::atomic<uint64_t> bytesOfOneThread{uint64_t{64} << 10};

// Waits for the condition for that time, yielding the processor to whoever else can use it.
template <class Condition>
void SpinFor(const Condition& condition) {
    const auto end = std::chrono::steady_clock::now() + kSpinTime;
    while (!condition() && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
}

}  // namespace

WorkPool::WorkPool() : process_(getpid()) {}

// The delegated constructor makes the pool complete before the first thread starts, so that a thread that fails to
// start brings the destructor, which stops and joins the others.
WorkPool::WorkPool(uint32_t workerCount) : WorkPool() {
    const uint32_t processors = std::thread::hardware_concurrency();
    workersSpin_ = workerCount <= processors;
    // The owner needs a processor to itself, or it would take a worker's.
    ownerSpins_ = workerCount < processors;
    // Workers come one by one, so that a count beyond what the machine can run costs no more memory than the threads
    // that start.
    for (uint32_t i = 0; i < workerCount; ++i) {
        Worker& worker = workers_.emplace_back(*this);
        worker.thread.Start(ThreadBody, &worker);
    }
}

WorkPool::~WorkPool() {
    if (IsInherited()) {
        return;
    }
    for (Worker& worker : workers_) {
        worker.state = Stopped;
        worker.state.notify_one();
        worker.thread.Join();
    }
}

bool WorkPool::IsInherited() const {
    return process_ != getpid();
}

void WorkPool::DropBatch() {
    for (Worker& worker : workers_) {
        worker.jobs.clear();
    }
    nextQueue_ = 0;
    enqueued_ = 0;
    isInBatch_ = false;
}

void WorkPool::Wait() {
    const size_t filled = std::min(enqueued_, workers_.size());
    nextQueue_ = 0;
    enqueued_ = 0;
    errors_.clear();
    pending_ = static_cast<uint32_t>(filled);
    for (size_t i = 0; i < filled; ++i) {
        workers_[i].state = Ready;
        if (i != 0) {
            workers_[i].state.notify_one();
        }
    }
    for (size_t i = 0; i < filled; ++i) {
        RunIfReady(workers_[i]);
    }
    AwaitFinish();
    isInBatch_ = false;
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

void* WorkPool::ThreadBody(void* worker) noexcept {
    auto& self = *static_cast<Worker*>(worker);
    self.pool.Work(self);
    return nullptr;
}

void WorkPool::Work(Worker& worker) {
    const auto idle = [&worker] { return worker.state == Idle || worker.state == Taken; };
    for (;;) {
        if (workersSpin_) {
            SpinFor([&] { return !idle(); });
        }
        for (uint32_t state = worker.state; idle(); state = worker.state) {
            worker.state.wait(state);
        }
        if (!RunIfReady(worker) && worker.state == Stopped) {
            return;
        }
    }
}

// Takes the worker's queue, if it is released and nobody else has taken it, and runs its jobs.
bool WorkPool::RunIfReady(Worker& worker) {
    uint32_t expected = Ready;
    if (!worker.state.compare_exchange_strong(expected, Taken)) {
        return false;
    }
    RunJobs(worker);
    worker.state = Idle;
    if (--pending_ == 0) {
        pending_.notify_one();
    }
    return true;
}

void WorkPool::RunJobs(Worker& worker) {
    for (Job& job : worker.jobs) {
        try {
            job();
        } catch (const std::exception&) {
            const std::lock_guard lock(mutex_);
            errors_.push_back(std::current_exception());
        }
    }
    worker.jobs.clear();
}

uint32_t ThreadsFor(const WorkPool& pool, uint64_t bytes) {
    return bytes > bytesOfOneThread.load(std::memory_order_relaxed) ? std::max(pool.WorkerCount(), 1U) : 1;
}

void WakeWorkersFrom(uint64_t bytes) {
    bytesOfOneThread.store(bytes, std::memory_order_relaxed);
}

uint32_t WorkerCountFor(uint32_t numThreads) {
    const uint32_t count = numThreads != 0 ? numThreads : std::thread::hardware_concurrency();
    return count == 1 ? 0 : count;
}

}  // namespace plenar
