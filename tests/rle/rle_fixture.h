// What the tests of coded planes share: buffers of exact size, calls with less to say, and planes made bit by bit.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "pool/work_pool.h"
#include "rle/plane_decoder.h"
#include "rle/plane_encoder.h"
#include "rle/rle_params.h"
#include "simd/target.h"

namespace rle_tests {

using Bytes = std::vector<uint8_t>;

class Random {
public:
    explicit Random(uint32_t seed) : engine_(seed) {}
    uint32_t operator()() { return static_cast<uint32_t>(engine_()); }

private:
    std::mt19937 engine_;
};

class ForcedTarget {
public:
    explicit ForcedTarget(plenar::Target target) { plenar::ForceTarget(target); }
    ~ForcedTarget() { plenar::ForceTarget(plenar::RunnableTargets().back()); }
    ForcedTarget(const ForcedTarget&) = delete;
    ForcedTarget& operator=(const ForcedTarget&) = delete;
};

inline plenar::WorkPool& Pool(uint32_t workers) {
    static plenar::WorkPool none(0);
    static plenar::WorkPool two(2);
    static plenar::WorkPool eight(8);
    return workers == 0 ? none : workers == 2 ? two : eight;
}

// Heap blocks without room to spare, so that the address sanitizer sees every step outside.
inline std::unique_ptr<uint8_t[]> ExactCopy(const Bytes& bytes) {
    std::unique_ptr<uint8_t[]> block(new uint8_t[bytes.size()]);
    if (!bytes.empty()) {
        std::memcpy(block.get(), bytes.data(), bytes.size());
    }
    return block;
}

inline Bytes Encode(const plenar::RleParams& params, const Bytes& plain, uint32_t workers = 0) {
    const auto src = ExactCopy(plain);
    Bytes coded(plenar::RleMaxCodedSize(params));
    coded.resize(plenar::RleEncodePlane(Pool(workers), params, src.get(), plain.size(), coded.data(), coded.size()));
    return coded;
}

// Decodes over `before`, whose size is the target's.
inline Bytes Decode(const plenar::RleParams& params, const Bytes& coded, Bytes before, uint32_t workers = 0) {
    const auto src = ExactCopy(coded);
    const auto dst = ExactCopy(before);
    plenar::RleDecodePlane(Pool(workers), params, src.get(), coded.size(), dst.get(), before.size());
    std::memcpy(before.data(), dst.get(), before.size());
    return before;
}

// The message of the failure, or "" if there is none.
template <class Call>
std::string MessageOf(const Call& call) {
    try {
        call();
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "";
}

// A coded plane put together from its smallest parts, right or wrong.
class PlaneBits {
public:
    void Bits(uint64_t value, unsigned count) {
        while (count-- > 0) {
            if (used_ % 8 == 0) {
                bytes_.push_back(0);
            }
            bytes_.back() = static_cast<uint8_t>(bytes_.back() | (value >> count & 1) << (7 - used_ % 8));
            ++used_;
        }
    }

    void RunLength(uint64_t run) {
        unsigned significant = 0;
        while (run >> significant != 0) {
            ++significant;
        }
        Bits(0, significant - 1);
        Bits(run, significant);
    }

    void Value(uint32_t value, unsigned width, bool shortForm) {
        const unsigned k = width / 2 - 2;
        Bits(shortForm ? 1 : 0, 1);
        if (shortForm) {
            Bits(~0ULL, value >> k);
            Bits(0, 1);
            Bits(value, k);
        } else {
            Bits(value, width);
        }
    }

    void Token(unsigned mode, uint64_t run, uint32_t value, unsigned width, bool shortForm) {
        Bits(mode, 1);
        RunLength(run);
        Value(value, width, shortForm);
    }

    // One group for each entry, in raw form.
    void List(const std::vector<uint32_t>& entries) {
        int64_t running = 0x7FFFFF;
        for (const uint32_t entry : entries) {
            const int64_t delta = entry - running;
            Bits(1, 1);
            Value(static_cast<uint32_t>(delta < 0 ? -2 * delta - 1 : 2 * delta), 24, false);
            running = entry;
        }
    }

    void Align() { used_ = bytes_.size() * 8; }

    const Bytes& Get() const { return bytes_; }

private:
    Bytes bytes_;
    uint64_t used_ = 0;
};

// The table of a plane with the streams behind it.
inline Bytes PlaneOf(const std::vector<uint32_t>& sizes, const std::vector<uint32_t>& rows,
                     const std::vector<Bytes>& streams) {
    PlaneBits head;
    head.Bits(sizes.size(), 8);
    head.List(sizes);
    head.List(rows);
    Bytes plane = head.Get();
    for (const Bytes& stream : streams) {
        plane.insert(plane.end(), stream.begin(), stream.end());
    }
    return plane;
}

}  // namespace rle_tests
