#include "hostile_payloads.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <random>

#include "container/box_layout.h"
#include "format/plane_type.h"
#include "rle/band_table.h"
#include "rle/bit_writer.h"

namespace plenar_bench {

namespace {

using Bytes = std::vector<uint8_t>;
using plenar::FourCC;

constexpr Format kUyvy = {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_UINT8};
constexpr Format alpha8 = {PLENAR_ORDER_ALPHA_ONLY, PLENAR_TYPE_UINT8};
constexpr Format alpha16 = {PLENAR_ORDER_ALPHA_ONLY, PLENAR_TYPE_UINT16};
constexpr PictureSize kTiny = {16, 16};

std::minstd_rand SameEachTime(uint32_t seed) {
    return std::minstd_rand(seed);
}

// Boxes

void Append32(Bytes& bytes, uint32_t value) {
    for (uint32_t shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<uint8_t>(value >> shift));
    }
}

void AppendHeader(Bytes& bytes, uint32_t size, uint32_t kind) {
    Append32(bytes, size);
    Append32(bytes, kind);
}

void AppendSinf(Bytes& bytes, PictureSize size, uint32_t code) {
    AppendHeader(bytes, plenar::kSinfBoxSizeWithoutLayout, plenar::box::sinf);
    Append32(bytes, size.width);
    Append32(bytes, size.height);
    Append32(bytes, code);
}

void SetSizeAt(Bytes& bytes, size_t position, size_t size) {
    const auto value = static_cast<uint32_t>(size);
    std::memcpy(bytes.data() + position, &value, sizeof value);
}

// A pack box as large as the frame's honest payload, filled with what `appendOne` appends, over and over.
template <class AppendOne>
Bytes FilledPack(const Frame& frame, const AppendOne& appendOne) {
    const uint32_t size = frame.PayloadLimit();
    Bytes bytes;
    AppendHeader(bytes, size, plenar::box::pack);
    while (bytes.size() < size) {
        appendOne(bytes);
    }
    bytes.resize(size);
    return bytes;
}

// The least box there is, and nothing else.
Bytes LeastBoxes(const Frame& frame) {
    return FilledPack(frame, [](Bytes& bytes) { AppendHeader(bytes, 0, FourCC("none")); });
}

// Small boxes of sizes that no processor foresees.
Bytes UnevenBoxes(const Frame& frame) {
    std::minstd_rand random = SameEachTime(5);
    return FilledPack(frame, [&random](Bytes& bytes) {
        const auto size = static_cast<uint32_t>(7 + (random() >> 8) % 4);
        AppendHeader(bytes, size, FourCC("none"));
        bytes.resize(bytes.size() + (std::max(size, plenar::kBoxHeaderSize) - plenar::kBoxHeaderSize));
    });
}

// Planes without data, each in the least boxes that are accepted.
Bytes LeastPlanes(const Frame& frame, uint32_t code) {
    return FilledPack(frame, [code](Bytes& bytes) {
        AppendHeader(bytes, plenar::kBoxHeaderSize, plenar::box::icmp);
        AppendSinf(bytes, {1, 0}, code);
        AppendHeader(bytes, plenar::kBoxHeaderSize, plenar::box::sdat);
    });
}

// Coded planes

// Appends bits to bytes.
class Bits {
public:
    void Put(uint64_t value, uint32_t n) {
        if (count_ + n > 64) {
            const uint32_t high = 64 - count_;
            PutShort(high == 0 ? 0 : value >> (n - high), high);
            Drain(8);
            PutShort(value, n - high);
            return;
        }
        PutShort(value, n);
    }

    Bytes Take() {
        Drain((count_ + 7) / 8);
        return std::move(bytes_);
    }

private:
    void PutShort(uint64_t value, uint32_t n) {
        if (n != 0) {
            word_ |= (value & plenar::RleBitMask(n)) << (64 - n) >> count_;
            count_ += n;
        }
    }

    void Drain(uint32_t n) {
        for (uint32_t i = 0; i < n; ++i) {
            bytes_.push_back(static_cast<uint8_t>(word_ >> (56 - 8 * i)));
        }
        word_ = 0;
        count_ = 0;
    }

    Bytes bytes_;
    uint64_t word_ = 0;
    uint32_t count_ = 0;
};

struct Token {
    uint32_t mode;
    uint64_t run;
    uint64_t value;  // flag and code
    uint32_t valueBits;
};

void Put(Bits& bits, const Token& token) {
    bits.Put(token.mode, 1);
    if (token.run == 0) {
        bits.Put(0, 32);  // no run length has so many zero bits; they read as 0
        bits.Put(0, 33);
    } else {
        bits.Put(token.run, 2 * static_cast<uint32_t>(std::bit_width(token.run)) - 1);
    }
    bits.Put(token.value, token.valueBits);
}

// The forms of a value: the shortest, the longest, and the plain number.
struct Values {
    bool wide;  // samples of 16 bits

    uint32_t LowBits() const { return wide ? 6 : 2; }
    Token Shortest(uint32_t mode, uint64_t run, uint32_t low) const {
        return {mode, run, uint64_t{2} << LowBits() | low, LowBits() + 2};
    }
    Token Longest(uint32_t mode, uint64_t run) const {
        return {mode, run, plenar::RleBitMask(10) << LowBits() | 1, LowBits() + 10};
    }
    Token Plain(uint32_t mode, uint64_t run, uint32_t value) const { return {mode, run, value, wide ? 17U : 9U}; }
};

using PutTokens = std::function<void(Bits&, const Values&, uint64_t samples)>;

void OneSampleRuns(Bits& bits, const Values& values, uint64_t samples) {
    for (uint64_t i = 0; i < samples; ++i) {
        Put(bits, values.Shortest(i % 2, 1, 2));
    }
}

void LongestCodes(Bits& bits, const Values& values, uint64_t samples) {
    for (uint64_t i = 0; i < samples; ++i) {
        Put(bits, values.Longest(1, 1));
    }
}

void EmptyRuns(Bits& bits, const Values& values, uint64_t samples) {
    for (uint64_t i = 0; i < samples; ++i) {
        Put(bits, values.Shortest(0, 0, 0));
        Put(bits, values.Shortest(0, 1, 2));
    }
}

// Kinds of tokens whose ways through a decoder part, in an order that no processor foresees.
void UnforeseenTokens(Bits& bits, const Values& values, uint64_t samples) {
    std::minstd_rand random = SameEachTime(7);
    for (uint64_t done = 0; done < samples;) {
        const auto chance = static_cast<uint32_t>(random() >> 8);
        const uint64_t run = std::min<uint64_t>(chance % 16 == 0 ? 17 + chance % 7 : 1 + chance % 2, samples - done);
        switch (chance / 16 % 3) {
            case 0:
                Put(bits, values.Shortest(chance & 1, run, chance % 4));
                break;
            case 1:
                Put(bits, values.Longest(chance & 1, run));
                break;
            default:
                Put(bits, values.Plain(chance & 1, run, chance & 0xFF));
        }
        done += run;
    }
}

// Runs of constant second difference, the dearest to compute.
PutTokens Curves(uint64_t length) {
    return [length](Bits& bits, const Values& values, uint64_t samples) {
        for (uint64_t done = 0; done < samples; done += length) {
            Put(bits, values.Shortest(1, std::min(length, samples - done), 2));
        }
    };
}

void OneFlatRun(Bits& bits, const Values& values, uint64_t samples) {
    Put(bits, values.Shortest(0, samples, 0));
}

// Around a coded plane's data.
Bytes Boxed(const Frame& frame, const Bytes& coded) {
    const bool wide = frame.format.type == PLENAR_TYPE_UINT16;
    Bytes bytes;
    AppendHeader(bytes, 0, plenar::box::pack);
    AppendSinf(bytes, frame.size, FourCC(wide ? "rl16" : "rl08"));
    AppendHeader(bytes, static_cast<uint32_t>(coded.size()) + plenar::kBoxHeaderSize, plenar::box::sdat);
    bytes.insert(bytes.end(), coded.begin(), coded.end());
    SetSizeAt(bytes, 0, bytes.size());
    return bytes;
}

Bytes Boxed(const Frame& frame, const plenar::RleBandTable& table, const Bytes& streams) {
    Bytes coded(plenar::RleHeadReserve);
    coded.resize(plenar::RleWriteBandTable(table, coded.data()));
    coded.insert(coded.end(), streams.begin(), streams.end());
    return Boxed(frame, coded);
}

// How a plane is cut into bands: all with streams of their own, or all with the same.
struct Cut {
    uint32_t bands;
    bool shared;
};

Bytes CodedPlane(const Frame& frame, const Cut& cut, const PutTokens& putTokens) {
    const Values values = {frame.format.type == PLENAR_TYPE_UINT16};
    plenar::RleBandTable table = {};
    table.count = cut.bands;
    Bytes streams;
    for (uint32_t band = 0; band < cut.bands; ++band) {
        table.rows[band] = frame.size.height / cut.bands + (band < frame.size.height % cut.bands ? 1 : 0);
        if (band == 0 || !cut.shared) {
            Bits bits;
            putTokens(bits, values, uint64_t{frame.size.width} * table.rows[band]);
            const Bytes stream = bits.Take();
            streams.insert(streams.end(), stream.begin(), stream.end());
            table.sizes[band] = cut.shared ? 0 : static_cast<uint32_t>(stream.size());
        }
    }
    return Boxed(frame, table, streams);
}

// A table that goes on to the end of the payload: groups of no entries, or one value with a prefix without end.
Bytes EndlessTable(const Frame& frame, bool groups) {
    Bits bits;
    bits.Put(plenar::kRleMaxBands, 8);
    const uint64_t wanted = uint64_t{8} * frame.PayloadLimit();
    if (groups) {
        for (uint64_t done = 0; done < wanted; done += 77) {
            bits.Put(0, 32);
            bits.Put(0, 33);
            bits.Put(uint64_t{2} << 10, 12);
        }
    } else {
        bits.Put(1, 1);
        for (uint64_t done = 0; done < wanted; done += 64) {
            bits.Put(~uint64_t{0}, 64);
        }
    }
    return Boxed(frame, bits.Take());
}

// All rows in the first band, and 254 bands without any.
Bytes IdleBands(const Frame& frame) {
    Bits bits;
    OneFlatRun(bits, {false}, frame.Pixels());
    const Bytes stream = bits.Take();
    plenar::RleBandTable table = {};
    table.count = plenar::kRleMaxBands;
    table.rows[0] = frame.size.height;
    table.sizes[0] = static_cast<uint32_t>(stream.size());
    return Boxed(frame, table, stream);
}

// Noise in the first `rows` rows, flat below.
Bytes PartlyNoise(const Frame& frame, uint32_t rows) {
    Bytes samples(frame.PictureBytes(Direction::Encode), 0xFF);
    std::minstd_rand random = SameEachTime(3);
    std::generate_n(samples.begin(), samples.size() / frame.size.height * rows,
                    [&] { return static_cast<uint8_t>(random() >> 8); });
    return samples;
}

}  // namespace

std::vector<HostilePayload> HostilePayloads() {
    std::vector<HostilePayload> all;
    const auto add = [&](const std::string& name, const Frame& frame, const std::function<Bytes(const Frame&)>& make) {
        all.push_back({name, frame, [=] { return make(frame); }});
    };
    for (const auto& [sizeName, size] : {std::pair{"HD", kHd}, std::pair{"L2", CachedSize(kUyvy, Direction::Decode)}}) {
        const Frame frame = {kUyvy, size};
        const std::string prefix = std::string(sizeName) + "/t1/";
        add(prefix + "boxes-least", frame, LeastBoxes);
        add(prefix + "boxes-uneven", frame, UnevenBoxes);
        add(prefix + "boxes-planes", frame, [](const Frame& f) { return LeastPlanes(f, FourCC("cr f")); });
        add(prefix + "boxes-unknown", frame, [](const Frame& f) { return LeastPlanes(f, FourCC("none")); });
    }
    struct Streams {
        const char* name;
        Cut cut;
        PutTokens putTokens;
    };
    const Streams kinds[] = {
        {"one-sample", {16, false}, OneSampleRuns},
        {"one-sample-255", {255, false}, OneSampleRuns},
        {"one-sample-255-shared", {255, true}, OneSampleRuns},
        {"longest-codes", {16, false}, LongestCodes},
        {"unforeseen", {16, false}, UnforeseenTokens},
        {"unforeseen-255-shared", {255, true}, UnforeseenTokens},
        {"empty-runs", {16, false}, EmptyRuns},
        {"empty-runs-255-shared", {255, true}, EmptyRuns},
        {"curves", {16, false}, Curves(uint64_t{1} << 62)},
        {"short-curves", {16, false}, Curves(16)},
        {"long-run", {1, false}, OneFlatRun},
    };
    for (const auto& [depthName, format] : {std::pair{"-8", alpha8}, std::pair{"-16", alpha16}}) {
        const Frame frame = {format, kHd, true};
        for (const Streams& kind : kinds) {
            add(std::string("HD/t1/") + kind.name + depthName, frame,
                [kind](const Frame& f) { return CodedPlane(f, kind.cut, kind.putTokens); });
        }
    }
    const Frame coded = {alpha8, kHd, true};
    add("HD/t1/table-groups-8", coded, [](const Frame& f) { return EndlessTable(f, true); });
    add("HD/t1/table-prefix-8", coded, [](const Frame& f) { return EndlessTable(f, false); });
    add("16x16/t1/idle-bands-8", {alpha8, kTiny, true}, IdleBands);
    add("16x16/t2/idle-bands-8", {alpha8, kTiny, true}, IdleBands);
    return all;
}

std::vector<uint8_t> HonestPayload(const Frame& frame, size_t size) {
    if (!frame.codesAlpha) {
        return EncodedFrame(frame, PartlyNoise(frame, frame.size.height));
    }
    uint32_t fits = 0;
    for (uint32_t step = std::bit_floor(frame.size.height); step != 0; step /= 2) {
        if (fits + step <= frame.size.height && EncodedFrame(frame, PartlyNoise(frame, fits + step)).size() <= size) {
            fits += step;
        }
    }
    Bytes payload = EncodedFrame(frame, PartlyNoise(frame, fits));
    if (payload.size() < size) {
        payload.resize(size);
        SetSizeAt(payload, 0, size);
        SetSizeAt(payload, kFirstPlaneOffset - plenar::kBoxHeaderSize,
                  size - kFirstPlaneOffset + plenar::kBoxHeaderSize);
    }
    return payload;
}

}  // namespace plenar_bench
