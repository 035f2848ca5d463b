// What the library is measured against that is no library: what memory and threads can do at best.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace plenar_bench {

// A copy whose stores pass the caches by. `dst` aligned to 32 bytes.
void StreamingCopy(uint8_t* dst, const uint8_t* src, size_t size);

// Reads every byte once; the result is some sum of them.
uint64_t ReadPass(const uint8_t* src, size_t size);

// So many additions, each of which waits for the one before: one cycle of the processor apiece.
inline constexpr uint32_t kChainedAdditions = 4096;
void RunChainedAdditions();

// Two threads that are both running: the caller's, and one that spins until it gets its share. Waking costs nothing,
// and so the pair shows what two threads can do at best.
class RunningPair {
public:
    RunningPair();
    ~RunningPair();
    RunningPair(const RunningPair&) = delete;
    RunningPair& operator=(const RunningPair&) = delete;

    // share(0) here and share(1) on the other thread.
    void Run(const std::function<void(int)>& share);

private:
    void Work();

    const std::function<void(int)>* current_ = nullptr;
    std::atomic<uint32_t> started_{0};
    std::atomic<uint32_t> finished_{0};
    std::atomic<bool> stop_{false};
    std::thread helper_;
};

// Two threads that sleep on a condition variable, and a caller that sleeps until both have ended: the plainest pool,
// and what its waking costs.
class SleepingPair {
public:
    SleepingPair();
    ~SleepingPair();
    SleepingPair(const SleepingPair&) = delete;
    SleepingPair& operator=(const SleepingPair&) = delete;

    // share(0) and share(1), each on a thread of its own.
    void Run(const std::function<void(int)>& share);

private:
    void Work(int index);

    std::mutex mutex_;
    std::condition_variable wakeup_;
    std::condition_variable done_;
    const std::function<void(int)>* current_ = nullptr;
    uint64_t batch_ = 0;
    int busy_ = 0;
    bool stop_ = false;
    std::vector<std::thread> workers_;
};

}  // namespace plenar_bench
