#include "rle/rle_defect.h"

#include "base/exceptions.h"

namespace plenar {

void RleThrowDefect(RleDefect defect) {
    switch (defect) {
        case RleDefect::None:
            return;
        case RleDefect::StreamPastEnd:
            throw out_of_range("rle stream runs past the end of the coded plane");
        case RleDefect::RunPastBand:
            throw out_of_range("rle run passes the end of its band");
        case RleDefect::EmptyRuns:
            throw out_of_range("rle band has more empty runs than samples");
        case RleDefect::GroupPastList:
            throw out_of_range("rle index list group passes the end of its list");
        case RleDefect::BandStartPastEnd:
            throw out_of_range("rle band starts past the end of the coded plane");
        case RleDefect::RowSum:
            throw out_of_range("rle band rows do not add up to the height of the plane");
    }
}

}  // namespace plenar
