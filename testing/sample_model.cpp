#include "testing/sample_model.h"

#include <algorithm>
#include <bit>

namespace plenar_test {
namespace {

// How an order arranges the samples of a pixel; in 4:2:2 of a luma sample and the chroma sample beside it.
struct Arrangement {
    std::string name;
    std::string family;       // the plane's code without the depth
    std::string caller;       // the samples in the caller's row, a letter each
    bool alphaApart = false;  // in a plane of its own

    bool Is420() const { return family == "y"; }
    bool Is422() const { return family == "y2"; }
    bool HasAlphaAmong() const { return caller.size() > Plane().size(); }
    bool SwapsPairs() const { return Is422() && caller[0] == 'Y'; }
    std::string Plane() const { return Is422() ? "CY" : family == "rg" ? "RGB" : family == "y4" ? "BYR" : caller; }
};

const Arrangement& ArrangementOf(uint32_t order) {
    static const Arrangement kOrders[] = {{"NoOrder", "", ""},
                                          {"YCbYCr", "y2", "YC"},
                                          {"CbYCrY", "y2", "CY"},
                                          {"ARGB", "rg", "ARGB"},
                                          {"BGRA", "rg", "BGRA"},
                                          {"RGB", "rg", "RGB"},
                                          {"BGR", "rg", "BGR"},
                                          {"RGBA", "rg", "RGBA"},
                                          {"ABGR", "rg", "ABGR"},
                                          {"CbYCr", "y4", "BYR"},
                                          {"YCbCr420Planar", "y", "Y"},
                                          {"CbYACrYA", "y2", "CYA"},
                                          {"YCbCrA", "y4", "YBRA"},
                                          {"YCbCrA420Planar", "y", "Y", true},
                                          {"AlphaOnly", "a", "A", true},
                                          {"YCbYCrPlusAlpha", "y2", "YC", true},
                                          {"CbYCrYPlusAlpha", "y2", "CY", true}};
    return kOrders[order < std::size(kOrders) ? order : 0];
}

struct SampleType {
    const char* name;
    uint32_t bits;
    const char* code;
    uint32_t callerBytes = 2;
};

const SampleType& SampleTypeOf(uint32_t type) {
    static const SampleType kTypes[] = {{"NoType", 0, ""},    {"Uint8", 8, "08", 1},   {"Uint16", 16, "16"},
                                        {"Uint10", 10, "10"}, {"Uint12", 12, "12"},    {"Packed10", 10, "10"},
                                        {"Half16", 16, "h"},  {"Float32", 32, "f", 4}, {"Fixed2p14", 16, "S1"}};
    return kTypes[type < 8 ? type : type == plenar::Fixed2p14 ? 8 : 0];
}

uint64_t Half(uint64_t size) {
    return (size + 1) / 2;
}

// What a plane's code says.
struct Code {
    std::string text;

    bool Has(const char* family) const { return text.find(family) != std::string::npos; }
    bool IsChroma() const { return Has("cb") || Has("cr"); }
    bool IsAlpha() const { return Has("a"); }
    bool IsFixed() const { return text.substr(2) == "S1"; }
    bool IsSplit() const { return Bits() == 10 || Bits() == 12; }
    bool HasRoleOf(const Code& other) const {
        return Has("cb") == other.Has("cb") && Has("cr") == other.Has("cr") && IsAlpha() == other.IsAlpha();
    }
    uint32_t Bits() const {
        const char last = text.back();
        return last == '8' ? 8 : last == '0' ? 10 : last == '2' ? 12 : last == 'f' ? 32 : 16;
    }
    uint64_t RowSamples(uint64_t width) const {
        return Has("y2") ? 2 * width + (width & 1) : Has("y4") || Has("rg") ? 3 * width : width;
    }
    uint64_t RowBytes(uint64_t width) const { return (Bits() * RowSamples(width) + 7) / 8; }
};

// Where the samples of a plane lie in the caller's row: as so many of each group of samples there.
struct SamplePlaces {
    std::vector<uint64_t> among;
    uint64_t groupSamples;
    uint32_t sampleBytes;

    uint64_t Of(uint64_t i) const {
        return (groupSamples * (i / among.size()) + among[i % among.size()]) * sampleBytes;
    }
};

// Where the planes lie in the caller's picture.
struct Layout {
    const UncompressedParams& params;
    const Arrangement& order = ArrangementOf(params.colorComponentOrder);
    uint32_t sampleBytes = SampleTypeOf(params.componentType).callerBytes;
    uint64_t stride = params.rowBytes != 0 ? params.rowBytes : TightRowBytes(params);
    uint64_t stride2 = params.rowBytes2 != 0 ? params.rowBytes2 : TightRowBytes2(params);

    // The first byte of row `y` of the caller's plane that holds the samples.
    uint64_t Row(const Code& code, uint64_t y) const {
        const uint64_t first = params.height * stride;
        const uint64_t chroma = Half(params.height) * stride2;
        if (code.IsChroma() || (code.IsAlpha() && order.Is422() && order.alphaApart)) {
            return first + (code.Has("cr") ? chroma : 0) + y * stride2;
        }
        return (code.IsAlpha() && order.Is420() ? first + 2 * chroma : 0) + y * stride;
    }
    SamplePlaces Samples(const Code& code) const {
        if (code.IsAlpha() && order.alphaApart) {
            return {{0}, 1, sampleBytes};
        }
        SamplePlaces places = {{}, order.caller.size(), sampleBytes};
        for (const char sample : code.IsAlpha() ? std::string("A") : order.Plane()) {
            places.among.push_back(order.caller.find(sample));
        }
        return places;
    }
};

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

// A sample of a row as it stands in the caller's word.
uint32_t CallerWord(const Layout& layout, const SamplePlaces& places, uint64_t row, uint64_t i, const Bytes& picture) {
    if (layout.params.componentType == plenar::Packed10) {
        return ((ReadWord(picture, row + 4 * (i / 3), 4) >> (10 * (i % 3))) & 0x3FF) << 6;
    }
    return ReadWord(picture, row + places.Of(i), layout.sampleBytes);
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
    const Code code = {plane.code};
    const Layout layout = {params};
    const uint32_t bits = code.Bits();
    const uint64_t samples = code.RowSamples(plane.width);
    const bool isSplit = code.IsSplit();
    const SamplePlaces places = layout.Samples(code);
    const uint64_t rowBytes = code.RowBytes(plane.width);
    Bytes data(plane.height * rowBytes);
    for (uint64_t y = 0; y < plane.height; ++y) {
        const uint64_t row = layout.Row(code, y);
        for (uint64_t i = 0; i < samples; ++i) {
            const uint32_t word = CallerWord(layout, places, row, i, picture);
            if (isSplit) {
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
    const Code code = {plane.code};
    const Layout layout = {params};
    const uint32_t bits = code.Bits();
    const uint32_t bytes = layout.sampleBytes;
    const bool fixedToFloat = code.IsFixed() && params.componentType == plenar::Float32;
    const bool isSplit = code.IsSplit();
    const SamplePlaces places = layout.Samples(code);
    const uint64_t samples = code.RowSamples(plane.width);
    // With an odd width the swapped rows have a luma sample that the plane lacks; a split row is read as if it had it.
    const bool lacksOne = layout.order.SwapsPairs() && !code.IsAlpha() && samples % 2 == 1;
    const uint64_t readSamples = samples + (lacksOne && isSplit ? 1 : 0);
    for (uint64_t y = 0; y < plane.height; ++y) {
        const uint64_t row = offset + y * code.RowBytes(plane.width);
        const uint64_t target = layout.Row(code, y);
        if (params.componentType == plenar::Packed10) {
            DecodePackedRow(plane.width, src, row, picture, target);
            continue;
        }
        if (lacksOne && !isSplit) {
            const uint32_t old = fixedToFloat ? ReadWord(picture, target + samples * bytes, bytes) : 0;
            WriteWord(picture, target + (samples - 1) * bytes, bytes, old);
        }
        for (uint64_t i = 0; i < readSamples; ++i) {
            uint32_t word =
                isSplit ? SplitSample(src, row, readSamples, bits - 8, i) : ReadWord(src, row + i * bits / 8, bits / 8);
            if (fixedToFloat) {
                word = std::bit_cast<uint32_t>(static_cast<float>(static_cast<int16_t>(word)) / 16384.0F);
            }
            WriteWord(picture, target + places.Of(i), bytes, word);
        }
    }
}

}  // namespace

std::string PairName(uint32_t order, uint32_t type) {
    return OrderName(order) + "_" + SampleTypeOf(type).name;
}

std::string OrderName(uint32_t order) {
    return ArrangementOf(order).name;
}

std::string TypeName(uint32_t type) {
    return SampleTypeOf(type).name;
}

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
    return PairName(params.colorComponentOrder, params.componentType) + ", " + text(params.width) + " x " +
           text(params.height) + ", rowBytes " + text(params.rowBytes) + ", " + text(params.rowBytes2);
}

bool Is422(uint32_t order) {
    return ArrangementOf(order).Is422();
}

bool Is420(uint32_t order) {
    return ArrangementOf(order).Is420();
}

bool HasAlpha(uint32_t order) {
    return ArrangementOf(order).alphaApart || ArrangementOf(order).HasAlphaAmong();
}

uint32_t TypeBits(uint32_t type) {
    return SampleTypeOf(type).bits;
}

bool StoresAlpha(uint32_t type) {
    return type == plenar::Uint8 || type == plenar::Uint16;
}

std::vector<std::string> PlaneCodes(uint32_t order, uint32_t type) {
    const bool alphaOnly = order == plenar::AlphaOnly;
    if (ArrangementOf(order).family.empty() || TypeBits(type) == 0 || (alphaOnly && !StoresAlpha(type)) ||
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
    for (std::string& code : codes) {
        code += SampleTypeOf(type).code;
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
    const Arrangement& arrangement = ArrangementOf(order);
    const uint64_t shared = Is422(order) && width % 2 == 1 ? (arrangement.SwapsPairs() ? 2 : 1) : 0;
    return (arrangement.caller.size() * width + shared) * SampleTypeOf(params.componentType).callerBytes;
}

uint64_t TightRowBytes2(const UncompressedParams& params) {
    const uint32_t order = params.colorComponentOrder;
    const bool hasAlphaBehind = Is422(order) && ArrangementOf(order).alphaApart;
    const uint64_t samples = Is420(order) ? Half(params.width) : hasAlphaBehind ? params.width : 0;
    return samples * SampleTypeOf(params.componentType).callerBytes;
}

uint64_t PictureSize(const UncompressedParams& params) {
    const uint32_t order = params.colorComponentOrder;
    const Layout layout = {params};
    const uint64_t first = params.height * layout.stride;
    if (Is420(order)) {
        return (HasAlpha(order) ? 2 : 1) * first + 2 * Half(params.height) * layout.stride2;
    }
    return first + (Is422(order) && layout.order.alphaApart ? params.height * layout.stride2 : 0);
}

std::vector<Plane> NoisePlanes(const UncompressedParams& params, uint32_t seed) {
    std::vector<Plane> planes;
    for (const std::string& text : PlaneCodes(params.colorComponentOrder, params.componentType)) {
        const Code code = {text};
        Plane plane{text, params.width, params.height, static_cast<uint8_t>(params.frameLayout)};
        if (code.IsChroma()) {
            plane.width = static_cast<uint32_t>(Half(params.width));
            plane.height = static_cast<uint32_t>(Half(params.height));
        }
        plane.data = Noise(plane.height * code.RowBytes(plane.width), seed++);
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
            if (Code{planes[k].code}.HasRoleOf({wanted})) {
                DecodePlane(params, planes[k], DataOffset(planes, k), src, picture);
            }
        }
    }
}

std::string DecodeRefusal(const std::vector<Plane>& planes, uint32_t order, uint32_t type) {
    const bool fixedToFloat = Code{planes[0].code}.IsFixed() && type == plenar::Float32;
    if (!fixedToFloat && Code{planes[0].code}.Bits() != TypeBits(type)) {
        return "bit depth in src metadata is different than bit depth in uncompressed params";
    }
    const std::vector<std::string> wanted = PlaneCodes(order, type);
    if (wanted.empty()) {
        return "combination of color component order and component type is not supported";
    }
    for (const std::string& code : wanted) {
        const bool held = std::any_of(planes.begin(), planes.end(), [&](const Plane& plane) {
            return plane.code == code || (Code{plane.code}.IsFixed() && code == " " + plane.code.substr(0, 2) + "f");
        });
        if (!held) {
            return "src metadata type is incompatible with color component order or component type";
        }
    }
    return HasAlpha(order) && !StoresAlpha(type) ? "Only 8 and 16 bit alpha is supported" : "";
}

}  // namespace plenar_test
