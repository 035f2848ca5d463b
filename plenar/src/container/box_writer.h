#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "container/frame_plan.h"

namespace plenar {

// A cursor over the caller's buffer, not owned.
class BoxWriter {
public:
    BoxWriter(uint8_t* buffer, uint64_t capacity);  // throws invalid_buffer for a null buffer

    uint64_t Capacity() const { return capacity_; }
    template <class Number>
    void Put(Number value) {
        StoreAs(buffer_ + position_, value);
        position_ += sizeof value;
    }
    void Skip(uint64_t bytes) { position_ += bytes; }

private:
    uint8_t* buffer_;
    uint64_t capacity_;
    uint64_t position_ = 0;
};

// Lays the box headers around plane data that already stands at the plan's offsets; doesn't touch the data. Returns the
// payload's size. Throws invalid_argument, with nothing written, when the payload doesn't fit.
uint32_t WriteFrameBoxes(BoxWriter writer, const FramePlan& plan);

}  // namespace plenar
