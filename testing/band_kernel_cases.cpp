#include "testing/band_kernel_cases.h"

#include <array>
#include <cstdio>

#include "testing/coded_planes.h"

namespace plenar_test {
namespace {

using plenar::RleBandKernels;
using plenar::RleDecodeState;
using plenar::RleDefect;
using plenar::RleParams;
using plenar::RleRun;

template <auto Kernel>
void Take(RleBandKernels& to, const RleBandKernels& from) {
    to.*Kernel = from.*Kernel;
}

// A band on its way from a stream to samples, in memory of just their size.
template <class Sample>
class Decoding {
public:
    Decoding(const RleBandKernels& kernels, const Band& band, uint32_t place)
        : kernels_(kernels),
          stream_(band.stream, place),
          target_(Bytes(band.Samples() * sizeof(Sample), 0xCD), place),
          state_(plenar::RleStartBand<Sample>(stream_.data(), stream_.size(), target_.data(), band.Samples())) {}

    RleDecodeState& State() { return state_; }

    // A token that the fast decoders leave. False for the band's end and for a defect.
    bool Step() {
        RleRun run = {};
        if (state_.remaining != 0 && defect_ == RleDefect::None) {
            defect_ = kernels_.read_token(state_, run);
            if (defect_ == RleDefect::None) {
                kernels_.write_run(state_, run);
                return true;
            }
        }
        return false;
    }

    // What is decoded in the end, and how that ends. Behind the samples anything may stand in the target.
    Bytes Finish() {
        while (defect_ == RleDefect::None) {
            kernels_.decode_tokens(state_);
            if (!Step()) {
                break;
            }
        }
        const auto last = static_cast<Sample>(state_.prev1);
        const auto change = static_cast<Sample>(state_.prev1 - state_.prev2);
        const uint64_t numbers[] = {
            static_cast<uint64_t>(defect_), state_.position, state_.remaining, last, change, target_.IsIntact()};
        const auto* bytes = reinterpret_cast<const uint8_t*>(numbers);
        return Join({Bytes(target_.data(), state_.dst), Bytes(bytes, bytes + sizeof numbers)});
    }

private:
    const RleBandKernels& kernels_;
    ExactBuffer stream_;
    ExactBuffer target_;
    RleDecodeState state_;
    RleDefect defect_ = RleDefect::None;
};

Bytes Encoded(const RleBandKernels& kernels, const Band& band, uint32_t depth, uint32_t place) {
    const RleParams params = {band.width, band.height, depth, 1, band.width * depth / 8 + band.padding};
    const ExactBuffer src(Padded(params, band.plain, plenar::RlePlainExtent(params)), place);
    const ExactBuffer dst(Bytes(plenar::RleMaxStreamSize(params, band.Samples())), place);
    const uint64_t size = kernels.encode_band({params, src.data(), dst.data()});
    return dst.IsIntact() && size <= dst.size() ? Bytes(dst.data(), dst.data() + size) : Bytes();
}

template <class Sample>
Bytes Run(const RleBandKernels& kernels, const Band& band, const Band& other, uint32_t place) {
    Decoding<Sample> alone(kernels, band, place);
    Decoding<Sample> first(kernels, band, place);
    Decoding<Sample> second(kernels, other, place);
    while ((&kernels.decode_tokens_of_two(first.State(), second.State()) == &first.State() ? first : second).Step()) {
    }
    return Join({Encoded(kernels, band, 8 * sizeof(Sample), place), alone.Finish(), first.Finish(), second.Finish()});
}

}  // namespace

const RleBandKernels& BandKernelsFor(plenar::Target target, uint32_t depth) {
    const plenar::RleKernels& kernels = plenar::RleKernelsFor(target);
    return depth == 8 ? kernels.of_8_bits : kernels.of_16_bits;
}

const std::vector<BandKernelCase>& BandKernelCases() {
    static const std::vector<BandKernelCase> kCases = {
        {"encode_band8", 8, Take<&RleBandKernels::encode_band>},
        {"encode_band16", 16, Take<&RleBandKernels::encode_band>},
        {"decode_tokens8", 8, Take<&RleBandKernels::decode_tokens>},
        {"decode_tokens16", 16, Take<&RleBandKernels::decode_tokens>},
        {"decode_tokens_of_two8", 8, Take<&RleBandKernels::decode_tokens_of_two>},
        {"decode_tokens_of_two16", 16, Take<&RleBandKernels::decode_tokens_of_two>},
        {"write_run8", 8, Take<&RleBandKernels::write_run>},
        {"write_run16", 16, Take<&RleBandKernels::write_run>},
    };
    return kCases;
}

std::string BandKernelFailure(const BandKernelCase& kernelCase, const Band& band, const Band& other, uint32_t place) {
    const auto run = kernelCase.depth == 8 ? Run<uint8_t> : Run<uint16_t>;
    Bytes expected;
    plenar::Target target = {};
    const std::function<std::string()> what = [&] {
        std::array<char, 128> text;
        std::snprintf(text.data(), text.size(), "%s of %s, %u x %u samples, place %u: ", kernelCase.kernel,
                      NameOf(target), band.width, band.height, place);
        return std::string(text.data());
    };
    const FaultNote note(what);
    for (const plenar::Target each : plenar::RunnableTargets()) {
        target = each;
        RleBandKernels kernels = BandKernelsFor(plenar::Target::Plain, kernelCase.depth);
        kernelCase.take(kernels, BandKernelsFor(target, kernelCase.depth));
        const Bytes result = run(kernels, band, other, place);
        expected = target == plenar::Target::Plain ? result : expected;
        if (result != expected) {
            return what() + Difference(result, expected);
        }
    }
    return "";
}

}  // namespace plenar_test
