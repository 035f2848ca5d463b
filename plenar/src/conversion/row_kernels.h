// The kernels: the inner loops that move the samples of one row. Each does one job for one row, reads and writes just
// the bytes that its lengths name, and looks at no other row. Rows may begin at any address. Source and target may be
// the same row where the declaration says so, and must not overlap otherwise.
//
// A set of kernels is a table of functions. The plain set defines the results; the other sets give the same bytes
// faster on processors that can run them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "format/order.h"
#include "simd/target.h"

namespace plenar {

struct RowKernels {
    // Bytes as they are. streamCopy writes past the caches: for results that wouldn't stay there until they are read.
    void (*copy)(const uint8_t* src, uint8_t* dst, size_t bytes);
    void (*streamCopy)(const uint8_t* src, uint8_t* dst, size_t bytes);
    // The same for whole lines of 64 bytes, which are streamed where the target is one. They may come in any order with
    // what is written later, up to finishStream.
    void (*streamLines)(const uint8_t* src, uint8_t* dst, size_t bytes);
    void (*finishStream)();

    // Caller's pixels with alpha to plane pixels and alpha samples. alpha may be null: then alpha is dropped.
    void (*splitRow)(const Order& order, size_t sampleBytes, const uint8_t* src, uint8_t* colour, uint8_t* alpha,
                     size_t pixels);
    // The way back.
    void (*mergeRow)(const Order& order, size_t sampleBytes, const uint8_t* colour, const uint8_t* alpha, uint8_t* dst,
                     size_t pixels);
    // Exchanges the two samples of each pair. In place too.
    void (*swapPairs)(size_t sampleBytes, const uint8_t* src, uint8_t* dst, size_t pairs);
    // Exchanges the first and the third sample of each pixel of three. In place too.
    void (*reverseTriples)(size_t sampleBytes, const uint8_t* src, uint8_t* dst, size_t pixels);

    // Words with the sample in their top bits, reordered, to a high part of one byte a sample and a low part, in which
    // a byte takes the remaining bits of 4 (10 bits) or 2 (12 bits) samples, first sample lowest; unused bits are zero.
    // `samples` counts those of the plane and is a multiple of what the order moves together; alpha is dropped.
    void (*packRow10)(const Order& order, const uint8_t* words, size_t samples, uint8_t* high, uint8_t* low);
    void (*packRow12)(const Order& order, const uint8_t* words, size_t samples, uint8_t* high, uint8_t* low);
    // The way back; not with alpha among the samples.
    void (*unpackRow10)(const Order& order, const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words);
    void (*unpackRow12)(const Order& order, const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words);

    // Whole groups of 12 samples: 4 words of three 10-bit fields to 12 bytes of the high part and 3 of the low part.
    void (*packedGroupsToPlane)(const uint8_t* packed, size_t groups, uint8_t* high, uint8_t* low);
    void (*planeToPackedGroups)(const uint8_t* high, const uint8_t* low, size_t groups, uint8_t* packed);

    // Signed fixed point with 14 fraction bits to single precision, exact, and reordered. Not with alpha among the
    // samples.
    void (*fixedRowToFloat)(const Order& order, const uint8_t* fixed, size_t samples, uint8_t* floats);
};

extern const RowKernels kPlainRowKernels;

// Of a target that the processor runs.
const RowKernels& RowKernelsFor(Target target);

inline const RowKernels& ActiveRowKernels() {
    return RowKernelsFor(ActiveTarget());
}

// Replaces the kernels of the narrower target by those that the target has of its own. In the processor's folder.
void OverrideRowKernels(Target target, RowKernels& kernels);

}  // namespace plenar
