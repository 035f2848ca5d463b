#include "rle/plane_decoder.h"

#include <array>

#include "plenar/exceptions.h"
#include "pool/work_pool.h"
#include "rle/band_decoder.h"
#include "rle/band_jobs.h"
#include "rle/band_table.h"

namespace plenar {
namespace {

struct DecodeJob {
    RleParams params;
    const uint8_t* src;
    uint64_t src_size;
    uint8_t* dst;
    RleDefect defect;
};

using DecodeJobs = std::array<DecodeJob, RleMaxBands>;

void CheckBuffers(const RleParams& params, const uint8_t* src, const uint8_t* dst, uint64_t dst_size) {
    RleCheckParams(params);
    if (src == nullptr || dst == nullptr) {
        throw invalid_argument("src and buffers required to be non-null");
    }
    // The size that callers plan with wraps at 32 bits; the true one must fit as well.
    if (dst_size < RlePlainSize(params) || dst_size < RlePlainExtent(params)) {
        throw invalid_argument("dst buffer is too small according to metadata");
    }
}

RleDefect CheckRows(const RleBandTable& table, uint32_t height) {
    uint64_t rows = 0;
    for (uint32_t band = 0; band < table.count; ++band) {
        rows += table.rows[band];
    }
    return table.count == 0 || rows == height ? RleDefect::kNone : RleDefect::kRowSum;
}

// Call after CheckRows, which keeps the bands' places inside `dst`.
RleDefect PlaceJobs(const RleParams& params, const RleBandTable& table, const uint8_t* src, uint64_t src_size,
                    uint8_t* dst, DecodeJobs& jobs) {
    uint64_t start = table.bytes;
    for (uint32_t band = 0; band < table.count; ++band) {
        if (start > src_size) {
            return RleDefect::kBandStartPastEnd;
        }
        DecodeJob& job = jobs[band];
        job = {params, src + start, src_size - start, dst, RleDefect::kNone};
        job.params.height = table.rows[band];
        start += table.sizes[band];
        dst += RleRowStride(params) * table.rows[band];
    }
    return RleDefect::kNone;
}

}  // namespace

uint64_t RleDecodePlane(WorkPool& pool, const RleParams& params, const uint8_t* src, uint64_t src_size, uint8_t* dst,
                        uint64_t dst_size) {
    CheckBuffers(params, src, dst, dst_size);
    RleBandTable table;
    RleThrowDefect(RleReadBandTable(src, src_size, table));
    RleThrowDefect(CheckRows(table, params.height));
    DecodeJobs jobs;
    RleThrowDefect(PlaceJobs(params, table, src, src_size, dst, jobs));
    RleForEachBand(pool, table.count, [&jobs](uint32_t band) {
        DecodeJob& job = jobs[band];
        job.defect = RleDecodeBand(job.params, job.src, job.src_size, job.dst);
    });
    // The first band's defect, not the first one found, so that the message doesn't depend on the workers.
    for (uint32_t band = 0; band < table.count; ++band) {
        RleThrowDefect(jobs[band].defect);
    }
    return RlePlainSize(params);
}

uint32_t RleStatedBands(const uint8_t* src, uint64_t src_size) {
    return src_size == 0 ? 0 : src[0];
}

}  // namespace plenar
