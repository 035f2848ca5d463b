// Samples and alpha, as OpenImageIO describes them and as the library does.
#pragma once

#include <OpenImageIO/imageio.h>

#include <cstdint>
#include <string_view>

#include "picture_file.h"
#include "sample_layout.h"

namespace plenar_tool {

struct FileType {
    uint32_t type;
    OIIO::TypeDesc::BASETYPE base;
    int bits;
};

// Throw std::runtime_error for types that the other side lacks.
const FileType& FileTypeOf(uint32_t type);
const FileType& FileTypeOf(const OIIO::ImageSpec& spec);

// The hint that makes OpenImageIO leave colours as the file has them.
inline constexpr const char* kUnassociatedAlpha = "oiio:UnassociatedAlpha";

AlphaMeaning AlphaMeaningOf(const OIIO::ImageSpec& spec, std::string_view formatName);

// Brings the picture's colours into the wanted form, unless its notes say that they have it.
void ChangeAlpha(Picture& picture, AlphaChange change);

}  // namespace plenar_tool
