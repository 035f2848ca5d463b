#include "rle/band_encoder.h"

#include <algorithm>

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

uint64_t RleEncodeBand(const RleBandJob& job) {
    return RleActiveKernels(job.params.bitdepth).encode_band(job);
}

template <class Sample>
uint64_t RleEncodeBandPlain(const RleBandJob& job) {
    RleBitWriter writer(job.dst);
    Sample prev1 = RleSample<Sample>::kMiddle;
    Sample prev2 = prev1;
    SampleClass runClass{};
    uint32_t run = 0;
    const uint8_t* samples = nullptr;
    for (uint32_t row = 0; row < job.params.height; ++row) {
        const uint32_t most = RleRowsAtATime(job);
        samples = row % most == 0 ? RleRowsToCode(job, row, std::min(most, job.params.height - row))
                                  : samples + RleRowStride(job.params);
        for (uint32_t i = 0; i < job.params.width; ++i) {
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
    return static_cast<uint64_t>(writer.Flush() - job.dst);
}

template uint64_t RleEncodeBandPlain<uint8_t>(const RleBandJob& job);
template uint64_t RleEncodeBandPlain<uint16_t>(const RleBandJob& job);

}  // namespace plenar
