// Plans a frame that is to be encoded: its planes, and where they lie in the payload.
#pragma once

#include <cstdint>

#include "container/frame_plan.h"
#include "plenar_sdk.h"

namespace plenar {

// The plan of a frame to be encoded. A coded alpha plane gets the most it can take. Throws invalid_argument for an
// unsupported pair; sizes beyond 32 bits wrap.
FramePlan PlanFrame(const UncompressedParams& params, const CompressedParams& compressedParams);

// total_size of PlanFrame without the wrap at 32 bits, for a picture that lies in memory.
uint64_t PlannedSize(const UncompressedParams& params, const CompressedParams& compressedParams);

}  // namespace plenar
