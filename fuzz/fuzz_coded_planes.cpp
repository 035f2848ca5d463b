// Coded alpha planes, made token by token: what the input says are sound planes, whose samples follow from the tokens,
// or planes with damage on top. All coders have to agree on what they hold, and on what is wrong with them: here the
// fast kernels meet their plain twins.
#include <optional>

#include "testing/coded_planes.h"
#include "testing/message_of.h"
#include "testing/plane_bits.h"
#include "testing/require.h"
#include "testing/targets.h"
#include "testing/token_stream.h"

namespace plenar_fuzz {

using namespace plenar_test;

namespace {

using plenar::RleParams;

// The samples of a plane, by the input's rarity: as a rule all the ways in which runs can end, then bands that are
// decoded in pairs, and most seldom runs that are written by loops of their own.
uint32_t SamplesFor(uint32_t rarity) {
    return rarity < 6 ? 320 : rarity < 10 ? 1U << 12 : 1U << 17;
}

struct CodedPlane {
    RleParams params;
    std::vector<uint32_t> rows;
    std::vector<uint32_t> sizes;
    std::vector<Bytes> streams;
    Bytes plain;  // without padding
    size_t tail;  // bytes behind the last stream

    Bytes Join() const {
        Bytes coded = PlaneOf(sizes, rows, streams);
        coded.resize(coded.size() + tail, 0x6B);
        return coded;
    }
};

// Of no more samples than `most`; `surplus` is what the tokens of each band have beyond its samples.
CodedPlane TakePlane(FuzzInput& input, uint32_t most, int64_t surplus) {
    const uint32_t depth = input.Flag() ? 16 : 8;
    const uint32_t width = 1 + input.Number(240) % std::min(most, 4096U);
    CodedPlane plane = {{width, 0, depth, input.Byte(), 0}, {}, {}, {}, {}, 0};
    const uint32_t padding = input.Byte();
    plane.params.row_bytes = padding < 128 ? 0 : width * depth / 8 + padding % 16;
    const uint32_t bands = 1 + input.Number(6) % 255;
    const bool isBusy = input.Flag();
    for (uint32_t band = 0; band < bands; ++band) {
        const uint64_t left = most / width - std::min<uint64_t>(most / width, plane.params.height);
        const uint64_t least = band + 1 == bands && plane.params.height == 0 ? 1 : 0;
        const auto rows = static_cast<uint32_t>(std::max(std::min<uint64_t>(input.Number(16), left), least));
        const int64_t samples = std::max<int64_t>(int64_t{rows} * width + surplus, 0);
        plane.streams.push_back(TakeStream(input, depth, static_cast<uint64_t>(samples), plane.plain));
        plane.sizes.push_back(static_cast<uint32_t>(plane.streams.back().size()));
        plane.rows.push_back(rows);
        plane.params.height += rows;
    }
    // Busy planes, by the samples for each byte, are decoded in other ways than quiet ones.
    plane.tail = isBusy ? plane.plain.size() / 8 : 0;
    return plane;
}

// Changes what the table states, and then bytes of the whole.
Bytes Damage(FuzzInput& input, CodedPlane plane) {
    for (std::vector<uint32_t>* list : {&plane.sizes, &plane.rows}) {
        uint32_t& entry = (*list)[input.Byte() % list->size()];
        entry = std::min(entry + input.Number(3), 0x7FFFFFU);
    }
    Bytes coded = plane.Join();
    for (uint32_t hits = input.Byte() % 4; hits > 0; --hits) {
        uint8_t& hit = coded[input.Word() % std::min<size_t>(coded.size(), input.Flag() ? 40 : coded.size())];
        hit = static_cast<uint8_t>(hit ^ input.Byte());
    }
    if (input.Flag()) {
        const size_t cut = input.Byte();  // mostly among the last tokens
        coded.resize(cut < 64 ? coded.size() - std::min(coded.size(), cut) : input.Word() % (coded.size() + 40),
                     input.Byte());
    }
    return coded;
}

// The plane, or the message of a failure.
Bytes Decode(const RleParams& params, const Bytes& coded, uint32_t workers, uint32_t rows = 0) {
    Bytes plane(plenar::RlePlainSize(params), 0xCD);
    const std::string message = MessageOf([&] { plane = DecodePlane(params, coded, plane, workers, rows); });
    return message.empty() ? plane : Bytes(message.begin(), message.end());
}

// What every target makes of something.
template <class Make>
Bytes SameOnEachTarget(const char* what, const Make& make) {
    std::optional<Bytes> made;
    OnEachTarget([&](const char* target) {
        const Bytes other = make();
        Require(!made || *made == other, std::string(what) + ", also those of " + target);
        made = other;
    });
    return *made;
}

void RequireSamples(RleParams params, const Bytes& coded, const Bytes& samples) {
    params.row_bytes = 0;
    Require(Decode(params, coded, 0) == samples, "tokens stand for their samples");
}

// Samples of sound planes have the structure that encoders look for.
void RequireSameCodes(const CodedPlane& plane, uint32_t workers) {
    const Bytes padded = Padded(plane.params, plane.plain, plenar::RlePlainSize(plane.params));
    const Bytes coded = SameOnEachTarget("all encoders write the same bytes",
                                         [&] { return EncodePlane(plane.params, padded, workers); });
    RequireSamples(plane.params, coded, plane.plain);
    if (plane.params.row_bytes == 0) {
        Require(EncodePlane(plane.params, padded, workers, 1 + workers) == coded, "pieces are coded as the whole is");
    }
}

}  // namespace
}  // namespace plenar_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plenar_fuzz;
    FuzzInput input(data, size);
    FuzzInput damage = input.Part(40);
    const uint32_t workers = damage.Byte() >= 0xFC ? 2 : 0;
    const bool isDamaged = damage.Flag();
    const CodedPlane plane = TakePlane(input, SamplesFor(Rarity(data, size)), isDamaged ? damage.Byte() % 4 - 1 : 0);
    const Bytes coded = isDamaged ? Damage(damage, plane) : plane.Join();
    const Bytes decoded = SameOnEachTarget("all decoders agree", [&] { return Decode(plane.params, coded, workers); });
    const Bytes inPieces = plane.params.row_bytes == 0 ? Decode(plane.params, coded, workers, 1 + size % 4) : decoded;
    Require(inPieces == decoded, "pieces are decoded as the whole is");
    if (!isDamaged) {
        RequireSamples(plane.params, coded, plane.plain);
        RequireSameCodes(plane, workers);
    }
    return 0;
}
