// Rows of samples that pass through small buffers on their way to the coder or from it, so that a plane that stands
// nowhere as a whole is coded and decoded while its rows are in the cache.
#pragma once

#include <cstdint>

namespace plenar {

struct RleRowPieces {
    // Makes rows of the plane for the coder, or takes rows that were decoded: so many from `row` on, without padding.
    // Called on all threads at once, each with buffers of its own. Throws nothing.
    void (*move)(const void* context, uint32_t row, uint32_t rows, uint8_t* samples);
    const void* context;
    uint32_t rows;     // at a time, at most
    uint8_t* buffers;  // two for each thread, or one for each row if that is less, with room for so many rows
};

}  // namespace plenar
