// The wish of the user or the system that a batch ends: the signals INT, TERM and HUP.
#pragma once

#include <stdexcept>

namespace plenar_tool {

// A frame was given up because a stop is requested.
class Stopped : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// From now on these signals are remembered and end nothing by themselves. A signal that was ignored when the program
// began, as nohup does, stays ignored.
void StopOnSignals();

bool StopRequested();

// The signal that came first, 0 while there is none.
int StopSignal();

// Becomes readable when a stop is requested, for poll().
int StopDescriptor();

}  // namespace plenar_tool
