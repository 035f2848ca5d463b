// What a picture file says beside its samples.
#pragma once

#include <OpenImageIO/imageio.h>

#include <map>
#include <string>

namespace plenar_tool {

// All of it but how the samples are stored, as JSON.
std::string MetadataText(const OIIO::ImageSpec& spec);

// Throws std::runtime_error when the text isn't what MetadataText gives.
void ApplyMetadata(const std::string& text, OIIO::ImageSpec& spec);

// The part that changes how the samples are seen or found, where it differs from what is usual: names and values for
// the user.
std::map<std::string, std::string> StatedMetadata(const OIIO::ImageSpec& spec);

}  // namespace plenar_tool
