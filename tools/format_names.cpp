#include "format_names.h"

#include <algorithm>
#include <cctype>
#include <iterator>

#include "formats.h"
#include "nearest_name.h"
#include "task_plan.h"

namespace plenar_tool {

namespace {

constexpr const char* kChromaPairs =
    "keeps Cb and Cr together in a plane of their own, which no order does: rearrange the samples first, into three "
    "planes (YCbCr420Planar) or into CbYCrY";
constexpr const char* kLowBits =
    "has its bits in the low end of a word; Uint10 and Uint12 have them in the high end: multiply the samples first, "
    "by "
    "64 for 10 bits or by 16 for 12 bits";
constexpr const char* kPlanar422 = "has planes that are not 4:2:0, which no order does: rearrange the samples first";

struct RefusedFormat {
    std::string_view name;
    const char* advice;
};

constexpr RefusedFormat kRefusedFormats[] = {
    {"NV12", kChromaPairs},
    {"NV21", kChromaPairs},
    {"NV16", kChromaPairs},
    {"P010", kChromaPairs},
    {"P016", kChromaPairs},
    {"P210", kChromaPairs},
    {"P216", kChromaPairs},
    {"I010", kLowBits},
    {"yuv420p10", kLowBits},
    {"yuv420p12", kLowBits},
    {"yuv422p", kPlanar422},
    {"yuv422p10", kPlanar422},
    {"yuv444p", kPlanar422},
    {"yuv444p10", kPlanar422},
    {"YV12", "has Cr before Cb: exchange these two planes and give I420"},
};

bool SameName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

template <class Table>
auto Find(const Table& table, std::string_view name) {
    return std::find_if(std::begin(table), std::end(table),
                        [&](const auto& entry) { return SameName(entry.name, name); });
}

template <class Table>
std::vector<std::string> Names(const Table& table) {
    std::vector<std::string> names;
    std::transform(std::begin(table), std::end(table), std::back_inserter(names),
                   [](const auto& entry) { return std::string(entry.name); });
    return names;
}

}  // namespace

NamedFormat FindOrderName(const std::string& name) {
    if (const auto* const order = Find(kOrders, name); order != kOrders.end()) {
        return {order->value, 0};
    }
    // Some programs put the order of a word's bytes behind a format's name.
    const std::string_view format = std::string_view(name).substr(0, name.size() - (name.ends_with("le") ? 2 : 0));
    if (const auto* const video = Find(kVideoFormats, format); video != kVideoFormats.end()) {
        return {Find(kOrders, video->order)->value, Find(kTypes, video->type)->value};
    }
    if (const auto* const refused = Find(kRefusedFormats, format); refused != std::end(kRefusedFormats)) {
        throw UsageError("--order " + name + ": this format " + refused->advice);
    }
    std::vector<std::string> names = OrderNames();
    const std::vector<std::string> videoNames = VideoFormatNames();
    const std::string valid = JoinNames(names, "or");
    names.insert(names.end(), videoNames.begin(), videoNames.end());
    throw UsageError("--order " + name + ": no order has this name" + SuggestName(name, names) + "; give " + valid +
                     ", or a video format: " + JoinNames(videoNames, "or"));
}

uint32_t FindTypeName(const std::string& name) {
    if (const auto* const type = Find(kTypes, name); type != kTypes.end()) {
        return type->value;
    }
    throw UsageError("--type " + name + ": no type has this name" + SuggestName(name, TypeNames()) + "; give " +
                     JoinNames(TypeNames(), "or"));
}

std::vector<std::string> OrderNames() {
    return Names(kOrders);
}

std::vector<std::string> TypeNames() {
    return Names(kTypes);
}

std::vector<std::string> VideoFormatNames() {
    return Names(kVideoFormats);
}

}  // namespace plenar_tool
