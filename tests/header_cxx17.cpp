// The public header alone, in C++17: the same as in C.
#include <plenar_sdk.h>

#include <cstddef>

#include "record_layout.h"

int rgb;
int uint8;
int resultOk;
