#pragma once

#include "container/frame_plan.h"
#include "plenar_sdk.h"

namespace plenar {

// The plan of a frame to be encoded: its planes, and where they lie in the payload. A coded alpha plane gets the most
// it can take. Throws invalid_argument for an unsupported pair; sizes beyond 32 bits wrap, but for trueSize.
FramePlan PlanFrame(const UncompressedParams& params, const CompressedParams& compressedParams);

}  // namespace plenar
