#include "pixel_limit.h"

#include <stdexcept>
#include <string>

#include "formats.h"

namespace plenar_tool {

void CheckPixelLimit(const UncompressedParams& params, uint64_t maxPixels) {
    const uint64_t pixels = uint64_t{params.width} * params.height;
    if (pixels > maxPixels) {
        throw std::runtime_error("claims " + DescribeFormat(params) + ", " + std::to_string(pixels) +
                                 " pixels; at most " + std::to_string(maxPixels) + " are taken: see --max-pixels");
    }
}

}  // namespace plenar_tool
