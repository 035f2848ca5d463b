#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "pool/work_pool.h"

namespace plenar {

// What an encoder or a decoder keeps from frame to frame: its threads and one temporary buffer.
class CodecState {
public:
    explicit CodecState(uint32_t numThreads) : pool_(WorkerCountFor(numThreads)) {}

    WorkPool& Pool() { return pool_; }

    // At least `size` bytes, uninitialised, valid until the next call. Grows and never shrinks.
    uint8_t* Scratch(size_t size);

private:
    WorkPool pool_;
    std::unique_ptr<uint8_t[]> scratch_;
    size_t scratchSize_ = 0;
};

}  // namespace plenar
