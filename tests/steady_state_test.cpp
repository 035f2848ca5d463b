// After its first frame an object allocates nothing for frames of that size: not without workers, and with workers no
// more than the lists of its batches.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <vector>

#include "plenar_sdk.h"

namespace {

std::atomic<uint64_t> allocations{0};

void* CountedAllocation(size_t size) {
    ++allocations;
    if (void* block = std::malloc(std::max<size_t>(size, 1))) {
        return block;
    }
    throw std::bad_alloc();
}

}  // namespace

void* operator new(size_t size) {
    return CountedAllocation(size);
}
void* operator new[](size_t size) {
    return CountedAllocation(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, size_t) noexcept {
    std::free(block);
}

namespace {

constexpr uint32_t width = 64;
constexpr uint32_t height = 40;

// The allocations of one encode and one decode of every supported pair, counted on the second run of each.
uint64_t MostAllocationsOfAFrame(uint32_t threads, uint8_t alphaRle) {
    const CreateParams create = {sizeof(CreateParams), threads, nullptr, nullptr};
    Encoder* encoder = nullptr;
    Decoder* decoder = nullptr;
    Plenar_CreateEncoder(&create, &encoder);
    Plenar_CreateDecoder(&create, &decoder);
    const CompressedParams compressed = {sizeof(CompressedParams), alphaRle, 0};
    uint64_t most = 0;
    for (uint32_t order = 1; order <= 16; ++order) {
        for (const uint32_t type : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 214U}) {
            const UncompressedParams params = {sizeof(UncompressedParams), order, type, width, height, 0, 0, 0};
            std::vector<uint8_t> picture(Plenar_GetUncompressedBufSize(&params), 7);
            std::vector<uint8_t> payload(Plenar_GetCompressedBufSize(&params, &compressed));
            for (const bool counted : {false, true}) {
                if (payload.empty()) {
                    continue;
                }
                const uint64_t before = allocations;
                uint32_t written = 0;
                const bool encoded =
                    Plenar_EncodeFrame(encoder, &params, &compressed, picture.data(),
                                       static_cast<uint32_t>(picture.size()), payload.data(),
                                       static_cast<uint32_t>(payload.size()), &written) == PLENAR_RESULT_OK;
                const bool decoded =
                    encoded && Plenar_DecodeFrame(decoder, &params, payload.data(), written, picture.data(),
                                                  static_cast<uint32_t>(picture.size()), nullptr) == PLENAR_RESULT_OK;
                if (counted && decoded) {
                    most = std::max<uint64_t>(most, allocations - before);
                }
            }
        }
    }
    Plenar_DestroyDecoder(decoder);
    Plenar_DestroyEncoder(encoder);
    return most;
}

TEST(SteadyState, AllocatesNothingWithoutWorkers) {
    EXPECT_EQ(MostAllocationsOfAFrame(1, 0), 0U);
    EXPECT_EQ(MostAllocationsOfAFrame(1, 1), 0U);
}

TEST(SteadyState, AllocatesTheListsOfItsBatchesWithWorkers) {
    // Four planes each way, a list of rows and a list of bands for each.
    EXPECT_LE(MostAllocationsOfAFrame(4, 0), 16U);
    EXPECT_LE(MostAllocationsOfAFrame(4, 1), 16U);
}

}  // namespace
