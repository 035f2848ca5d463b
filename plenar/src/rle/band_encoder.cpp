#include "rle/band_encoder.h"

#include "base/bytes.h"
#include "rle/bit_writer.h"
#include "rle/rle_codes.h"
#include "rle/rle_kernels.h"

namespace plenar {
namespace {

struct SampleClass {
    uint32_t value;
    uint32_t mode;

    bool operator==(const SampleClass&) const = default;
};

// The folded first or second difference, whichever is smaller; the second where both are the same, but for 0.
template <class Sample>
SampleClass Classify(Sample x, Sample prev1, Sample prev2) {
    const Sample z1 = RleFold(static_cast<Sample>(x - prev1));
    const Sample z2 = RleFold(static_cast<Sample>(x - 2 * prev1 + prev2));
    return z1 != 0 && z1 >= z2 ? SampleClass{z2, 1} : SampleClass{z1, 0};
}

template <class Sample>
void PutRun(RleBitWriter& writer, SampleClass runClass, uint32_t run) {
    if (run != 0) {
        const RleToken token = RleMakeToken(runClass.mode, run, RleValueCode<Sample>(runClass.value));
        writer.Put(token.bits, token.length);
    }
}

}  // namespace

uint64_t RleEncodeBand(const RleParams& band, const uint8_t* src, uint8_t* dst) {
    return RleActiveKernels(band.bitdepth).encode_band(band, src, dst);
}

template <class Sample>
uint64_t RleEncodeBandPlain(const RleParams& band, const uint8_t* src, uint8_t* dst) {
    RleBitWriter writer(dst);
    Sample prev1 = RleSample<Sample>::kMiddle;
    Sample prev2 = prev1;
    SampleClass runClass{};
    uint32_t run = 0;
    for (uint32_t row = 0; row < band.height; ++row) {
        const uint8_t* samples = src + row * RleRowStride(band);
        for (uint32_t i = 0; i < band.width; ++i) {
            const auto x = LoadAs<Sample>(samples + i * sizeof(Sample));
            const SampleClass xClass = Classify(x, prev1, prev2);
            if (xClass != runClass) {
                PutRun<Sample>(writer, runClass, run);
                runClass = xClass;
                run = 0;
            }
            ++run;
            prev2 = prev1;
            prev1 = x;
        }
    }
    PutRun<Sample>(writer, runClass, run);
    return static_cast<uint64_t>(writer.Flush() - dst);
}

template uint64_t RleEncodeBandPlain<uint8_t>(const RleParams& band, const uint8_t* src, uint8_t* dst);
template uint64_t RleEncodeBandPlain<uint16_t>(const RleParams& band, const uint8_t* src, uint8_t* dst);

}  // namespace plenar
