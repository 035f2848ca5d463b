// Standard output, which may be a full disk or a closed pipe.
#pragma once

namespace plenar_tool {

// Sends out what is still held back. Throws std::runtime_error when that, or anything printed before, failed.
void FlushOutput();

}  // namespace plenar_tool
