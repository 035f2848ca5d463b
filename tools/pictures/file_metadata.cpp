#include "file_metadata.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace plenar_tool {

namespace {

using Json = nlohmann::ordered_json;
using OIIO::ParamValue;
using OIIO::TypeDesc;

// How samples are stored is the target's own affair, and some of it would change them.
constexpr std::string_view kStorage[] = {"oiio:BitsPerSample",
                                         "oiio:UnassociatedAlpha",
                                         "oiio:subimages",
                                         "oiio:subimagename",
                                         "oiio:ioproxy",
                                         "compression",
                                         "tiff:",
                                         "planarconfig",
                                         "openexr:",
                                         "png:",
                                         "jpeg:",
                                         "thumbnail",
                                         "dpx:Packing",
                                         "dpx:ImageDescriptor"};

struct StatedName {
    std::string_view attribute;
    const char* name;
    std::string_view usual;  // values that go without saying
};

constexpr StatedName kStated[] = {
    {"oiio:ColorSpace", "colour space", "|sRGB|Linear|linear|scene_linear|"},
    {"ICCProfile", "colour profile", ""},
    {"chromaticities", "chromaticities", ""},
    {"dpx:Transfer", "transfer", "|Undefined|User defined|"},
    {"dpx:Colorimetric", "colorimetric", "|Undefined|User defined|"},
    {"Orientation", "orientation", "|1|"},
    {"PixelAspectRatio", "pixel aspect ratio", "|1|"},
    {"FramesPerSecond", "frame rate", "|0|"},
    {"dpx:FrameRate", "frame rate", "|0|"},
    {"dpx:TemporalFrameRate", "frame rate", "|0|"},
    {"smpte:TimeCode", "timecode", ""},
    {"smpte:KeyCode", "key code", ""},
};
constexpr const char* kWindowName = "data window";
constexpr size_t kMaxShownValue = 60;

bool StartsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

bool IsStorage(std::string_view name) {
    return std::any_of(std::begin(kStorage), std::end(kStorage),
                       [&](std::string_view storage) { return StartsWith(name, storage); });
}

std::array<int, 6> Window(const OIIO::ImageSpec& spec) {
    return {spec.x, spec.y, spec.full_x, spec.full_y, spec.full_width, spec.full_height};
}

bool HasWindow(const OIIO::ImageSpec& spec) {
    return Window(spec) != std::array<int, 6>{0, 0, 0, 0, spec.width, spec.height};
}

// OpenImageIO's own names of types don't all lead back to them.
Json TypeJson(const TypeDesc& type) {
    return {TypeDesc(static_cast<TypeDesc::BASETYPE>(type.basetype)).c_str(), type.aggregate, type.vecsemantics,
            type.arraylen};
}

TypeDesc TypeOf(const Json& json) {
    TypeDesc type(json.at(0).get<std::string>());
    json.at(1).get_to(type.aggregate);
    json.at(2).get_to(type.vecsemantics);
    json.at(3).get_to(type.arraylen);
    return type;
}

template <class Value>
Json Values(const ParamValue& attribute) {
    const auto* const values = static_cast<const Value*>(attribute.data());
    return std::vector<Value>(values, values + attribute.type().basevalues());
}

// Nothing for types that no file format needs.
Json AttributeValues(const ParamValue& attribute) {
    switch (attribute.type().basetype) {
        case TypeDesc::UINT8:
            return Values<uint8_t>(attribute);
        case TypeDesc::INT:
            return Values<int>(attribute);
        case TypeDesc::UINT:
            return Values<unsigned>(attribute);
        case TypeDesc::FLOAT:
            return Values<float>(attribute);
        case TypeDesc::STRING:
            return attribute.type() == TypeDesc::STRING ? Json{attribute.get_string()} : Json();
        default:
            return {};
    }
}

template <class Value>
void SetValues(OIIO::ImageSpec& spec, const std::string& name, TypeDesc type, const Json& json) {
    const auto values = json.get<std::vector<Value>>();
    if (values.size() != type.basevalues()) {
        throw std::runtime_error("the sidecar has " + std::to_string(values.size()) + " values for " + name);
    }
    spec.attribute(name, type, values.data());
}

void SetAttribute(OIIO::ImageSpec& spec, const Json& attribute) {
    const std::string name = attribute.at("name");
    const TypeDesc type = TypeOf(attribute.at("type"));
    const Json& values = attribute.at("values");
    switch (type.basetype) {
        case TypeDesc::UINT8:
            return SetValues<uint8_t>(spec, name, type, values);
        case TypeDesc::INT:
            return SetValues<int>(spec, name, type, values);
        case TypeDesc::UINT:
            return SetValues<unsigned>(spec, name, type, values);
        case TypeDesc::FLOAT:
            return SetValues<float>(spec, name, type, values);
        case TypeDesc::STRING:
            spec.attribute(name, values.at(0).get<std::string>());
            return;
        default:
            throw std::runtime_error("the sidecar has an unknown type for " + name);
    }
}

}  // namespace

std::string MetadataText(const OIIO::ImageSpec& spec) {
    Json attributes = Json::array();
    for (const ParamValue& attribute : spec.extra_attribs) {
        Json values = AttributeValues(attribute);
        if (!IsStorage(attribute.name().string()) && !values.empty()) {
            attributes.push_back({{"name", attribute.name().string()},
                                  {"type", TypeJson(attribute.type())},
                                  {"values", std::move(values)}});
        }
    }
    Json metadata = {{"attributes", std::move(attributes)}};
    if (HasWindow(spec)) {
        metadata["window"] = Window(spec);
    }
    return metadata.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void ApplyMetadata(const std::string& text, OIIO::ImageSpec& spec) try {
    const Json metadata = Json::parse(text);
    for (const Json& attribute : metadata.at("attributes")) {
        SetAttribute(spec, attribute);
    }
    if (const auto window = metadata.find("window"); window != metadata.end()) {
        const auto numbers = window->get<std::array<int, 6>>();
        spec.x = numbers[0];
        spec.y = numbers[1];
        spec.full_x = numbers[2];
        spec.full_y = numbers[3];
        spec.full_width = numbers[4];
        spec.full_height = numbers[5];
    }
} catch (const Json::exception& error) {
    throw std::runtime_error(std::string("the sidecar can't be understood: ") + error.what());
}

std::map<std::string, std::string> StatedMetadata(const OIIO::ImageSpec& spec) {
    std::map<std::string, std::string> stated;
    for (const StatedName& candidate : kStated) {
        const ParamValue* const attribute = spec.find_attribute(std::string(candidate.attribute));
        if (attribute == nullptr) {
            continue;
        }
        const std::string value = attribute->get_string(static_cast<int>(kMaxShownValue));
        if (candidate.usual.find("|" + value + "|") == std::string_view::npos && !value.empty()) {
            stated.emplace(candidate.name, value.size() < kMaxShownValue ? value : "of many values");
        }
    }
    if (HasWindow(spec)) {
        stated.emplace(kWindowName, std::to_string(spec.width) + "x" + std::to_string(spec.height) + " of " +
                                        std::to_string(spec.full_width) + "x" + std::to_string(spec.full_height));
    }
    return stated;
}

}  // namespace plenar_tool
