#include "sidecar.h"

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "file_io.h"

namespace plenar_tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kAlphaNames[] = {"unknown", "straight", "associated"};

AlphaMeaning AlphaNamed(const std::string& name) {
    for (const AlphaMeaning meaning : {AlphaMeaning::Unknown, AlphaMeaning::Straight, AlphaMeaning::Associated}) {
        if (name == kAlphaNames[static_cast<size_t>(meaning)]) {
            return meaning;
        }
    }
    throw std::runtime_error("alpha is \"" + name + "\"; straight, associated and unknown are what it can be");
}

}  // namespace

std::filesystem::path SidecarPath(const std::filesystem::path& payload) {
    return payload.string() + ".json";
}

std::string SidecarText(const PictureNotes& notes) {
    const Json sidecar = {{"alpha", kAlphaNames[static_cast<size_t>(notes.alpha)]},
                          {"metadata", Json::parse(notes.metadata)}};
    return sidecar.dump(2) + "\n";
}

PictureNotes ReadSidecar(const std::filesystem::path& payload) try {
    const Buffer text = ReadFile(SidecarPath(payload));
    const Json sidecar = Json::parse(text.Bytes().begin(), text.Bytes().end());
    PictureNotes notes;
    notes.alpha = AlphaNamed(sidecar.at("alpha"));
    notes.metadata = sidecar.at("metadata").dump();
    return notes;
} catch (const std::exception& error) {
    throw std::runtime_error("its sidecar " + SidecarPath(payload).string() + ": " + error.what());
}

}  // namespace plenar_tool
