// Rearranging the samples of a picture without changing their values.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "buffer.h"

namespace plenar_tool {

// What colours mean where there is alpha: as they are (straight), or multiplied by it (associated).
enum class AlphaMeaning { Unknown, Straight, Associated };

// What a file says beside its samples. A payload holds none of it.
struct PictureNotes {
    AlphaMeaning alpha = AlphaMeaning::Unknown;
    std::string metadata;             // JSON, for a sidecar
    std::vector<std::string> stated;  // the part of it that changes how the samples are seen or found, for the user
    std::vector<std::string> losses;  // what of the file isn't in the picture
};

// Interleaved samples, one letter of `channels` for each sample of a pixel: R, G, B, A, or ? for one that no order
// carries. Rows without padding.
struct Picture {
    uint32_t width = 0;
    uint32_t height = 0;
    std::string channels;
    uint32_t type = 0;  // ComponentType
    Buffer samples{0};
    PictureNotes notes{};
};

// The picture with the channels that `channels` lists, in that order. Throws std::runtime_error when one is missing.
Picture ArrangeChannels(Picture picture, std::string_view channels);

// Gives the picture another type that holds every sample as it is: 10 and 12 bits fit words of more bits. Throws
// std::runtime_error for any other change.
void RelabelType(Picture& picture, uint32_t type);

// Uint10 and Uint12 samples stand in the top bits of their words. This repeats those bits in the bits below, so that
// the brightest value becomes 65535, which is how picture files and programs take 16-bit words.
void FillLowBits(Picture& picture);

// Uint10 and Uint12 samples of some other programs stand in the low bits of their words. These bring them into the top
// bits, and back.
enum class WordEnd { Low, Top };
void ShiftSamples(Buffer& samples, uint32_t type, WordEnd to);

}  // namespace plenar_tool
