// The options that say how the samples of a picture are arranged.
#pragma once

#include <CLI/CLI.hpp>

#include "commands.h"

namespace plenar_tool {

void AddPictureOptions(CLI::App& command, PictureOptions& picture);

}  // namespace plenar_tool
