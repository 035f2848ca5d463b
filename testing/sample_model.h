// A slow, plain model of samples in pictures and payloads: it moves one sample at a time and says for each where it
// lies.
#pragma once

#include <plenar_sdk.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "testing/payload_builder.h"

namespace plenar_test {

inline constexpr uint32_t kOrderCount = 16;

// By name; a pair as "RGBA_Uint16", which may stand in the name of a test.
std::string OrderName(uint32_t order);
std::string TypeName(uint32_t type);
std::string PairName(uint32_t order, uint32_t type);

UncompressedParams MakeParams(uint32_t order, uint32_t type, uint32_t width, uint32_t height, uint32_t rowBytes = 0,
                              uint32_t rowBytes2 = 0, uint32_t frameLayout = 0);
CompressedParams MakeCompressed(uint8_t alphaRle = 0, uint8_t alphaBandLimit = 0);
Bytes RecordBytes(const UncompressedParams& params);
// "RGBA_Uint16, 4 x 2, rowBytes 64, 0"
std::string Describe(const UncompressedParams& params);

// Whether two pixels share chroma samples, in one row or in two.
bool Is422(uint32_t order);
bool Is420(uint32_t order);
bool HasAlpha(uint32_t order);
// The bits of a type's samples, 0 for a number that is no type.
uint32_t TypeBits(uint32_t type);
// Whether alpha of this type has a plane.
bool StoresAlpha(uint32_t type);

// The planes of a payload for this order and type, in their order; empty for a pair that isn't supported.
std::vector<std::string> PlaneCodes(uint32_t order, uint32_t type);

// All supported pairs of order and type.
std::vector<std::pair<uint32_t, uint32_t>> AllPairs();

// The bytes of a row without padding, of the first plane and of the second kind of plane (0 where there is none).
uint64_t TightRowBytes(const UncompressedParams& params);
uint64_t TightRowBytes2(const UncompressedParams& params);
uint64_t PictureSize(const UncompressedParams& params);

// What an encode without coded alpha makes of a picture.
std::vector<Plane> EncodedPlanes(const UncompressedParams& params, const Bytes& picture);

// Planes of the right sizes for the pair, filled with noise: what no encoder writes, such as odd widths in 4:2:2.
std::vector<Plane> NoisePlanes(const UncompressedParams& params, uint32_t seed);

// Decodes `src`, which begins with payloadOf(planes), into `picture`, which holds what was there before.
void DecodeInto(const UncompressedParams& params, const std::vector<Plane>& planes, const Bytes& src, Bytes& picture);

// The message that refuses to decode planes of the right width and height into this order and type, "" for none.
std::string DecodeRefusal(const std::vector<Plane>& planes, uint32_t order, uint32_t type);

}  // namespace plenar_test
