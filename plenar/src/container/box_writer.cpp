#include "container/box_writer.h"

#include "base/exceptions.h"
#include "container/box_layout.h"

namespace plenar {

BoxWriter::BoxWriter(uint8_t* buffer, uint64_t capacity) : buffer_(buffer), capacity_(capacity) {
    if (buffer == nullptr) {
        throw invalid_buffer("buffer is null");
    }
}

namespace {

void PutHeader(BoxWriter& writer, uint32_t size, uint32_t kind) {
    writer.Put(size);
    writer.Put(kind);
}

void WritePlaneBoxes(BoxWriter& writer, const PlaneRecord& plane, bool multi) {
    if (multi) {
        PutHeader(writer, plane.size + PlaneOverhead(multi), box::icmp);
    }
    PutHeader(writer, kSinfBoxSize, box::sinf);
    writer.Put(plane.width);
    writer.Put(plane.height);
    writer.Put(plane.type);
    writer.Put(plane.frame_layout);
    PutHeader(writer, plane.size + kBoxHeaderSize, box::sdat);
    writer.Skip(plane.size);
}

}  // namespace

uint32_t WriteFrameBoxes(BoxWriter writer, const FramePlan& plan) {
    if (plan.total_size > writer.Capacity()) {
        throw invalid_argument("buffer is too small");
    }
    PutHeader(writer, plan.total_size, box::pack);
    for (const PlaneRecord& plane : plan.planes) {
        WritePlaneBoxes(writer, plane, plan.planes.size() > 1);
    }
    return plan.total_size;
}

}  // namespace plenar
