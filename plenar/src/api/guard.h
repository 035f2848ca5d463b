// The one place where exceptions become return codes and messages.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>

#include "plenar_sdk.h"

namespace plenar {

// How an operation ended last, for a debugger; nothing reads it.
using StatusWord = std::atomic<uint32_t>;

// Runs the body. What it throws goes as text to the sink's callback, if there is one, on this thread.
template <class Body>
Result Guard(StatusWord& status, const CreateParams& sink, const Body& body) {
    Result result = ResultOk;
    try {
        body();
    } catch (const std::exception& failure) {
        if (sink.messageCallback != nullptr) {
            sink.messageCallback(failure.what(), sink.userData);
        }
        result = ResultFailed;
    }
    status.store(result, std::memory_order_relaxed);
    return result;
}

}  // namespace plenar
