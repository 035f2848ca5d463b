#include "rle/rle_params.h"

#include <string>

#include "base/exceptions.h"

namespace plenar {
namespace {

constexpr uint32_t kDefaultBandLimit = 16;

// The largest coded plane, with the samples of a band in `Count`.
template <class Count>
uint64_t MaxCodedSize(const RleParams& params) {
    uint64_t size = RleHeadReserve;
    const RowBands bands = RleBands(params);
    for (uint32_t band = 0; band < bands.Count(); ++band) {
        size += RleMaxStreamSize(params, Count{bands[band].rows} * params.width);
    }
    return size;
}

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

RowBands RleBands(const RleParams& params) {
    return SplitRows(params.height, params.band_limit != 0 ? params.band_limit : kDefaultBandLimit);
}

uint64_t RleMaxStreamSize(const RleParams& params, uint64_t samples) {
    return (samples * (params.bitdepth + 3) + 7) / 8;
}

uint64_t RleMaxCodedSize(const RleParams& params) {
    return MaxCodedSize<uint32_t>(params);
}

uint64_t RleMaxCodedExtent(const RleParams& params) {
    return MaxCodedSize<uint64_t>(params);
}

}  // namespace plenar
