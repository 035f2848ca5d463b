// Vectors by the compilers' extension: lanes of numbers that are added, shifted, compared and masked by the usual
// operators. A source that is compiled for a target includes simd/vector.h, which has the target's width and what the
// operators don't cover. Everything here is local to such a source: the linker keeps one copy of a shared function for
// all, and that copy must not need the newest processor.
#pragma once

#include <cstddef>
#include <cstdint>

namespace plenar {
namespace {

template <class Lane, size_t VectorBytes>
struct VectorType {
    typedef Lane Type __attribute__((vector_size(VectorBytes)));
};

// The same bits as lanes of another kind.
template <class To, class From>
[[gnu::always_inline]] inline To As(From vector) {
    static_assert(sizeof(To) == sizeof(From));
    return reinterpret_cast<To>(vector);
}

template <class Vector>
[[gnu::always_inline]] inline Vector LoadVector(const void* place) {
    Vector vector;
    __builtin_memcpy(&vector, place, sizeof vector);
    return vector;
}

template <class Vector>
[[gnu::always_inline]] inline void StoreVector(void* place, Vector vector) {
    __builtin_memcpy(place, &vector, sizeof vector);
}

}  // namespace
}  // namespace plenar
