// A place where a program can be made to fail.
#pragma once

#include <atomic>
#include <cstdint>

namespace plenar_test {

class FaultSite {
public:
    // From now on the nth call fails, counted from 1, and with `lasting` every later one too; 0 counts calls only.
    void Arm(uint64_t nth, bool lasting = false) {
        nth_ = nth;
        lasting_ = lasting;
        calls_ = 0;
        isArmed_ = true;
    }
    // No call fails from now on. Whether one has.
    bool Disarm() {
        isArmed_ = false;
        return nth_.exchange(0) - 1 < calls_;
    }

    bool Strikes() {
        if (!isArmed_.load(std::memory_order_relaxed)) {
            return false;
        }
        const uint64_t call = ++calls_;
        return call == nth_ || (lasting_ && nth_ - 1 < call);
    }
    uint64_t Calls() const { return calls_; }

private:
    std::atomic<bool> isArmed_{false};
    std::atomic<uint64_t> nth_{0};
    std::atomic<bool> lasting_{false};
    std::atomic<uint64_t> calls_{0};
};

extern FaultSite threadStarts;

}  // namespace plenar_test
