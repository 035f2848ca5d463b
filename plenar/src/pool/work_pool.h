#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

#include "pool/worker_thread.h"

namespace plenar {

// The worker threads of one encoder or decoder. The owner's thread fills a batch with Enqueue and runs it with Wait;
// between batches the workers sleep, after they have spun for a short time. Enqueue and Wait belong to one thread at a
// time.
//
// Each worker has a queue of its own. In Wait the owner doesn't stand idle: it takes the first queue itself, and then
// whichever other one its worker hasn't taken yet. A queue is taken as a whole and its jobs run in order, so that a
// batch never runs on more threads than there are workers, and waking costs nothing where waking takes longer than the
// work.
class WorkPool {
public:
    using Job = std::function<void()>;

    // Starts `workerCount` threads; 0 is legal. Throws std::bad_alloc or std::system_error, with all threads that had
    // started joined again.
    explicit WorkPool(uint32_t workerCount);
    ~WorkPool();

    WorkPool(const WorkPool&) = delete;
    WorkPool& operator=(const WorkPool&) = delete;

    uint32_t WorkerCount() const { return static_cast<uint32_t>(workers_.size()); }

    // Whether a fork has copied the pool into this process, where its workers don't exist. Such a pool may be destroyed
    // if no batch was being filled or run when it was copied, and can do nothing else.
    bool IsInherited() const;
    // From the first Enqueue of a batch to the end of its Wait.
    bool IsInBatch() const { return isInBatch_; }

    // Adds a job to the batch; job i goes to the queue of worker i modulo the worker count. What the job refers to must
    // outlive the batch. When this throws (memory), the batch is dropped: no job of it will run.
    template <class Callable>
    void Enqueue(Callable&& job);

    // Runs the batch, returns when all its jobs have ended, and rethrows the earliest failure among them. Returns at
    // once when the batch is empty.
    void Wait();

private:
    WorkPool();

    // How a worker's queue stands: being filled or empty; released; being run; or the worker is to end.
    enum QueueState : uint32_t { Idle, Ready, Taken, Stopped };

    struct alignas(64) Worker {  // a cache line each, so that none waits on another's
        explicit Worker(WorkPool& owner) : pool(owner) {}

        WorkPool& pool;
        WorkerThread thread;
        std::atomic<uint32_t> state{Idle};
        std::vector<Job> jobs;
    };

    static void* ThreadBody(void* worker) noexcept;
    void Work(Worker& worker);
    bool RunIfReady(Worker& worker);
    void RunJobs(Worker& worker);
    void AwaitFinish();
    void DropBatch();

    pid_t process_;
    std::atomic<bool> isInBatch_{false};
    std::deque<Worker> workers_;
    size_t nextQueue_ = 0;
    size_t enqueued_ = 0;
    std::atomic<uint32_t> pending_{0};  // queues of the released batch that have not ended
    std::vector<std::exception_ptr> errors_;
    std::mutex mutex_;          // guards errors while a batch runs
    bool workersSpin_ = false;  // whether threads that wait spin first
    bool ownerSpins_ = false;
};

template <class Callable>
void WorkPool::Enqueue(Callable&& job) {
    isInBatch_ = true;
    try {
        // Room for every job's failure is made here, so that a worker never has to allocate to report one.
        errors_.reserve(enqueued_ + 1);
        workers_[nextQueue_].jobs.emplace_back(std::forward<Callable>(job));
    } catch (...) {
        // The jobs refer to locals of the frame that this failure unwinds, so they must not stay behind.
        DropBatch();
        throw;
    }
    nextQueue_ = (nextQueue_ + 1) % workers_.size();
    ++enqueued_;
}

// How many threads work on so many bytes, read and written. Few bytes are moved in less time than a worker takes to
// wake up.
uint32_t ThreadsFor(const WorkPool& pool, uint64_t bytes);

// Makes all work on more bytes than these wake workers; for tests, while no frame is converted.
void WakeWorkersFrom(uint64_t bytes);

// Runs job(0) to job(count - 1), which read and write so many bytes: as one batch, or in order on the calling thread.
// Jobs whose numbers are the same modulo ThreadsFor never run at the same time.
template <class Callable>
void RunBatch(WorkPool& pool, uint64_t bytes, uint32_t count, const Callable& job) {
    if (ThreadsFor(pool, bytes) == 1) {
        for (uint32_t i = 0; i < count; ++i) {
            job(i);
        }
        return;
    }
    for (uint32_t i = 0; i < count; ++i) {
        pool.Enqueue([&job, i] { job(i); });
    }
    pool.Wait();
}

// The worker count for a requested number of threads: 0 requests one for each logical processor, and one thread means
// no workers, since the calling thread does the work then.
uint32_t WorkerCountFor(uint32_t numThreads);

}  // namespace plenar
