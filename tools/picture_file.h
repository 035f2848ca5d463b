// Picture files. The libraries that know them run in a process of their own, plenar-pictures, one for each thread.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "file_io.h"
#include "sample_layout.h"

namespace plenar_tool {

// What is to become of colours that have alpha beside them.
enum class AlphaChange { None, Multiply, Divide };

// The file's first picture with all its channels, and the type that its samples have: no conversion of colours, and of
// alpha only if the file doesn't have it yet as `alphaChange` wants it. Throws std::runtime_error, also for a file that
// is cut short.
Picture ReadPicture(const std::filesystem::path& path, AlphaChange alphaChange = AlphaChange::None);

bool IsPicture(const std::filesystem::path& path);

// A picture file in memory, read back and compared with the picture.
struct PictureFile {
    Buffer bytes;
    std::vector<std::string> losses;
};

// A file of a picture with channels RGB, RGBA or A, in the file format of the target's extension, with as much of the
// notes as that format holds. Throws std::runtime_error, also when the format would change the samples' type, drop the
// alpha or turn its meaning around.
PictureFile MakePictureFile(const std::filesystem::path& target, const Picture& picture,
                            AlphaChange alphaChange = AlphaChange::None);

}  // namespace plenar_tool
