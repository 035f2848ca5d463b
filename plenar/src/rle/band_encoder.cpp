#include "rle/band_encoder.h"

#include "rle/rle_kernels.h"

namespace plenar {

uint64_t RleEncodeBand(const RleParams& band, const uint8_t* src, uint8_t* dst) {
    const RleKernels& kernels = RleActiveKernels();
    return band.bitdepth == 8 ? kernels.encode_band8(band, src, dst) : kernels.encode_band16(band, src, dst);
}

}  // namespace plenar
