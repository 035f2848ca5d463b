// Any kernel against its plain twin, at any length and place, on any content.
#include "testing/band_kernel_cases.h"
#include "testing/require.h"
#include "testing/row_kernel_cases.h"
#include "testing/token_stream.h"

namespace plenar_fuzz {

using namespace plenar_test;

namespace {

void RequireNone(const std::string& failure) {
    Require(failure.empty(), failure);
}

void CompareRows(FuzzInput& input) {
    const auto& cases = RowKernelCases();
    const size_t which = input.Byte() | size_t{input.Byte()} << 8;
    const size_t units = input.Number(240) % 5000;
    const RowPlaces places = {input.Byte(), input.Byte(), input.Byte(), input.Byte()};
    RequireNone(RowKernelFailure(cases[which % cases.size()], units, places, input.Rest()));
}

// The rest of the input is tokens, or it is the stream.
Band TakeBand(FuzzInput& input, uint32_t depth) {
    Band band = {{}, {}, 1 + input.Number(200) % 4096, 1 + input.Byte() % 8U, input.Byte() % 16U};
    const bool isSound = input.Flag();
    band.stream = TakeStream(input, depth, band.Samples(), band.plain);
    band.stream = isSound ? band.stream : input.Rest();
    return band;
}

void CompareBands(FuzzInput& input) {
    const BandKernelCase& kernelCase = BandKernelCases()[input.Byte() % BandKernelCases().size()];
    const uint32_t place = input.Byte();
    FuzzInput part = input.Part(input.Byte());
    const Band other = TakeBand(part, kernelCase.depth);
    RequireNone(BandKernelFailure(kernelCase, TakeBand(input, kernelCase.depth), other, place));
}

}  // namespace
}  // namespace plenar_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plenar_fuzz;
    FuzzInput input(data, size);
    input.Flag() ? CompareRows(input) : CompareBands(input);
    return 0;
}
