#include "token_count.h"

#include <stdexcept>

#include "rle/band_decoder_plain.h"
#include "rle/band_table.h"

namespace plenar_bench {

namespace {

template <class Sample>
uint64_t CountTokensAs(const Frame& frame, const std::vector<uint8_t>& payload) {
    const uint8_t* coded = payload.data() + kFirstPlaneOffset;
    const uint64_t codedBytes = payload.size() - kFirstPlaneOffset;
    plenar::RleBandTable table;
    if (plenar::RleReadBandTable(coded, codedBytes, table) != plenar::RleDefect::None) {
        throw std::runtime_error("a band table that can't be read");
    }
    uint64_t tokens = 0;
    uint64_t start = table.bytes;
    for (uint32_t band = 0; band < table.count; ++band) {
        const uint64_t samples = uint64_t{frame.size.width} * table.rows[band];
        plenar::RleDecodeState state =
            plenar::RleStartBand<Sample>(coded + start, codedBytes - start, nullptr, samples);
        for (; state.remaining != 0; ++tokens) {
            plenar::RleRun run = {};
            if (plenar::RleReadTokenPlain<Sample>(state, run) != plenar::RleDefect::None) {
                throw std::runtime_error("a coded plane that can't be decoded");
            }
        }
        start += table.sizes[band];
    }
    return tokens;
}

}  // namespace

uint64_t CountTokens(const Frame& frame, const std::vector<uint8_t>& plane) {
    const std::vector<uint8_t> payload = EncodedFrame(frame, plane);
    return frame.format.type == PLENAR_TYPE_UINT8 ? CountTokensAs<uint8_t>(frame, payload)
                                                  : CountTokensAs<uint16_t>(frame, payload);
}

}  // namespace plenar_bench
