#include "rle/plane_encoder.h"

#include <cstring>

#include "base/exceptions.h"
#include "pool/work_pool.h"
#include "rle/band_encoder.h"
#include "rle/band_job.h"
#include "rle/band_table.h"

namespace plenar {
namespace {

void CheckBuffers(const RleParams& params, const uint8_t* src, uint64_t srcSize, const uint8_t* dst, uint64_t dstSize) {
    RleCheckParams(params);
    if (src == nullptr || dst == nullptr) {
        throw invalid_argument("src and buffers required to be non-null");
    }
    // The sizes that callers plan with wrap at 32 bits; the true ones must fit as well.
    if (srcSize < RlePlainSize(params) || srcSize < RlePlainExtent(params)) {
        throw invalid_argument("src buffer is too small according to metadata");
    }
    if (dstSize < RleMaxCodedExtent(params)) {
        throw invalid_argument("dst buffer is too small according to metadata");
    }
}

void PlaceJobs(const RleParams& params, const RowBands& bands, const uint8_t* src, uint8_t* dst, RleBandJobs& jobs) {
    RleParams band = params;
    band.band_limit = 1;
    dst += RleHeadReserve;
    for (uint32_t i = 0; i < bands.Count(); ++i) {
        band.height = bands[i].rows;
        jobs[i] = {band, src, dst, 0, 0, RleDefect::None};
        src += RleRowStride(band) * band.height;
        dst += RleMaxStreamSize(band, RleSampleCount(band));
    }
}

}  // namespace

uint64_t RleEncodePlane(WorkPool& pool, const RleParams& params, const uint8_t* src, uint64_t srcSize, uint8_t* dst,
                        uint64_t dstSize) {
    CheckBuffers(params, src, srcSize, dst, dstSize);
    const RowBands bands = RleBands(params);
    RleBandJobs jobs;
    PlaceJobs(params, bands, src, dst, jobs);
    RleBandTable table;
    table.count = bands.Count();
    RunBatch(pool, RleWorkBytes(params), table.count, [&jobs](uint32_t band) {
        RleBandJob& job = jobs[band];
        job.coded_size = static_cast<uint32_t>(RleEncodeBand(job.params, job.src, job.dst));
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

}  // namespace plenar
