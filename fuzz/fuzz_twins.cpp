// Any kernel of rows against its plain twin, at any length and place, on any content. Those of coded planes meet in
// fuzz_coded_planes.cpp.
#include "testing/fuzz_input.h"
#include "testing/require.h"
#include "testing/row_kernel_cases.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plenar_test;
    FuzzInput input(data, size);
    const size_t which = (input.Byte() | size_t{input.Byte()} << 8) % RowKernelCases().size();
    const size_t length = input.Byte() | size_t{input.Byte()} << 8;
    const size_t units = length % (Rarity(data, size) < 7 ? 320 : 5000);  // long rows take long
    const RowPlaces places = {input.Byte(), input.Byte(), input.Byte(), input.Byte()};
    const std::string failure = RowKernelFailure(RowKernelCases()[which], units, places, input.Rest());
    Require(failure.empty(), failure);
    return 0;
}
