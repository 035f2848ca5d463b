// The fast kernels of rows against their plain twins, by way of the code that calls them: any content and width at any
// place, in buffers that end where the row does. The twins of coded planes meet in fuzz_coded_planes.cpp.
#include "conversion/convert_rows.h"
#include "conversion/row_kernels.h"
#include "format/format_planes.h"
#include "format/picture_layout.h"
#include "frame/picture_planes.h"
#include "frame_calls.h"

namespace plenar_fuzz {
namespace {

template <class Run>
void RequireTwins(const Run& run) {
    plenar::ForceTarget(plenar::Target::Plain);
    const Bytes expected = run();
    for (const plenar::Target target : plenar::RunnableTargets()) {
        plenar::ForceTarget(target);
        Require(run() == expected, "all sets of kernels give the same bytes");
    }
}

// Where all rows of a call lie: `shift` bytes from the end of exact memory, or from its beginning.
struct Place {
    uint32_t buffer;
    size_t shift;
};

struct Row {
    Row(const Place& place, size_t size, const Bytes& content = {})
        : memory(Bytes(size + place.shift, 0xCD), place.buffer),
          data(memory.data() + (place.buffer % 3 == 1 ? 0 : place.shift)) {
        std::copy_n(content.begin(), content.empty() ? 0 : size, data);
    }

    ExactBuffer memory;
    uint8_t* data;
};

// One row to its plane or from it, with alpha of its own.
Bytes ConvertRow(const UncompressedParams& params, bool encodes, bool fixedToFloat, const Place& place,
                 const Bytes& content) {
    static plenar::WorkPool pool(0);
    const Bytes none;
    const bool hasAlpha = plenar::HasInterleavedAlpha(params.colorComponentOrder);
    const bool keepsAlpha = hasAlpha && plenar_test::StoresAlpha(params.componentType);
    const size_t alphaSize = hasAlpha ? plenar::AlphaRowBytes(params) : 0;
    const size_t callerSize = plenar_test::TightRowBytes(params);
    const size_t planeSize =
        plenar::PlaneRowBytes(*plenar::LookupFormatPlanes(params)[0], params.width) >> (fixedToFloat ? 1 : 0);
    const Row caller(place, callerSize, encodes ? content : none);
    const Row plane(place, planeSize, encodes ? none : content);
    const Row alpha(place, alphaSize, encodes ? none : content);
    if (encodes) {
        plenar::EncodeRows(pool, {params, caller.data, callerSize, callerSize, plane.data, planeSize,
                                  keepsAlpha ? alpha.data : nullptr, alphaSize});
    } else {
        plenar::DecodeRows(pool, {params, fixedToFloat, plane.data, planeSize, plane.data + planeSize, alpha.data,
                                  alphaSize, caller.data, callerSize, callerSize});
    }
    return plenar_test::Join({caller.memory.Content(), plane.memory.Content(), alpha.memory.Content()});
}

// What no row of moderate length shows: copies past the cache, and rows reordered in place.
Bytes RunAlone(uint32_t kernel, size_t sampleBytes, size_t units, const Place& place, const Bytes& content) {
    const plenar::RowKernels& kernels = plenar::ActiveRowKernels();
    const size_t bytes = 3 * sampleBytes * units;
    const Row source(place, bytes, content);
    const Row target(place, bytes);
    if (kernel % 3 == 0) {
        kernels.streamCopy(source.data, target.data, bytes);
    } else if (kernel % 3 == 1) {
        kernels.reverseTriples(sampleBytes, source.data, source.data, units);
    } else {
        kernels.swapPairs(sampleBytes, source.data, source.data, 3 * units / 2);
    }
    return plenar_test::Join({source.memory.Content(), target.memory.Content()});
}

}  // namespace
}  // namespace plenar_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plenar_fuzz;
    constexpr uint32_t kMostPixels = 160;
    FuzzInput input(data, size);
    const auto [order, type] = TakePair(input);
    if (plenar_test::PlaneCodes(order, type).empty()) {
        return 0;
    }
    const uint32_t alone = input.Byte();
    const bool fixedToFloat =
        input.Flag() && type == PLENAR_TYPE_FLOAT32 && !plenar_test::HasAlpha(order) && !plenar_test::Is420(order);
    const bool decodes = !plenar::HasInterleavedAlpha(order) || plenar_test::StoresAlpha(type);
    const uint32_t first = input.Byte();
    const uint32_t span = input.Byte();
    const uint32_t last = std::min(span == 0xFF ? kMostPixels : first + span % 8, kMostPixels);
    const Place place = {input.Byte(), input.Byte() % 80U};
    const Bytes content = input.Fill(16 * kMostPixels);
    for (uint32_t width = first; width <= last; ++width) {
        const UncompressedParams params = plenar_test::MakeParams(order, type, width, 1);
        const Place at = span == 0xFF ? Place{width, width / 3 % 2 * (width % 64)} : place;
        if (width % 2 == 0 || !plenar_test::Is422(order)) {
            RequireTwins([&] { return ConvertRow(params, true, false, at, content); });
        }
        if (decodes) {
            RequireTwins([&] { return ConvertRow(params, false, fixedToFloat, at, content); });
        }
        RequireTwins([&] { return RunAlone(alone, size_t{1} << alone / 3 % 3, width, at, content); });
    }
    return 0;
}
