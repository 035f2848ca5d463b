// Pictures of alpha to code, drawn by fixed rules: the same bytes on every machine. Sizes of features are in pixels and
// don't grow with the picture, so that a larger picture has more of the same.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "frame_work.h"

namespace plenar_bench {

enum class Matte {
    Flat,
    VerticalGradient,
    HorizontalGradient,  // one ramp over the width
    SteepGradient,       // ramps of 256 pixels, one level a pixel at 8 bits
    Shapes,              // discs and bars with an antialiased edge
    SoftEdges,           // discs that fade over 60 pixels
    Glyphs,              // lines of text-like strokes
    Hair,                // thin translucent strands around a head
    Grain,               // shapes whose soft edges are full of noise
    Sprites,             // small figures of few levels and hard edges
    Noise,
};

inline constexpr Matte kAllMattes[] = {Matte::Flat,
                                       Matte::VerticalGradient,
                                       Matte::HorizontalGradient,
                                       Matte::SteepGradient,
                                       Matte::Shapes,
                                       Matte::SoftEdges,
                                       Matte::Glyphs,
                                       Matte::Hair,
                                       Matte::Grain,
                                       Matte::Sprites,
                                       Matte::Noise};

std::string NameOf(Matte matte);

// Rows without padding, samples of 8 or 16 bits. Kept until another matte is asked for.
const std::vector<uint8_t>& MatteSamples(Matte matte, PictureSize size, uint32_t bits);

}  // namespace plenar_bench
