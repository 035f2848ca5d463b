// Rearranging the samples of a picture without changing their values.
#pragma once

#include <cstdint>
#include <string_view>

#include "file_io.h"

namespace plenar_tool {

// Interleaved samples, one letter of `channels` for each sample of a pixel: R, G, B, A, or ? for one that no order
// carries. Rows without padding.
struct Picture {
    uint32_t width = 0;
    uint32_t height = 0;
    std::string channels;
    uint32_t type = 0;  // ComponentType
    Buffer samples{0};
};

// The picture with the channels that `channels` lists, in that order. Throws std::runtime_error when one is missing.
Picture ArrangeChannels(Picture picture, std::string_view channels);

// Gives the picture another type that holds every sample as it is: 10 and 12 bits fit words of more bits. Throws
// std::runtime_error for any other change.
void RelabelType(Picture& picture, uint32_t type);

// Uint10 and Uint12 samples stand in the top bits of their words. This repeats those bits in the bits below, so that
// the brightest value becomes 65535, which is how picture files and programs take 16-bit words.
void FillLowBits(Picture& picture);

}  // namespace plenar_tool
