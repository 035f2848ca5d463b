// Bytes as they are.
#pragma once

#include "conversion/vector/rounds.h"

namespace plenar {
namespace {

template <bool Stream>
void CopyLine(const uint8_t* src, uint8_t* dst) {
    Pieces<kLineVectors> loads;
    for (size_t i = 0; i < kLineVectors; ++i) {
        loads[i] = Load<uint8_t>(src + i * kVectorBytes);
    }
    for (size_t i = 0; i < kLineVectors; ++i) {
        if constexpr (Stream) {
            TargetVector::StoreStream(dst + i * kVectorBytes, loads[i]);
        } else {
            StoreVector(dst + i * kVectorBytes, loads[i]);
        }
    }
}

// Whole lines of the target, and at both ends a line's bytes at any address.
template <bool Stream>
void CopyLines(const uint8_t* src, uint8_t* dst, size_t bytes) {
    if (bytes < 2 * kLineBytes) {
        return narrower.copy(src, dst, bytes);
    }
    const size_t first = kLineBytes - reinterpret_cast<uintptr_t>(dst) % kLineBytes;
    CopyLine<false>(src, dst);
    CoverInRounds((bytes - first) / kLineBytes * kLineBytes, kLineBytes, kLineBytes, false, LoadsMeetStores(src, dst),
                  [&](size_t at) { CopyLine<Stream>(src + first + at, dst + first + at); });
    CopyLine<false>(src + bytes - kLineBytes, dst + bytes - kLineBytes);
    if constexpr (Stream) {
        TargetVector::FinishStream();
    }
}

void StreamLines(const uint8_t* src, uint8_t* dst, size_t bytes) {
    if (reinterpret_cast<uintptr_t>(dst) % kLineBytes != 0) {
        return narrower.copy(src, dst, bytes);
    }
    CoverInRounds(bytes, kLineBytes, kLineBytes, false, false, [&](size_t at) { CopyLine<true>(src + at, dst + at); });
}

}  // namespace
}  // namespace plenar
