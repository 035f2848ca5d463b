#include "dpx_size.h"

#include <array>
#include <cstddef>
#include <fstream>

namespace plenar_tool {

namespace {

// Places in the header.
constexpr size_t kElements = 770;
constexpr size_t kWidth = 772;
constexpr size_t kHeight = 776;
constexpr size_t kBits = 803;
constexpr size_t kPacking = 804;
constexpr size_t kEncoding = 806;
constexpr size_t kDataOffset = 808;
constexpr size_t kHeaderBytes = 812;

constexpr uint32_t kWordBytes = 4;
constexpr uint32_t kWordBits = 32;
constexpr uint32_t kTensInWord = 3;

using Header = std::array<unsigned char, kHeaderBytes>;

uint32_t Number(const Header& header, size_t place, size_t bytes) {
    const bool isLittle = header[0] == 'X';
    uint32_t number = 0;
    for (size_t i = 0; i < bytes; ++i) {
        number = number << 8U | header[place + (isLittle ? bytes - 1 - i : i)];
    }
    return number;
}

uint64_t RowBytes(uint64_t samples, uint32_t bits, bool isPacked) {
    if (bits == 10 && !isPacked) {
        return (samples + kTensInWord - 1) / kTensInWord * kWordBytes;
    }
    const uint64_t storedBits = bits == 12 && !isPacked ? 16 : bits;
    return (samples * storedBits + kWordBits - 1) / kWordBits * kWordBytes;
}

}  // namespace

uint64_t LeastDpxBytes(const std::string& file, uint32_t channels) {
    Header header{};
    std::ifstream(file, std::ios::binary).read(reinterpret_cast<char*>(header.data()), header.size());
    // Coded rows may be of any size, and of several elements not all need be read.
    if (Number(header, kEncoding, 2) != 0 || Number(header, kElements, 2) != 1) {
        return 0;
    }
    const uint64_t rowBytes =
        RowBytes(uint64_t{Number(header, kWidth, 4)} * channels, header[kBits], Number(header, kPacking, 2) == 0);
    return Number(header, kDataOffset, 4) + rowBytes * Number(header, kHeight, 4);
}

}  // namespace plenar_tool
