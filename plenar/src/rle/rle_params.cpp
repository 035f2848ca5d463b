#include "rle/rle_params.h"

#include <algorithm>
#include <string>

#include "plenar/exceptions.h"

namespace plenar {
namespace {

constexpr uint32_t kDefaultBandLimit = 16;

}  // namespace

void RleCheckParams(const RleParams& params) {
    if (params.width == 0) {
        throw invalid_argument("Invalid width");
    }
    if (params.height == 0) {
        throw invalid_argument("Invalid height");
    }
    if (params.bitdepth != 8 && params.bitdepth != 16) {
        throw invalid_argument("only 8, and 16 bitdepth supported");
    }
    const uint64_t tight = RleTightRowBytes(params);
    if (params.row_bytes != 0 && params.row_bytes < tight) {
        throw invalid_argument("row_bytes is too small, it should be at least " + std::to_string(tight) +
                               " according to params");
    }
}

uint64_t RlePlainSize(const RleParams& params) {
    if (params.row_bytes != 0) {
        return uint32_t{params.row_bytes * params.height};
    }
    return RleTightRowBytes(params) * params.height;
}

uint64_t RlePlainExtent(const RleParams& params) {
    return params.height == 0 ? 0 : RleRowStride(params) * (params.height - 1) + RleTightRowBytes(params);
}

uint64_t RleTightRowBytes(const RleParams& params) {
    return params.bitdepth == 8 ? params.width : uint64_t{params.width} * 2;
}

uint64_t RleRowStride(const RleParams& params) {
    return params.row_bytes != 0 ? params.row_bytes : RleTightRowBytes(params);
}

uint32_t RleBandCount(const RleParams& params) {
    const uint32_t limit = params.band_limit != 0 ? params.band_limit : kDefaultBandLimit;
    return std::min(params.height, limit);
}

uint32_t RleBandRows(const RleParams& params, uint32_t band) {
    const uint32_t count = RleBandCount(params);
    return params.height / count + (band < params.height % count ? 1 : 0);
}

uint64_t RleMaxCodedSize(const RleParams& params) {
    uint64_t size = RleHeadReserve;
    for (uint32_t band = 0; band < RleBandCount(params); ++band) {
        const uint32_t samples = RleBandRows(params, band) * params.width;
        size += RleMaxStreamSize(params, samples);
    }
    return size;
}

uint64_t RleMaxStreamSize(const RleParams& params, uint64_t samples) {
    return (samples * (params.bitdepth + 3) + 7) / 8;
}

}  // namespace plenar
