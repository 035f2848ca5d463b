// Which outputs of an earlier, interrupted batch can stay.
#pragma once

#include "task_plan.h"

namespace plenar_tool {

// Whether the output is newer than the input and complete: outputs get their names when they are complete, and of a
// payload the boxes are looked at besides.
bool IsOutputComplete(const Task& task);

}  // namespace plenar_tool
