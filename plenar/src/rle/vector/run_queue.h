// The runs of a band that wait for their tokens.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "simd/vector.h"
#include "simd/ways.h"

namespace plenar {
namespace {

constexpr uint32_t kBlock = 64;

// The samples of a block, classed.
template <class Sample>
struct Block {
    using Class = std::conditional_t<sizeof(Sample) == 1, uint16_t, uint32_t>;

    uint64_t starts;                              // bit i: sample i is not of the class of the one before it
    uint64_t modes;                               // bit i: the mode of sample i
    alignas(kVectorBytes) Class classes[kBlock];  // the values, with the mode in all bits above them
};

// For every byte the places of its ones, lowest first, and zeros behind them.
struct PlacesOfOnes {
    uint8_t places[256][8] = {};

    constexpr PlacesOfOnes() {
        for (uint32_t byte = 0; byte < 256; ++byte) {
            uint32_t count = 0;
            for (uint8_t bit = 0; bit < 8; ++bit) {
                if ((byte >> bit & 1) != 0) {
                    places[byte][count++] = bit;
                }
            }
        }
    }
};

constexpr PlacesOfOnes kPlacesOfOnes;

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
        if (TargetVector::kPermutesDwords && count >= kMany) {
            AddMany(block, position);
            TakeWay(Way::RunsTogether);
        } else {
            AddFew(block, position);
        }
        end_ += count;
    }

    // Ends the last run; no other can be added.
    void Close(uint32_t position) { starts_[end_++] = position; }

    // Takes out the first kBlock runs.
    void Drop() {
        end_ -= kBlock;
        std::memcpy(starts_, starts_ + kBlock, kBlock * sizeof *starts_);
        std::memcpy(classes_, classes_ + kBlock, kBlock * sizeof *classes_);
    }

private:
    // Both ways of adding write whole steps of entries. What they leave behind the last run is overwritten by the next
    // runs, and a last step may reach past the room for runs.
    static constexpr uint32_t kStep = 8;
    static constexpr uint32_t kMany = 10;  // runs in a block that take longer one by one

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

    // The entries of eight samples at a time, those that start runs moved together.
    template <class Sample, class Target = TargetVector>
    void AddMany(const Block<Sample>& block, uint32_t position) {
        if constexpr (Target::kPermutesDwords) {
            uint32_t next = end_;
            for (uint32_t first = 0; first < kBlock; first += kStep) {
                const auto ones = static_cast<uint8_t>(block.starts >> first);
                const auto places = Target::LoadDwords(kPlacesOfOnes.places[ones]);
                const auto classes = Target::LoadDwords(block.classes + first);
                StoreVector(classes_ + next, Target::PermuteDwords(classes, places));
                StoreVector(starts_ + next, places + (position + first));
                next += static_cast<uint32_t>(__builtin_popcount(ones));
            }
        }
    }

    uint32_t end_ = 0;
    uint32_t starts_[2 * kBlock + kStep];
    uint32_t classes_[2 * kBlock + kStep];
};

}  // namespace
}  // namespace plenar
