// What a payload doesn't hold, in a file of JSON beside it.
#pragma once

#include <filesystem>
#include <string>

#include "sample_layout.h"

namespace plenar_tool {

std::filesystem::path SidecarPath(const std::filesystem::path& payload);

std::string SidecarText(const PictureNotes& notes);

// Throws std::runtime_error.
PictureNotes ReadSidecar(const std::filesystem::path& payload);

}  // namespace plenar_tool
