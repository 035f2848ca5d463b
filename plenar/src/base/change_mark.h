#pragma once

#include <atomic>

namespace plenar {

// Set while it lives, so that the child of a fork can tell what was copied in the middle of a change.
class ChangeMark {
public:
    explicit ChangeMark(std::atomic<bool>& isChanging) : isChanging_(isChanging) { isChanging_ = true; }
    ~ChangeMark() { isChanging_.store(false, std::memory_order_release); }

    ChangeMark(const ChangeMark&) = delete;
    ChangeMark& operator=(const ChangeMark&) = delete;

private:
    std::atomic<bool>& isChanging_;
};

}  // namespace plenar
