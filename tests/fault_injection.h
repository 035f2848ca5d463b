// Where a test can make its program fail: at any allocation by operator new, and at any start of a thread. The
// sanitizers' own versions stand behind these and still watch every block and every thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace plenar_test {

class FaultSite {
public:
    // From now on the nth call fails, counted from 1, and with `lasting` every later one too; 0 counts calls only.
    void Arm(uint64_t nth, bool lasting = false) {
        nth_ = nth;
        lasting_ = lasting;
        calls_ = 0;
    }
    // No call fails from now on. Whether one has.
    bool Disarm() { return nth_.exchange(0) - 1 < calls_; }

    bool Strikes() {
        const uint64_t call = ++calls_;
        return call == nth_ || (lasting_ && nth_ - 1 < call);
    }
    uint64_t Calls() const { return calls_; }

private:
    std::atomic<uint64_t> nth_{0};
    std::atomic<bool> lasting_{false};
    std::atomic<uint64_t> calls_{0};
};

extern FaultSite allocations;
extern FaultSite threadStarts;
extern std::atomic<int64_t> liveBlocks;
extern std::atomic<size_t> largestBlock;

}  // namespace plenar_test
