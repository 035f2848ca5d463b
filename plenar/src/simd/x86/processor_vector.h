// The vectors of the target that the including source is compiled for.
#pragma once

#if defined(__AVX2__)
#include "simd/x86/vector_avx2.h"
#else
#include "simd/x86/vector_ssse3.h"
#endif
