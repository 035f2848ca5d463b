#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "pool/work_pool.h"

namespace plenar {

// What an encoder or a decoder keeps from frame to frame: its threads and one temporary buffer.
struct CodecState {
    explicit CodecState(uint32_t workers) : pool(workers) {}

    WorkPool pool;
    std::unique_ptr<uint8_t[]> scratch = nullptr;
    size_t scratchSize = 0;
    std::atomic<bool> isGrowing = false;  // whether scratch is being replaced, for forks
};

// At least `size` bytes, uninitialised, valid until the next call. The buffer grows and never shrinks.
inline uint8_t* Scratch(CodecState& state, size_t size) {
    if (size > state.scratchSize) {
        state.isGrowing = true;  // and stays so if there is no memory: more caution than needed does no harm
        // The old block goes first: its contents are of no use, and both at once may not fit.
        state.scratch.reset();
        state.scratchSize = 0;
        state.scratch.reset(new uint8_t[size]);
        state.scratchSize = size;
        state.isGrowing = false;
    }
    return state.scratch.get();
}

}  // namespace plenar
