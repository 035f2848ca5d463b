// The public header alone, in C++17: the same as in C.
#include <plenar_sdk.h>

#include <cstddef>

#include "record_layout.h"

int RGB;
int Uint8;
int ResultOk;
