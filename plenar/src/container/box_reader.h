// Reads the boxes of a payload into a FramePlan. Safe for any bytes: every field is read only after it was found to lie
// within the payload. The data of planes is jumped over, never read.
#pragma once

#include <cstdint>

#include "container/box_layout.h"
#include "container/frame_plan.h"

namespace plenar {

class MetadataParser {
public:
    // The buffer is not owned. Throws invalid_buffer when it is null or too short for a box.
    MetadataParser(const uint8_t* buffer, uint64_t size);

    // The planes in payload order, with their stated offsets and sizes; each plane's data is known to lie within the
    // payload as far as its width, height and type need it (not so for coded alpha, whose length nothing states but the
    // box). Throws invalid_buffer for boxes that don't fit together, and invalid_argument for a set of planes that
    // makes no frame. Call it once.
    FramePlan ParseMetadata();

private:
    BoxHeader ReadBoxHeader() const;
    void ReadPackBox();
    PlaneRecord ReadSinfBox();  // without offset and size
    void CheckSdatBox(const BoxHeader& header, const PlaneRecord& plane) const;
    void ReadPlane(PlaneRecordList& planes);
    void ReadBarePlane(PlaneRecordList& planes);
    void ReadPlaneInIcmp(PlaneRecordList& planes, uint32_t boxSize);
    void ReadTopLevelBox(PlaneRecordList& planes);

    const uint8_t* buffer_;
    uint64_t limit_;  // bytes that may be read: the buffer's, then the pack box's
    uint64_t position_ = 0;
};

}  // namespace plenar
