#include "sample_model.h"

#include <algorithm>
#include <array>
#include <bit>

namespace plenar_test {
namespace {

constexpr uint32_t kNoAlpha = 98;
constexpr uint32_t kApart = 99;

// How an order arranges the samples of a pixel (in 4:2:2: of a luma sample and the chroma sample beside it).
struct Arrangement {
    std::string family;                 // the plane's code without the depth
    uint32_t samples;                   // samples a pixel in the caller's row
    uint32_t components;                // samples a pixel in the plane's row
    std::array<uint32_t, 3> positions;  // where each of those stands in the caller's pixel
    uint32_t alpha;                     // where alpha stands there
};

const Arrangement& arrangement(uint32_t order) {
    static const Arrangement kOrders[] = {
        {"", 0, 1, {0, 0, 0}, kNoAlpha},   {"y2", 2, 2, {1, 0, 0}, kNoAlpha},  // YCbYCr
        {"y2", 2, 2, {0, 1, 0}, kNoAlpha},                                     // CbYCrY
        {"rg", 4, 3, {1, 2, 3}, 0},                                            // ARGB
        {"rg", 4, 3, {2, 1, 0}, 3},                                            // BGRA
        {"rg", 3, 3, {0, 1, 2}, kNoAlpha},                                     // RGB
        {"rg", 3, 3, {2, 1, 0}, kNoAlpha},                                     // BGR
        {"rg", 4, 3, {0, 1, 2}, 3},                                            // RGBA
        {"rg", 4, 3, {3, 2, 1}, 0},                                            // ABGR
        {"y4", 3, 3, {0, 1, 2}, kNoAlpha},                                     // CbYCr
        {"y", 1, 1, {0, 0, 0}, kNoAlpha},                                      // YCbCr420Planar
        {"y2", 3, 2, {0, 1, 0}, 2},                                            // CbYACrYA
        {"y4", 4, 3, {1, 0, 2}, 3},                                            // YCbCrA
        {"y", 1, 1, {0, 0, 0}, kApart},                                        // YCbCrA420Planar
        {"a", 1, 1, {0, 0, 0}, kApart},                                        // AlphaOnly
        {"y2", 2, 2, {1, 0, 0}, kApart},                                       // YCbYCrPlusAlpha
        {"y2", 2, 2, {0, 1, 0}, kApart},                                       // CbYCrYPlusAlpha
    };
    return kOrders[order < std::size(kOrders) ? order : 0];
}

// Whether an alpha plane of its own follows an interleaved picture.
bool hasAlphaBehind(uint32_t order) {
    return is422(order) && arrangement(order).alpha == kApart;
}

bool swapsPairs(uint32_t order) {
    return is422(order) && arrangement(order).positions[0] == 1;
}

uint32_t sampleBytes(uint32_t type) {
    return type == plenar::Uint8 ? 1 : type == plenar::Float32 ? 4 : 2;
}

uint64_t half(uint64_t size) {
    return (size + 1) / 2;
}

enum class Role { Primary, Cb, Cr, Alpha };

Role roleOf(const std::string& code) {
    const auto has = [&code](const char* family) { return code.find(family) != std::string::npos; };
    return has("cb") ? Role::Cb : has("cr") ? Role::Cr : has("a") ? Role::Alpha : Role::Primary;
}

bool isFixed(const std::string& code) {
    return code.substr(2) == "S1";
}

uint32_t planeBits(const std::string& code) {
    const char last = code.back();
    return last == '8' ? 8 : last == '0' ? 10 : last == '2' ? 12 : last == 'f' ? 32 : 16;
}

uint64_t rowSamples(const std::string& code, uint64_t width) {
    if (code.find("y2") != std::string::npos) {
        return 2 * width + (width & 1);
    }
    return code.find("y4") != std::string::npos || code.find("rg") != std::string::npos ? 3 * width : width;
}

uint64_t planeRowBytes(const std::string& code, uint64_t width) {
    return (planeBits(code) * rowSamples(code, width) + 7) / 8;
}

uint64_t stride(const UncompressedParams& params) {
    return params.rowBytes != 0 ? params.rowBytes : tightRowBytes(params);
}

uint64_t stride2(const UncompressedParams& params) {
    return params.rowBytes2 != 0 ? params.rowBytes2 : tightRowBytes2(params);
}

// The first byte of row `y` of the caller's plane that holds the samples of this role.
uint64_t rowOffset(const UncompressedParams& params, Role role, uint64_t y) {
    const uint64_t first = params.height * stride(params);
    const uint64_t chroma = half(params.height) * stride2(params);
    const bool planar = is420(params.colorComponentOrder);
    if (role == Role::Cb || role == Role::Cr) {
        return first + (role == Role::Cr ? chroma : 0) + y * stride2(params);
    }
    if (role == Role::Alpha && hasAlphaBehind(params.colorComponentOrder)) {
        return first + y * stride2(params);
    }
    return (role == Role::Alpha && planar ? first + 2 * chroma : 0) + y * stride(params);
}

// Where sample `i` of row `y` of a plane lies in the caller's picture.
uint64_t sampleOffset(const UncompressedParams& params, Role role, uint64_t y, uint64_t i) {
    const Arrangement& order = arrangement(params.colorComponentOrder);
    uint64_t position = order.samples * (i / order.components) + order.positions.at(i % order.components);
    if (role == Role::Alpha) {
        position = order.alpha == kApart ? i : order.samples * i + order.alpha;
    }
    return rowOffset(params, role, y) + position * sampleBytes(params.componentType);
}

uint32_t readWord(const Bytes& bytes, uint64_t offset, uint32_t count) {
    uint32_t word = 0;
    for (uint32_t k = 0; k < count; ++k) {
        word |= uint32_t{bytes.at(offset + k)} << (8 * k);
    }
    return word;
}

void writeWord(Bytes& bytes, uint64_t offset, uint32_t count, uint32_t word) {
    for (uint32_t k = 0; k < count; ++k) {
        bytes.at(offset + k) = static_cast<uint8_t>(word >> (8 * k));
    }
}

// A sample as it stands in the caller's word.
uint32_t callerWord(const UncompressedParams& params, Role role, uint64_t y, uint64_t i, const Bytes& picture) {
    if (params.componentType == plenar::Packed10) {
        return ((readWord(picture, rowOffset(params, role, y) + 4 * (i / 3), 4) >> (10 * (i % 3))) & 0x3FF) << 6;
    }
    return readWord(picture, sampleOffset(params, role, y, i), sampleBytes(params.componentType));
}

// Rows of 10 and 12 bits hold the high bytes of all samples, then the low bits of all samples, lowest bits first. A
// byte past the end of the payload counts as 0.
uint32_t splitSample(const Bytes& src, uint64_t row, uint64_t rowLength, uint32_t lowBits, uint64_t i) {
    const auto at = [&src](uint64_t offset) { return offset < src.size() ? uint32_t{src[offset]} : 0; };
    const uint64_t bit = i * lowBits;
    const uint32_t low = (at(row + rowLength + bit / 8) >> (bit % 8)) & ((1U << lowBits) - 1);
    return at(row + i) << 8 | low << (8 - lowBits);
}

Bytes encodedPlane(const UncompressedParams& params, const Plane& plane, const Bytes& picture) {
    const uint32_t bits = planeBits(plane.code);
    const uint64_t samples = rowSamples(plane.code, plane.width);
    const uint64_t rowBytes = planeRowBytes(plane.code, plane.width);
    Bytes data(plane.height * rowBytes);
    for (uint64_t y = 0; y < plane.height; ++y) {
        for (uint64_t i = 0; i < samples; ++i) {
            const uint32_t word = callerWord(params, roleOf(plane.code), y, i, picture);
            if (bits == 10 || bits == 12) {
                const uint64_t bit = 8 * samples + i * (bits - 8);
                const uint32_t low = (word >> (16 - bits)) & ((1U << (bits - 8)) - 1);
                data.at(y * rowBytes + i) = static_cast<uint8_t>(word >> 8);
                data.at(y * rowBytes + bit / 8) |= static_cast<uint8_t>(low << (bit % 8));
            } else {
                writeWord(data, (y * samples + i) * bits / 8, bits / 8, word);
            }
        }
    }
    return data;
}

// Pixels go in twos, words that no such pixel reaches stay. The low bits are looked for where an even width has them.
void decodePackedRow(uint64_t width, const Bytes& src, uint64_t row, Bytes& picture, uint64_t target) {
    const uint64_t samples = width / 2 * 4;
    for (uint64_t word = 0; 3 * word < samples; ++word) {
        uint32_t value = 0;
        for (uint64_t i = 3 * word; i < std::min(3 * word + 3, samples); ++i) {
            value |= splitSample(src, row, 2 * width, 2, i) >> 6 << (10 * (i % 3));
        }
        const bool addsToOldWord = word % 4 == 1 && samples - word / 4 * 12 == 8;
        const uint32_t old = addsToOldWord ? readWord(picture, target + 4 * word, 4) : 0;
        writeWord(picture, target + 4 * word, 4, old + value);
    }
}

void decodePlane(const UncompressedParams& params, const Plane& plane, uint64_t offset, const Bytes& src,
                 Bytes& picture) {
    const Role role = roleOf(plane.code);
    const uint32_t bits = planeBits(plane.code);
    const bool split = bits == 10 || bits == 12;
    const bool fixedToFloat = isFixed(plane.code) && params.componentType == plenar::Float32;
    const uint32_t bytes = sampleBytes(params.componentType);
    const uint64_t samples = rowSamples(plane.code, plane.width);
    // With an odd width the swapped rows have a luma sample that the plane lacks; a split row is read as if it had it.
    const bool lacksOne = swapsPairs(params.colorComponentOrder) && role == Role::Primary && samples % 2 == 1;
    const uint64_t readSamples = samples + (lacksOne && split ? 1 : 0);
    for (uint64_t y = 0; y < plane.height; ++y) {
        const uint64_t row = offset + y * planeRowBytes(plane.code, plane.width);
        const uint64_t target = rowOffset(params, role, y);
        if (params.componentType == plenar::Packed10) {
            decodePackedRow(plane.width, src, row, picture, target);
            continue;
        }
        if (lacksOne && !split) {
            const uint32_t old = fixedToFloat ? readWord(picture, target + samples * bytes, bytes) : 0;
            writeWord(picture, target + (samples - 1) * bytes, bytes, old);
        }
        for (uint64_t i = 0; i < readSamples; ++i) {
            uint32_t word =
                split ? splitSample(src, row, readSamples, bits - 8, i) : readWord(src, row + i * bits / 8, bits / 8);
            if (fixedToFloat) {
                word = std::bit_cast<uint32_t>(static_cast<float>(static_cast<int16_t>(word)) / 16384.0F);
            }
            writeWord(picture, sampleOffset(params, role, y, i), bytes, word);
        }
    }
}

}  // namespace

UncompressedParams makeParams(uint32_t order, uint32_t type, uint32_t width, uint32_t height, uint32_t rowBytes,
                              uint32_t rowBytes2, uint32_t frameLayout) {
    return {sizeof(UncompressedParams), order, type, width, height, rowBytes, frameLayout, rowBytes2};
}

CompressedParams makeCompressed(uint8_t alphaRle, uint8_t alphaBandLimit) {
    return {sizeof(CompressedParams), alphaRle, alphaBandLimit};
}

bool is422(uint32_t order) {
    return arrangement(order).family == "y2";
}

bool is420(uint32_t order) {
    return arrangement(order).family == "y";
}

bool hasAlpha(uint32_t order) {
    return arrangement(order).alpha != kNoAlpha;
}

uint32_t typeBits(uint32_t type) {
    constexpr std::array<uint32_t, 8> kBits{0, 8, 16, 10, 12, 10, 16, 32};
    return type == plenar::Fixed2p14 ? 16 : type < kBits.size() ? kBits[type] : 0;
}

bool storesAlpha(uint32_t type) {
    return type == plenar::Uint8 || type == plenar::Uint16;
}

std::vector<std::string> planeCodes(uint32_t order, uint32_t type) {
    const bool alphaOnly = order == plenar::AlphaOnly;
    if (arrangement(order).samples == 0 || typeBits(type) == 0 || (alphaOnly && !storesAlpha(type)) ||
        (type == plenar::Packed10 && order != plenar::CbYCrY) || (type == plenar::Fixed2p14 && is420(order))) {
        return {};
    }
    std::vector<std::string> codes{arrangement(order).family};
    if (is420(order)) {
        codes = {"y", "cb", "cr"};
    }
    if (hasAlpha(order) && storesAlpha(type) && !alphaOnly) {
        codes.emplace_back("a");
    }
    const std::string depth = typeBits(type) == 8 ? "08" : std::to_string(typeBits(type));
    for (std::string& code : codes) {
        code += type == plenar::Half16 ? "h" : type == plenar::Float32 ? "f" : type == plenar::Fixed2p14 ? "S1" : depth;
        code.insert(0, 4 - code.size(), ' ');
    }
    return codes;
}

std::vector<std::pair<uint32_t, uint32_t>> allPairs() {
    std::vector<std::pair<uint32_t, uint32_t>> pairs;
    for (uint32_t order = 1; order <= 16; ++order) {
        for (uint32_t type = 1; type <= plenar::Fixed2p14; ++type) {
            if (!planeCodes(order, type).empty()) {
                pairs.emplace_back(order, type);
            }
        }
    }
    return pairs;
}

uint64_t tightRowBytes(const UncompressedParams& params) {
    const uint64_t width = params.width;
    const uint32_t order = params.colorComponentOrder;
    if (params.componentType == plenar::Packed10) {
        return (width + 5) / 6 * 16;
    }
    const uint64_t shared = is422(order) && width % 2 == 1 ? (swapsPairs(order) ? 2 : 1) : 0;
    return (arrangement(order).samples * width + shared) * sampleBytes(params.componentType);
}

uint64_t tightRowBytes2(const UncompressedParams& params) {
    const uint32_t order = params.colorComponentOrder;
    const uint64_t samples = is420(order) ? half(params.width) : hasAlphaBehind(order) ? params.width : 0;
    return samples * sampleBytes(params.componentType);
}

uint64_t pictureSize(const UncompressedParams& params) {
    const uint32_t order = params.colorComponentOrder;
    const uint64_t first = params.height * stride(params);
    if (is420(order)) {
        return (hasAlpha(order) ? 2 : 1) * first + 2 * half(params.height) * stride2(params);
    }
    return first + (hasAlphaBehind(order) ? params.height * stride2(params) : 0);
}

std::vector<Plane> noisePlanes(const UncompressedParams& params, uint32_t seed) {
    std::vector<Plane> planes;
    for (const std::string& code : planeCodes(params.colorComponentOrder, params.componentType)) {
        Plane plane{code, params.width, params.height, static_cast<uint8_t>(params.frameLayout)};
        if (roleOf(code) == Role::Cb || roleOf(code) == Role::Cr) {
            plane.width = static_cast<uint32_t>(half(params.width));
            plane.height = static_cast<uint32_t>(half(params.height));
        }
        plane.data = noise(plane.height * planeRowBytes(code, plane.width), seed++);
        planes.push_back(plane);
    }
    return planes;
}

std::vector<Plane> encodedPlanes(const UncompressedParams& params, const Bytes& picture) {
    std::vector<Plane> planes = noisePlanes(params, 0);
    for (Plane& plane : planes) {
        plane.data = encodedPlane(params, plane, picture);
    }
    return planes;
}

void decodeInto(const UncompressedParams& params, const std::vector<Plane>& planes, const Bytes& src, Bytes& picture) {
    for (const std::string& wanted : planeCodes(params.colorComponentOrder, params.componentType)) {
        for (size_t k = 0; k < planes.size(); ++k) {
            if (roleOf(planes[k].code) == roleOf(wanted)) {
                decodePlane(params, planes[k], dataOffset(planes, k), src, picture);
            }
        }
    }
}

std::string decodeRefusal(const std::vector<Plane>& planes, uint32_t order, uint32_t type) {
    const bool fixedToFloat = isFixed(planes[0].code) && type == plenar::Float32;
    if (!fixedToFloat && planeBits(planes[0].code) != typeBits(type)) {
        return "bit depth in src metadata is different than bit depth in uncompressed params";
    }
    const std::vector<std::string> wanted = planeCodes(order, type);
    if (wanted.empty()) {
        return "combination of color component order and component type is not supported";
    }
    for (const std::string& code : wanted) {
        const bool held = std::any_of(planes.begin(), planes.end(), [&](const Plane& plane) {
            return plane.code == code || (isFixed(plane.code) && code == " " + plane.code.substr(0, 2) + "f");
        });
        if (!held) {
            return "src metadata type is incompatible with color component order or component type";
        }
    }
    return hasAlpha(order) && !storesAlpha(type) ? "Only 8 and 16 bit alpha is supported" : "";
}

Bytes noise(size_t size, uint32_t seed) {
    Bytes bytes(size);
    uint32_t state = seed * 2654435761U + 1;
    for (uint8_t& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return bytes;
}

}  // namespace plenar_test
