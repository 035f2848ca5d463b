#include "sample_layout.h"

#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "formats.h"

namespace plenar_tool {

namespace {

bool IsWordType(uint32_t type) {
    return type == plenar::Uint10 || type == plenar::Uint12 || type == plenar::Uint16;
}

std::vector<size_t> ChannelPositions(std::string_view from, std::string_view to) {
    std::vector<size_t> positions;
    for (const char channel : to) {
        const size_t position = from.find(channel);
        if (position == std::string_view::npos) {
            throw std::runtime_error(channel == 'A' ? "has no alpha channel: choose an --order without alpha"
                                                    : "has no red, green and blue channels: choose another --order");
        }
        positions.push_back(position);
    }
    return positions;
}

template <size_t SampleBytes>
void GatherSamples(const uint8_t* src, size_t srcChannels, const std::vector<size_t>& positions, uint8_t* dst,
                   size_t pixels) {
    for (size_t pixel = 0; pixel < pixels; ++pixel, src += srcChannels * SampleBytes) {
        for (const size_t position : positions) {
            std::memcpy(dst, src + position * SampleBytes, SampleBytes);
            dst += SampleBytes;
        }
    }
}

// Only words of 10 and 12 bits have bits to spare.
template <class Change>
void ChangeWords(Buffer& samples, uint32_t type, Change change) {
    if (type != plenar::Uint10 && type != plenar::Uint12) {
        return;
    }
    uint8_t* const bytes = samples.Data();
    for (size_t i = 0; i + 1 < samples.Size(); i += sizeof(uint16_t)) {
        uint16_t word = 0;
        std::memcpy(&word, bytes + i, sizeof(word));
        word = static_cast<uint16_t>(change(word));
        std::memcpy(bytes + i, &word, sizeof(word));
    }
}

}  // namespace

Picture ArrangeChannels(Picture picture, std::string_view channels) {
    if (picture.channels == channels) {
        return picture;
    }
    const std::vector<size_t> positions = ChannelPositions(picture.channels, channels);
    const size_t sampleBytes = FindType(picture.type).sampleBytes;
    const size_t pixels = size_t{picture.width} * picture.height;
    const auto gather = sampleBytes == 1 ? GatherSamples<1> : sampleBytes == 2 ? GatherSamples<2> : GatherSamples<4>;

    Buffer samples(pixels * channels.size() * sampleBytes);
    gather(picture.samples.Data(), picture.channels.size(), positions, samples.Data(), pixels);
    picture.samples = std::move(samples);
    picture.channels = channels;
    return picture;
}

void RelabelType(Picture& picture, uint32_t type) {
    const TypeInfo& from = FindType(picture.type);
    const TypeInfo& to = FindType(type);
    const bool fits = IsWordType(from.value) && IsWordType(to.value) && from.depth <= to.depth;
    if (from.value != to.value && !fits) {
        throw std::runtime_error("its samples are " + std::string(from.name) + "; they can't be carried unchanged as " +
                                 std::string(to.name));
    }
    picture.type = type;
}

void FillLowBits(Picture& picture) {
    const uint32_t depth = FindType(picture.type).depth;
    ChangeWords(picture.samples, picture.type, [depth](uint32_t word) { return word | (word >> depth); });
}

void ShiftSamples(Buffer& samples, uint32_t type, WordEnd to) {
    const uint32_t distance = 16 - FindType(type).depth;
    if (to == WordEnd::Top) {
        ChangeWords(samples, type, [distance](uint32_t word) { return word << distance; });
    } else {
        ChangeWords(samples, type, [distance](uint32_t word) { return word >> distance; });
    }
}

}  // namespace plenar_tool
