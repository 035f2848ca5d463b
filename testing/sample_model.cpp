#include "testing/sample_model.h"

#include <algorithm>
#include <array>
#include <bit>

#include "testing/names.h"

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

const Arrangement& ArrangementOf(uint32_t order) {
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
bool HasAlphaBehind(uint32_t order) {
    return Is422(order) && ArrangementOf(order).alpha == kApart;
}

bool SwapsPairs(uint32_t order) {
    return Is422(order) && ArrangementOf(order).positions[0] == 1;
}

uint32_t SampleBytes(uint32_t type) {
    return type == plenar::Uint8 ? 1 : type == plenar::Float32 ? 4 : 2;
}

uint64_t Half(uint64_t size) {
    return (size + 1) / 2;
}

enum class Role { Primary, Cb, Cr, Alpha };

Role RoleOf(const std::string& code) {
    const auto has = [&code](const char* family) { return code.find(family) != std::string::npos; };
    return has("cb") ? Role::Cb : has("cr") ? Role::Cr : has("a") ? Role::Alpha : Role::Primary;
}

bool IsFixed(const std::string& code) {
    return code.substr(2) == "S1";
}

uint32_t PlaneBits(const std::string& code) {
    const char last = code.back();
    return last == '8' ? 8 : last == '0' ? 10 : last == '2' ? 12 : last == 'f' ? 32 : 16;
}

uint64_t RowSamples(const std::string& code, uint64_t width) {
    if (code.find("y2") != std::string::npos) {
        return 2 * width + (width & 1);
    }
    return code.find("y4") != std::string::npos || code.find("rg") != std::string::npos ? 3 * width : width;
}

uint64_t PlaneRowBytes(const std::string& code, uint64_t width) {
    return (PlaneBits(code) * RowSamples(code, width) + 7) / 8;
}

uint64_t Stride(const UncompressedParams& params) {
    return params.rowBytes != 0 ? params.rowBytes : TightRowBytes(params);
}

uint64_t Stride2(const UncompressedParams& params) {
    return params.rowBytes2 != 0 ? params.rowBytes2 : TightRowBytes2(params);
}

// The first byte of row `y` of the caller's plane that holds the samples of this role.
uint64_t RowOffset(const UncompressedParams& params, Role role, uint64_t y) {
    const uint64_t first = params.height * Stride(params);
    const uint64_t chroma = Half(params.height) * Stride2(params);
    const bool planar = Is420(params.colorComponentOrder);
    if (role == Role::Cb || role == Role::Cr) {
        return first + (role == Role::Cr ? chroma : 0) + y * Stride2(params);
    }
    if (role == Role::Alpha && HasAlphaBehind(params.colorComponentOrder)) {
        return first + y * Stride2(params);
    }
    return (role == Role::Alpha && planar ? first + 2 * chroma : 0) + y * Stride(params);
}

// Where sample `i` of row `y` of a plane lies in the caller's picture.
uint64_t SampleOffset(const UncompressedParams& params, Role role, uint64_t y, uint64_t i) {
    const Arrangement& order = ArrangementOf(params.colorComponentOrder);
    uint64_t position = order.samples * (i / order.components) + order.positions.at(i % order.components);
    if (role == Role::Alpha) {
        position = order.alpha == kApart ? i : order.samples * i + order.alpha;
    }
    return RowOffset(params, role, y) + position * SampleBytes(params.componentType);
}

uint32_t ReadWord(const Bytes& bytes, uint64_t offset, uint32_t count) {
    uint32_t word = 0;
    for (uint32_t k = 0; k < count; ++k) {
        word |= uint32_t{bytes.at(offset + k)} << (8 * k);
    }
    return word;
}

void WriteWord(Bytes& bytes, uint64_t offset, uint32_t count, uint32_t word) {
    for (uint32_t k = 0; k < count; ++k) {
        bytes.at(offset + k) = static_cast<uint8_t>(word >> (8 * k));
    }
}

// A sample as it stands in the caller's word.
uint32_t CallerWord(const UncompressedParams& params, Role role, uint64_t y, uint64_t i, const Bytes& picture) {
    if (params.componentType == plenar::Packed10) {
        return ((ReadWord(picture, RowOffset(params, role, y) + 4 * (i / 3), 4) >> (10 * (i % 3))) & 0x3FF) << 6;
    }
    return ReadWord(picture, SampleOffset(params, role, y, i), SampleBytes(params.componentType));
}

// Rows of 10 and 12 bits hold the high bytes of all samples, then the low bits of all samples, lowest bits first. A
// byte past the end of the payload counts as 0.
uint32_t SplitSample(const Bytes& src, uint64_t row, uint64_t rowLength, uint32_t lowBits, uint64_t i) {
    const auto at = [&src](uint64_t offset) { return offset < src.size() ? uint32_t{src[offset]} : 0; };
    const uint64_t bit = i * lowBits;
    const uint32_t low = (at(row + rowLength + bit / 8) >> (bit % 8)) & ((1U << lowBits) - 1);
    return at(row + i) << 8 | low << (8 - lowBits);
}

Bytes EncodedPlane(const UncompressedParams& params, const Plane& plane, const Bytes& picture) {
    const uint32_t bits = PlaneBits(plane.code);
    const uint64_t samples = RowSamples(plane.code, plane.width);
    const uint64_t rowBytes = PlaneRowBytes(plane.code, plane.width);
    Bytes data(plane.height * rowBytes);
    for (uint64_t y = 0; y < plane.height; ++y) {
        for (uint64_t i = 0; i < samples; ++i) {
            const uint32_t word = CallerWord(params, RoleOf(plane.code), y, i, picture);
            if (bits == 10 || bits == 12) {
                const uint64_t bit = 8 * samples + i * (bits - 8);
                const uint32_t low = (word >> (16 - bits)) & ((1U << (bits - 8)) - 1);
                data.at(y * rowBytes + i) = static_cast<uint8_t>(word >> 8);
                data.at(y * rowBytes + bit / 8) |= static_cast<uint8_t>(low << (bit % 8));
            } else {
                WriteWord(data, (y * samples + i) * bits / 8, bits / 8, word);
            }
        }
    }
    return data;
}

// Pixels go in twos, words that no such pixel reaches stay. The low bits are looked for where an even width has them.
void DecodePackedRow(uint64_t width, const Bytes& src, uint64_t row, Bytes& picture, uint64_t target) {
    const uint64_t samples = width / 2 * 4;
    for (uint64_t word = 0; 3 * word < samples; ++word) {
        uint32_t value = 0;
        for (uint64_t i = 3 * word; i < std::min(3 * word + 3, samples); ++i) {
            value |= SplitSample(src, row, 2 * width, 2, i) >> 6 << (10 * (i % 3));
        }
        const bool addsToOldWord = word % 4 == 1 && samples - word / 4 * 12 == 8;
        const uint32_t old = addsToOldWord ? ReadWord(picture, target + 4 * word, 4) : 0;
        WriteWord(picture, target + 4 * word, 4, old + value);
    }
}

void DecodePlane(const UncompressedParams& params, const Plane& plane, uint64_t offset, const Bytes& src,
                 Bytes& picture) {
    const Role role = RoleOf(plane.code);
    const uint32_t bits = PlaneBits(plane.code);
    const bool split = bits == 10 || bits == 12;
    const bool fixedToFloat = IsFixed(plane.code) && params.componentType == plenar::Float32;
    const uint32_t bytes = SampleBytes(params.componentType);
    const uint64_t samples = RowSamples(plane.code, plane.width);
    // With an odd width the swapped rows have a luma sample that the plane lacks; a split row is read as if it had it.
    const bool lacksOne = SwapsPairs(params.colorComponentOrder) && role == Role::Primary && samples % 2 == 1;
    const uint64_t readSamples = samples + (lacksOne && split ? 1 : 0);
    for (uint64_t y = 0; y < plane.height; ++y) {
        const uint64_t row = offset + y * PlaneRowBytes(plane.code, plane.width);
        const uint64_t target = RowOffset(params, role, y);
        if (params.componentType == plenar::Packed10) {
            DecodePackedRow(plane.width, src, row, picture, target);
            continue;
        }
        if (lacksOne && !split) {
            const uint32_t old = fixedToFloat ? ReadWord(picture, target + samples * bytes, bytes) : 0;
            WriteWord(picture, target + (samples - 1) * bytes, bytes, old);
        }
        for (uint64_t i = 0; i < readSamples; ++i) {
            uint32_t word =
                split ? SplitSample(src, row, readSamples, bits - 8, i) : ReadWord(src, row + i * bits / 8, bits / 8);
            if (fixedToFloat) {
                word = std::bit_cast<uint32_t>(static_cast<float>(static_cast<int16_t>(word)) / 16384.0F);
            }
            WriteWord(picture, SampleOffset(params, role, y, i), bytes, word);
        }
    }
}

}  // namespace

UncompressedParams MakeParams(uint32_t order, uint32_t type, uint32_t width, uint32_t height, uint32_t rowBytes,
                              uint32_t rowBytes2, uint32_t frameLayout) {
    return {sizeof(UncompressedParams), order, type, width, height, rowBytes, frameLayout, rowBytes2};
}

CompressedParams MakeCompressed(uint8_t alphaRle, uint8_t alphaBandLimit) {
    return {sizeof(CompressedParams), alphaRle, alphaBandLimit};
}

Bytes RecordBytes(const UncompressedParams& params) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(&params);
    return {bytes, bytes + sizeof(params)};
}

std::string Describe(const UncompressedParams& params) {
    const auto text = [](uint32_t number) { return std::to_string(number); };
    return PairName({params.colorComponentOrder, params.componentType}) + ", " + text(params.width) + " x " +
           text(params.height) + ", rowBytes " + text(params.rowBytes) + ", " + text(params.rowBytes2);
}

bool Is422(uint32_t order) {
    return ArrangementOf(order).family == "y2";
}

bool Is420(uint32_t order) {
    return ArrangementOf(order).family == "y";
}

bool HasAlpha(uint32_t order) {
    return ArrangementOf(order).alpha != kNoAlpha;
}

uint32_t TypeBits(uint32_t type) {
    constexpr std::array<uint32_t, 8> kBits{0, 8, 16, 10, 12, 10, 16, 32};
    return type == plenar::Fixed2p14 ? 16 : type < kBits.size() ? kBits[type] : 0;
}

bool StoresAlpha(uint32_t type) {
    return type == plenar::Uint8 || type == plenar::Uint16;
}

std::vector<std::string> PlaneCodes(uint32_t order, uint32_t type) {
    const bool alphaOnly = order == plenar::AlphaOnly;
    if (ArrangementOf(order).samples == 0 || TypeBits(type) == 0 || (alphaOnly && !StoresAlpha(type)) ||
        (type == plenar::Packed10 && order != plenar::CbYCrY) || (type == plenar::Fixed2p14 && Is420(order))) {
        return {};
    }
    std::vector<std::string> codes{ArrangementOf(order).family};
    if (Is420(order)) {
        codes = {"y", "cb", "cr"};
    }
    if (HasAlpha(order) && StoresAlpha(type) && !alphaOnly) {
        codes.emplace_back("a");
    }
    const std::string depth = TypeBits(type) == 8 ? "08" : std::to_string(TypeBits(type));
    for (std::string& code : codes) {
        code += type == plenar::Half16 ? "h" : type == plenar::Float32 ? "f" : type == plenar::Fixed2p14 ? "S1" : depth;
        code.insert(0, 4 - code.size(), ' ');
    }
    return codes;
}

std::vector<std::pair<uint32_t, uint32_t>> AllPairs() {
    std::vector<std::pair<uint32_t, uint32_t>> pairs;
    for (uint32_t order = 1; order <= 16; ++order) {
        for (uint32_t type = 1; type <= plenar::Fixed2p14; ++type) {
            if (!PlaneCodes(order, type).empty()) {
                pairs.emplace_back(order, type);
            }
        }
    }
    return pairs;
}

uint64_t TightRowBytes(const UncompressedParams& params) {
    const uint64_t width = params.width;
    const uint32_t order = params.colorComponentOrder;
    if (params.componentType == plenar::Packed10) {
        return (width + 5) / 6 * 16;
    }
    const uint64_t shared = Is422(order) && width % 2 == 1 ? (SwapsPairs(order) ? 2 : 1) : 0;
    return (ArrangementOf(order).samples * width + shared) * SampleBytes(params.componentType);
}

uint64_t TightRowBytes2(const UncompressedParams& params) {
    const uint32_t order = params.colorComponentOrder;
    const uint64_t samples = Is420(order) ? Half(params.width) : HasAlphaBehind(order) ? params.width : 0;
    return samples * SampleBytes(params.componentType);
}

uint64_t PictureSize(const UncompressedParams& params) {
    const uint32_t order = params.colorComponentOrder;
    const uint64_t first = params.height * Stride(params);
    if (Is420(order)) {
        return (HasAlpha(order) ? 2 : 1) * first + 2 * Half(params.height) * Stride2(params);
    }
    return first + (HasAlphaBehind(order) ? params.height * Stride2(params) : 0);
}

std::vector<Plane> NoisePlanes(const UncompressedParams& params, uint32_t seed) {
    std::vector<Plane> planes;
    for (const std::string& code : PlaneCodes(params.colorComponentOrder, params.componentType)) {
        Plane plane{code, params.width, params.height, static_cast<uint8_t>(params.frameLayout)};
        if (RoleOf(code) == Role::Cb || RoleOf(code) == Role::Cr) {
            plane.width = static_cast<uint32_t>(Half(params.width));
            plane.height = static_cast<uint32_t>(Half(params.height));
        }
        plane.data = Noise(plane.height * PlaneRowBytes(code, plane.width), seed++);
        planes.push_back(plane);
    }
    return planes;
}

std::vector<Plane> EncodedPlanes(const UncompressedParams& params, const Bytes& picture) {
    std::vector<Plane> planes = NoisePlanes(params, 0);
    for (Plane& plane : planes) {
        plane.data = EncodedPlane(params, plane, picture);
    }
    return planes;
}

void DecodeInto(const UncompressedParams& params, const std::vector<Plane>& planes, const Bytes& src, Bytes& picture) {
    for (const std::string& wanted : PlaneCodes(params.colorComponentOrder, params.componentType)) {
        for (size_t k = 0; k < planes.size(); ++k) {
            if (RoleOf(planes[k].code) == RoleOf(wanted)) {
                DecodePlane(params, planes[k], DataOffset(planes, k), src, picture);
            }
        }
    }
}

std::string DecodeRefusal(const std::vector<Plane>& planes, uint32_t order, uint32_t type) {
    const bool fixedToFloat = IsFixed(planes[0].code) && type == plenar::Float32;
    if (!fixedToFloat && PlaneBits(planes[0].code) != TypeBits(type)) {
        return "bit depth in src metadata is different than bit depth in uncompressed params";
    }
    const std::vector<std::string> wanted = PlaneCodes(order, type);
    if (wanted.empty()) {
        return "combination of color component order and component type is not supported";
    }
    for (const std::string& code : wanted) {
        const bool held = std::any_of(planes.begin(), planes.end(), [&](const Plane& plane) {
            return plane.code == code || (IsFixed(plane.code) && code == " " + plane.code.substr(0, 2) + "f");
        });
        if (!held) {
            return "src metadata type is incompatible with color component order or component type";
        }
    }
    return HasAlpha(order) && !StoresAlpha(type) ? "Only 8 and 16 bit alpha is supported" : "";
}

}  // namespace plenar_test
