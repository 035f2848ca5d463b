#include "rle/plane_decoder.h"

#include <algorithm>

#include "base/exceptions.h"
#include "pool/work_pool.h"
#include "rle/band_decoder.h"
#include "rle/band_table.h"

namespace plenar {
namespace {

void CheckTarget(const RleParams& params, const uint8_t* src, const uint8_t* dst, uint64_t dstSize) {
    RleCheckParams(params);
    if (src == nullptr || dst == nullptr) {
        throw invalid_argument("src and buffers required to be non-null");
    }
    // The size that callers plan with wraps at 32 bits; the true one must fit as well.
    if (dstSize < RlePlainSize(params) || dstSize < RlePlainExtent(params)) {
        throw invalid_argument("dst buffer is too small according to metadata");
    }
}

void ThrowDefect(RleDefect defect) {
    switch (defect) {
        case RleDefect::None:
            return;
        case RleDefect::StreamPastEnd:
            throw out_of_range("rle stream runs past the end of the coded plane");
        case RleDefect::RunPastBand:
            throw out_of_range("rle run passes the end of its band");
        case RleDefect::EmptyRuns:
            throw out_of_range("rle band has more empty runs than samples");
        case RleDefect::GroupPastList:
            throw out_of_range("rle index list group passes the end of its list");
        case RleDefect::BandStartPastEnd:
            throw out_of_range("rle band starts past the end of the coded plane");
        case RleDefect::RowSum:
            throw out_of_range("rle band rows do not add up to the height of the plane");
    }
}

RleDefect CheckRows(const RleBandTable& table, uint32_t height) {
    uint64_t rows = 0;
    for (uint32_t band = 0; band < table.count; ++band) {
        rows += table.rows[band];
    }
    return table.count == 0 || rows == height ? RleDefect::None : RleDefect::RowSum;
}

// The most bytes that a band's stream may take of the `rest` behind its start. A stream may run past its stated size,
// which only says where the next one starts (and the last one's may not have survived the table), but no further than
// by an even share of the plane. Without that limit many bands could all read the same bytes, and decoding would take
// far longer than the payload's size justifies.
uint64_t StreamLimit(const RleBandTable& table, uint32_t band, uint64_t srcSize, uint64_t rest) {
    const bool isLast = band + 1 == table.count;
    return isLast ? rest : std::min(rest, table.sizes[band] + srcSize / table.count);
}

RleDefect PlaceJobs(const RleParams& params, const RleBandTable& table, const uint8_t* src, uint64_t srcSize,
                    RleBandJobs& jobs) {
    uint64_t start = table.bytes;
    uint32_t row = 0;
    for (uint32_t band = 0; band < table.count; ++band) {
        if (start > srcSize) {
            return RleDefect::BandStartPastEnd;
        }
        RleBandJob& job = jobs[band];
        job = {.params = params,
               .src = src + start,
               .dst = nullptr,
               .src_size = StreamLimit(table, band, srcSize, srcSize - start),
               .first_row = row};
        job.params.height = table.rows[band];
        start += table.sizes[band];
        row += table.rows[band];
    }
    return RleDefect::None;
}

// Whether to decode bands two at a time. With short runs a decoder mostly waits for the length of the last token, which
// says where the next one starts; a second, independent band fills that time. With long runs it stores samples all the
// time, and two bands only compete for the caches. Small bands end before the pairing pays, and pairs must leave a band
// for every worker.
bool DecodesInPairs(const RleParams& params, uint64_t codedSize, uint32_t bands, uint32_t workers) {
    constexpr uint64_t kMostSamplesPerByte = 12;
    constexpr uint64_t kFewestSamples = 1024;
    const uint64_t samples = RleSampleCount(params);
    return bands >= 2 * std::max<uint64_t>(workers, 1) && samples / bands >= kFewestSamples &&
           samples / kMostSamplesPerByte < codedSize;
}

// `target` tells a job where its samples go. Jobs that run at the same time have other places.
template <class Target>
void DecodeBands(WorkPool& pool, uint64_t bytes, RleBandJobs& jobs, uint32_t count, bool inPairs,
                 const Target& target) {
    const uint32_t step = inPairs ? 2 : 1;
    const uint32_t threads = ThreadsFor(pool, bytes);
    RunBatch(pool, bytes, (count + step - 1) / step, [&jobs, count, step, threads, &target](uint32_t index) {
        const uint32_t band = index * step;
        const uint32_t place = index % threads * step;
        target(jobs[band], place);
        if (step == 2 && band + 1 < count) {
            target(jobs[band + 1], place + 1);
            RleDecodeTwoBands(jobs[band], jobs[band + 1]);
        } else {
            RleDecodeBand(jobs[band]);
        }
    });
}

template <class Target>
void Decode(WorkPool& pool, uint64_t bytes, const RleParams& params, const uint8_t* src, uint64_t srcSize,
            const Target& target) {
    RleBandTable table;
    ThrowDefect(RleReadBandTable(src, srcSize, table));
    ThrowDefect(CheckRows(table, params.height));  // so that bands stay inside the plane
    RleBandJobs jobs;
    ThrowDefect(PlaceJobs(params, table, src, srcSize, jobs));
    const bool inPairs = DecodesInPairs(params, srcSize, table.count, pool.WorkerCount());
    DecodeBands(pool, bytes, jobs, table.count, inPairs, target);
    // The first band's defect, not the first one found, so that the message doesn't depend on the workers.
    for (uint32_t band = 0; band < table.count; ++band) {
        ThrowDefect(jobs[band].defect);
    }
}

}  // namespace

uint64_t RleDecodePlane(WorkPool& pool, const RleParams& params, const uint8_t* src, uint64_t srcSize, uint8_t* dst,
                        uint64_t dstSize) {
    CheckTarget(params, src, dst, dstSize);
    Decode(pool, RleWorkBytes(params), params, src, srcSize,
           [&](RleBandJob& job, uint32_t /*place*/) { job.dst = dst + RleRowStride(params) * job.first_row; });
    return RlePlainSize(params);
}

void RleDecodePieces(WorkPool& pool, uint64_t bytes, const RleParams& params, const uint8_t* src, uint64_t srcSize,
                     const RleRowPieces& pieces) {
    RleCheckParams(params);
    Decode(pool, bytes, params, src, srcSize, [&](RleBandJob& job, uint32_t place) {
        job.pieces = &pieces;
        job.buffer = RlePieceBuffer(params, pieces, place);
    });
}

uint32_t RleStatedBands(const uint8_t* src, uint64_t srcSize) {
    return srcSize == 0 ? 0 : src[0];
}

}  // namespace plenar
