#include "rle/plane_encoder.h"

#include <cstring>

#include "base/exceptions.h"
#include "pool/work_pool.h"
#include "rle/band_encoder.h"
#include "rle/band_job.h"
#include "rle/band_table.h"

namespace plenar {
namespace {

// The sizes that callers plan with wrap at 32 bits; the true ones must fit as well.
void CheckSource(const RleParams& params, const uint8_t* src, uint64_t srcSize, const uint8_t* dst) {
    RleCheckParams(params);
    if (src == nullptr || dst == nullptr) {
        throw invalid_argument("src and buffers required to be non-null");
    }
    if (srcSize < RlePlainSize(params) || srcSize < RlePlainExtent(params)) {
        throw invalid_argument("src buffer is too small according to metadata");
    }
}

void CheckTarget(const RleParams& params, uint64_t dstSize) {
    if (dstSize < RleMaxCodedExtent(params)) {
        throw invalid_argument("dst buffer is too small according to metadata");
    }
}

void PlaceJobs(const RleParams& params, const RowBands& bands, uint8_t* dst, RleBandJobs& jobs) {
    RleParams band = params;
    band.band_limit = 1;
    dst += RleHeadReserve;
    for (uint32_t i = 0; i < bands.Count(); ++i) {
        band.height = bands[i].rows;
        jobs[i] = {.params = band, .src = nullptr, .dst = dst, .first_row = bands[i].firstRow};
        dst += RleMaxStreamSize(band, RleSampleCount(band));
    }
}

// `source` tells a job where its samples are.
template <class Source>
uint64_t EncodeBands(WorkPool& pool, uint64_t bytes, const RleParams& params, uint8_t* dst, const Source& source) {
    const RowBands bands = RleBands(params);
    RleBandJobs jobs;
    PlaceJobs(params, bands, dst, jobs);
    RleBandTable table;
    table.count = bands.Count();
    RunBatch(pool, bytes, table.count, [&](uint32_t band) {
        RleBandJob& job = jobs[band];
        source(job, band);
        job.coded_size = static_cast<uint32_t>(RleEncodeBand(job));
    });

    for (uint32_t band = 0; band < table.count; ++band) {
        table.sizes[band] = jobs[band].coded_size;
        table.rows[band] = jobs[band].params.height;
    }
    // The table and the streams never outgrow the reserve and the working places, so every stream moves down.
    uint8_t* end = dst + RleWriteBandTable(table, dst);
    for (uint32_t band = 0; band < table.count; ++band) {
        std::memmove(end, jobs[band].dst, jobs[band].coded_size);
        end += jobs[band].coded_size;
    }
    return static_cast<uint64_t>(end - dst);
}

}  // namespace

uint64_t RleEncodePlane(WorkPool& pool, const RleParams& params, const uint8_t* src, uint64_t srcSize, uint8_t* dst,
                        uint64_t dstSize) {
    CheckSource(params, src, srcSize, dst);
    CheckTarget(params, dstSize);
    return EncodeBands(pool, RleWorkBytes(params), params, dst, [&](RleBandJob& job, uint32_t /*band*/) {
        job.src = src + RleRowStride(params) * job.first_row;
    });
}

uint64_t RleEncodePieces(WorkPool& pool, uint64_t bytes, const RleParams& params, const RleRowPieces& pieces,
                         uint8_t* dst, uint64_t dstSize) {
    RleCheckParams(params);
    CheckTarget(params, dstSize);
    const uint32_t threads = ThreadsFor(pool, bytes);
    return EncodeBands(pool, bytes, params, dst, [&](RleBandJob& job, uint32_t band) {
        job.pieces = &pieces;
        job.buffer = RlePieceBuffer(params, pieces, band % threads);
    });
}

}  // namespace plenar
