#include "plenar/codec_state.h"

namespace plenar {

uint8_t* CodecState::Scratch(size_t size) {
    if (size > scratchSize) {
        // The old block goes first: its contents are of no use, and both at once may not fit.
        scratch.reset();
        scratchSize = 0;
        scratch.reset(new uint8_t[size]);
        scratchSize = size;
    }
    return scratch.get();
}

}  // namespace plenar
