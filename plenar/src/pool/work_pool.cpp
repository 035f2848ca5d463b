#include "pool/work_pool.h"

#include <utility>

namespace plenar {

// The delegated constructor makes the pool complete before the first thread starts, so that a thread that fails to
// start brings the destructor, which stops and joins the others.
WorkPool::WorkPool(uint32_t workerCount) : WorkPool() {
    queues.resize(workerCount);
    workers.reserve(workerCount);
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

void WorkPool::Wait() {
    if (pending == 0) {
        return;
    }
    std::future<void> done;
    {
        const std::lock_guard lock(mutex);
        OrDropBatch([&] {
            finished = std::promise<void>();
            done = finished.get_future();
        });
        errors.clear();
        nextQueue = 0;
        running = true;
    }
    wakeup.notify_all();
    done.wait();
    const std::lock_guard lock(mutex);
    running = false;
    if (!errors.empty()) {
        std::rethrow_exception(errors.front());
    }
}

void WorkPool::Work(Queue& queue) {
    for (;;) {
        {
            std::unique_lock lock(mutex);
            wakeup.wait(lock, [&] { return stop || (running && !queue.empty()); });
            if (stop) {
                return;
            }
        }
        const size_t taken = queue.size();
        RunJobs(queue);
        FinishJobs(taken);
    }
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
    if (pending.fetch_sub(count) != count) {
        return;
    }
    // The promise is taken out before it is fulfilled: the next Wait may put a new one in its place while this thread
    // is still inside set_value.
    std::promise<void> batch;
    {
        const std::lock_guard lock(mutex);
        batch = std::move(finished);
    }
    batch.set_value();
}

uint32_t WorkerCountFor(uint32_t numThreads) {
    const uint32_t count = numThreads != 0 ? numThreads : std::thread::hardware_concurrency();
    return count == 1 ? 0 : count;
}

}  // namespace plenar
