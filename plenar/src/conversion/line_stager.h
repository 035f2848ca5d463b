// A target that is written past the caches, though what makes it writes bytes of any number at any address: they wait
// in the first cache until they fill whole lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "conversion/row_kernels.h"

namespace plenar {

class LineStager {
public:
    // The most bytes that can be put at a time.
    static constexpr size_t kPieceBytes = 4096;

    explicit LineStager(const RowKernels& kernels) : streamLines_(kernels.streamLines) {}

    void Start(uint8_t* dst) {
        begin_ = end_ = reinterpret_cast<uintptr_t>(dst) % kLineBytes;
        line_ = dst - begin_;
    }

    // Where the next bytes are to be made.
    uint8_t* Room() { return staged_ + end_; }

    void Put(size_t bytes) {
        end_ += bytes;
        const size_t whole = end_ - end_ % kLineBytes;
        if (whole == 0) {
            return;
        }
        const size_t head = begin_ != 0 ? kLineBytes : 0;  // a line that others write to as well
        std::memcpy(line_ + begin_, staged_ + begin_, head - begin_);
        streamLines_(staged_ + head, line_ + head, whole - head);
        std::memcpy(staged_, staged_ + whole, kLineBytes);
        line_ += whole;
        begin_ = 0;
        end_ -= whole;
    }

    // Before the next start.
    void Finish() { std::memcpy(line_ + begin_, staged_ + begin_, end_ - begin_); }

private:
    static constexpr size_t kLineBytes = 64;

    decltype(RowKernels::streamLines) streamLines_;
    uint8_t* line_ = nullptr;  // of the target, where the first staged line belongs
    size_t begin_ = 0;         // of the bytes that wait
    size_t end_ = 0;
    alignas(kLineBytes) uint8_t staged_[kPieceBytes + 2 * kLineBytes];
};

}  // namespace plenar
