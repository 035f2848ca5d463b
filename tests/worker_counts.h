// Objects with the numbers of workers that the tests use.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <memory>

#include "testing/frame_calls.h"

namespace plenar_test {

constexpr std::array<uint32_t, 5> kWorkerCounts{1, 2, 3, 8, 64};

// Made when first asked for.
template <typename TestCodec>
TestCodec& WithWorkers(size_t index) {
    static std::array<std::unique_ptr<TestCodec>, kWorkerCounts.size()> codecs;
    std::unique_ptr<TestCodec>& codec = codecs.at(index % kWorkerCounts.size());
    if (!codec) {
        codec = std::make_unique<TestCodec>(kWorkerCounts.at(index % kWorkerCounts.size()));
    }
    return *codec;
}

}  // namespace plenar_test
