// The runs of a band that wait for their tokens; for inclusion by the sources of the targets only.
#pragma once

#include <cstdint>
#include <cstring>

#include "rle/lane_vector.h"

namespace plenar {
namespace {

constexpr uint32_t kBlock = 64;

template <class Sample>
struct ClassOf;
template <>
struct ClassOf<uint8_t> {
    using Type = uint16_t;
};
template <>
struct ClassOf<uint16_t> {
    using Type = uint32_t;
};

// The samples of a block, classed.
template <class Sample>
struct Block {
    uint64_t starts;  // bit i: sample i is not of the class of the one before it
    uint64_t modes;   // bit i: the mode of sample i
    // The values, with the mode in all bits above them.
    alignas(kVectorBytes) typename ClassOf<Sample>::Type classes[kBlock];
};

#if defined(__AVX2__)

// For every byte the places of its ones, lowest first; what stands behind them means nothing.
struct PlacesOfOnes {
    uint8_t places[256][8] = {};

    constexpr PlacesOfOnes() {
        for (uint32_t byte = 0; byte < 256; ++byte) {
            uint32_t count = 0;
            for (uint32_t bit = 0; bit < 8; ++bit) {
                if ((byte >> bit & 1) != 0) {
                    places[byte][count++] = static_cast<uint8_t>(bit);
                }
            }
        }
    }
};

constexpr PlacesOfOnes kPlacesOfOnes;

#endif

class RunQueue {
public:
    // True before the band's first run only.
    bool IsEmpty() const { return end_ == 0; }

    // Runs that have ended, since another one has started behind them.
    uint32_t Complete() const { return end_ - 1; }

    bool LastIsFlat() const { return classes_[end_ - 1] == 0; }
    uint32_t LastStart() const { return starts_[end_ - 1]; }

    const uint32_t* Starts() const { return starts_; }
    const uint32_t* Classes() const { return classes_; }

    // Adds the runs of a block whose first sample is the band's sample `position`. No more than kBlock
    // runs may be there yet.
    template <class Sample>
    void Add(const Block<Sample>& block, uint32_t position) {
        const auto count = static_cast<uint32_t>(__builtin_popcountll(block.starts));
#if defined(__AVX2__)
        if (count >= kMany) {
            AddMany(block, position);
        } else
#endif
        {
            AddFew(block, position);
        }
        end_ += count;
    }

    // Ends the last run; no other can be added.
    void Close(uint32_t position) {
        starts_[end_++] = position;
    }

    // Takes out the first kBlock runs.
    void Drop() {
        end_ -= kBlock;
        std::memcpy(starts_, starts_ + kBlock, kBlock * sizeof *starts_);
        std::memcpy(classes_, classes_ + kBlock, kBlock * sizeof *classes_);
    }

private:
    // Entries written at once. Those behind the last run mean nothing.
    static constexpr uint32_t kStep = 8;
    static constexpr uint32_t kMany = 10;  // runs in a block that cost more one by one

    template <class Sample>
    void AddFew(const Block<Sample>& block, uint32_t position) {
        constexpr uint64_t kTop = uint64_t{1} << (kBlock - 1);
        uint64_t rest = block.starts;
        for (uint32_t next = end_; rest != 0; next += kStep / 2) {
            for (uint32_t i = 0; i < kStep / 2; ++i) {
                const auto place = static_cast<uint32_t>(__builtin_ctzll(rest | kTop));
                starts_[next + i] = position + place;
                classes_[next + i] = block.classes[place];
                rest &= rest - 1;
            }
        }
    }

#if defined(__AVX2__)
    template <class Sample>
    void AddMany(const Block<Sample>& block, uint32_t position) {
        uint32_t next = end_;
        for (uint32_t firstLane = 0; firstLane < kBlock; firstLane += kStep) {
            const auto ones = static_cast<uint8_t>(block.starts >> firstLane);
            const __m256i places =
                _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(kPlacesOfOnes.places[ones])));
            Vector<uint32_t> lanes;
            if constexpr (sizeof(Sample) == 1) {
                lanes = reinterpret_cast<Vector<uint32_t>>(
                    _mm256_cvtepu16_epi32(_mm_load_si128(reinterpret_cast<const __m128i*>(block.classes + firstLane))));
            } else {
                lanes = LoadLanes<uint32_t>(reinterpret_cast<const uint8_t*>(block.classes + firstLane));
            }
            StoreLanes(reinterpret_cast<uint8_t*>(classes_ + next),
                       _mm256_permutevar8x32_epi32(reinterpret_cast<__m256i>(lanes), places));
            StoreLanes(reinterpret_cast<uint8_t*>(starts_ + next),
                       reinterpret_cast<Vector<uint32_t>>(places) + (position + firstLane));
            next += static_cast<uint32_t>(__builtin_popcount(ones));
        }
    }
#endif

    uint32_t end_ = 0;
    uint32_t starts_[2 * kBlock + kStep];
    uint32_t classes_[2 * kBlock + kStep];
};

}  // namespace
}  // namespace plenar
