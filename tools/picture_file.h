// Picture files, through OpenImageIO. Samples pass as they stand: no colour conversion, no multiplication by alpha.
#pragma once

#include <filesystem>

#include "sample_layout.h"

namespace plenar_tool {

// The file's first picture with all its channels, and the type that its samples have. Throws std::runtime_error.
Picture ReadPicture(const std::filesystem::path& path);

// Writes a picture of channels RGB, RGBA or A in the file format of the target's extension. Throws std::runtime_error,
// also when that file format would change the samples' type or drop the alpha; then no file is left behind.
void WritePicture(const std::filesystem::path& target, const Picture& picture);

}  // namespace plenar_tool
