// Reads picture files, through OpenImageIO.
#pragma once

#include <string>

#include "file_descriptor.h"
#include "picture_file.h"
#include "sample_layout.h"

namespace plenar_tool {

// The samples are in shared memory, of which `memory` takes a descriptor. Throws std::runtime_error.
Picture ReadPictureFile(const std::string& file, AlphaChange alphaChange, FileDescriptor& memory);

bool RecognisePictureFile(const std::string& file);

}  // namespace plenar_tool
