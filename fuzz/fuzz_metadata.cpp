// Arbitrary payloads, of which no more is read than their boxes' heads.
#include "ways.h"

namespace plenar_fuzz {
namespace {

UncompressedParams Read(const Bytes& payload, uint32_t place) {
    const UncompressedParams before = MakeParams(77, 78, 79, 80, 81, 82, 83);
    UncompressedParams read = before;
    const std::string message = ReadMetadata(CodecFor<TestDecoder>({}), payload, read, place);
    Require(message.empty() != (RecordBytes(read) == RecordBytes(before)), "success alone changes the record");
    return read;
}

}  // namespace
}  // namespace plenar_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plenar_fuzz;
    Bytes payload(data, data + size);
    const UncompressedParams read = Read(payload, kBeforeGuard);
    const UncompressedParams again = Read(payload, Rarity(data, size) % 2 == 0 ? kApart : kBehindGuard);
    Require(RecordBytes(again) == RecordBytes(read), "metadata follow from the payload alone");
    if (read.colorComponentOrder != 77) {
        Require(!PlaneCodes(read.colorComponentOrder, read.componentType).empty() && read.frameLayout <= 1,
                "what is reported can be asked for");
        payload.insert(payload.end(), {0, 0, 0, 0, 0x70, 0x61, 0x63, 0x6B, 1});
        Require(RecordBytes(Read(payload, kApart)) == RecordBytes(read), "what stands behind a payload is not read");
    }
    return 0;
}
