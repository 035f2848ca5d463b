// A picture without its samples, as text of a message.
#pragma once

#include <nlohmann/json.hpp>

#include "sample_layout.h"

namespace plenar_tool {

nlohmann::json PictureDescription(const Picture& picture);
Picture DescribedPicture(const nlohmann::json& description);

}  // namespace plenar_tool
