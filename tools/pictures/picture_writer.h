// Writes picture files, through OpenImageIO.
#pragma once

#include <string>
#include <vector>

#include "file_descriptor.h"
#include "picture_file.h"
#include "sample_layout.h"

namespace plenar_tool {

// The file is made in shared memory, of which `memory` takes a descriptor: writers of picture files are not to be
// trusted with a disk that may be full. It is read back and compared. Returns what the format doesn't hold. Throws
// std::runtime_error.
std::vector<std::string> WritePictureFile(const std::string& extension, Picture& picture, AlphaChange alphaChange,
                                          FileDescriptor& memory);

}  // namespace plenar_tool
