#include "frame/codec_state.h"

namespace plenar {

uint8_t* CodecState::Scratch(size_t size) {
    if (size > scratchSize_) {
        // The old block goes first: its contents are of no use, and both at once may not fit.
        scratch_.reset();
        scratchSize_ = 0;
        scratch_.reset(new uint8_t[size]);
        scratchSize_ = size;
    }
    return scratch_.get();
}

}  // namespace plenar
