#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

#include "commands.h"
#include "formats.h"
#include "frame_source.h"
#include "report.h"
#include "sample_difference.h"

namespace plenar_tool {

namespace {

// Calls `load` and adds the file's name to what it throws.
template <class Load>
Frame Named(const std::string& file, Load load) {
    try {
        return load();
    } catch (const std::exception& error) {
        throw std::runtime_error(file + ": " + error.what());
    }
}

Frame LoadNamedPayload(const std::string& file, const CompareOptions& options, SampleUse use) {
    return Named(file, [&] { return LoadPayload(file, options.maxPixels, use); });
}

bool SameFormat(const UncompressedParams& a, const UncompressedParams& b) {
    return a.colorComponentOrder == b.colorComponentOrder && a.componentType == b.componentType && a.width == b.width &&
           a.height == b.height;
}

// The exit status.
int PrintDifference(const CompareOptions& options, const Frame& first, const Frame& second) {
    const std::string files = options.first + " and " + options.second;
    if (!SameFormat(first.format, second.format)) {
        throw std::runtime_error(files + " can't be compared: " + DescribeFormat(first.format) + " and " +
                                 DescribeFormat(second.format));
    }
    const SampleDifference difference = CompareSamples(first.format, first.samples.Bytes(), second.samples.Bytes());
    const std::string samples = std::to_string(difference.samples) + " samples";
    const std::string outcome = difference.different == 0
                                    ? "all " + samples + " agree (" + DescribeFormat(first.format) + ")"
                                    : std::to_string(difference.different) + " of " + samples + " differ; first " +
                                          difference.first + "; greatest difference " +
                                          SampleText(difference.greatest) + ", " + difference.greatestPlace;
    std::printf("%s: %s%s\n", files.c_str(), outcome.c_str(), second.remark.c_str());
    return difference.different == 0 ? 0 : 1;
}

}  // namespace

int RunVerify(const CompareOptions& options) {
    const SampleUse use = options.picture.raw ? SampleUse::AsTheyAre : SampleUse::AsInPictures;
    const Frame payload = LoadNamedPayload(options.first, options, use);
    const Frame picture = Named(options.second, [&] {
        return options.picture.raw ? LoadRawLike(options.second, options.picture, payload.format)
                                   : LoadPictureLike(options.second, payload.format);
    });
    return PrintDifference(options, payload, picture);
}

int RunCompare(const CompareOptions& options) {
    CompareOptions ordered = options;
    // A payload says which samples of the picture to compare with.
    if (!IsPayload(options.first) && IsPayload(options.second)) {
        std::swap(ordered.first, ordered.second);
    }
    const bool bothPayloads = IsPayload(ordered.second);
    const SampleUse use = bothPayloads ? SampleUse::AsTheyAre : SampleUse::AsInPictures;
    const Frame first = IsPayload(ordered.first) ? LoadNamedPayload(ordered.first, options, use)
                                                 : Named(ordered.first, [&] { return LoadPicture(ordered.first); });
    const Frame second = bothPayloads
                             ? LoadNamedPayload(ordered.second, options, use)
                             : Named(ordered.second, [&] { return LoadPictureLike(ordered.second, first.format); });
    return PrintDifference(ordered, first, second);
}

}  // namespace plenar_tool
