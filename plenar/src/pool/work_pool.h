#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace plenar {

// The worker threads of one encoder or decoder. The owner's thread fills a batch with Enqueue and runs it with Wait;
// between batches the workers sleep, after a short while of looking out for the next one. Enqueue and Wait belong to
// one thread at a time.
class WorkPool {
public:
    using Job = std::function<void()>;

    // Starts `workerCount` threads; 0 is legal. Throws std::bad_alloc, std::length_error or std::system_error, with all
    // threads that had started joined again.
    explicit WorkPool(uint32_t workerCount);
    ~WorkPool();

    WorkPool(const WorkPool&) = delete;
    WorkPool& operator=(const WorkPool&) = delete;

    uint32_t WorkerCount() const { return static_cast<uint32_t>(workers.size()); }

    // Adds a job to the batch; job i goes to worker i modulo the worker count, which runs its jobs in order. What the
    // job refers to must outlive the batch. When this throws (memory), the batch is dropped: no job of it will run.
    template <class Callable>
    void Enqueue(Callable&& job);

    // Runs the batch, returns when all its jobs have ended, and rethrows the earliest failure among them. Returns at
    // once when the batch is empty.
    void Wait();

private:
    WorkPool() = default;

    using Queue = std::vector<Job>;

    void Work(Queue& queue);
    bool AwaitJobs(const Queue& queue, uint32_t& lastBatch);
    void RunJobs(Queue& queue);
    void FinishJobs(size_t count);
    void AwaitFinish();
    void DropBatch();

    std::vector<std::thread> workers;
    std::vector<Queue> queues;  // one for each worker; during a batch only its worker touches it
    size_t nextQueue = 0;
    std::atomic<size_t> pending{0};    // jobs of the batch that no worker has accounted for yet
    std::atomic<uint32_t> batches{0};  // released so far; wraps
    std::vector<std::exception_ptr> errors;
    std::mutex mutex;
    std::condition_variable wakeup;
    std::condition_variable finished;
    bool workersLookOut = false;  // whether threads that wait keep their processor for a while
    bool ownerLooksOut = false;
    std::atomic<bool> stop{false};
    bool running = false;
};

template <class Callable>
void WorkPool::Enqueue(Callable&& job) {
    const std::lock_guard lock(mutex);
    try {
        // Room for every job's failure is made here, so that a worker never has to allocate to report one.
        errors.reserve(pending + 1);
        queues[nextQueue].emplace_back(std::forward<Callable>(job));
    } catch (...) {
        // The jobs refer to locals of the frame that this failure unwinds, so they must not stay behind.
        DropBatch();
        throw;
    }
    nextQueue = (nextQueue + 1) % queues.size();
    ++pending;
}

// Runs job(0) to job(count - 1) as one batch.
template <class Callable>
void RunBatch(WorkPool& pool, uint32_t count, const Callable& job) {
    for (uint32_t i = 0; i < count; ++i) {
        pool.Enqueue([&job, i] { job(i); });
    }
    pool.Wait();
}

// The worker count for a requested number of threads: 0 requests one for each logical processor, and one thread means
// no workers, since the calling thread does the work then.
uint32_t WorkerCountFor(uint32_t numThreads);

}  // namespace plenar
