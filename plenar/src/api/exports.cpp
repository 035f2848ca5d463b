#include "api/codec.h"
#include "api/guard.h"
#include "container/metadata_checks.h"
#include "format/picture_layout.h"
#include "frame/decode_frame.h"
#include "frame/encode_frame.h"
#include "frame/plan_frame.h"
#include "plenar_sdk.h"

struct Encoder : plenar::Codec {
    using Codec::Codec;
};

struct Decoder : plenar::Codec {
    using Codec::Codec;
};

namespace plenar {
namespace {

constexpr CreateParams kDefaultCreateParams = {sizeof(CreateParams), 0, nullptr, nullptr};

// The size functions have no object whose callback could take their messages.
constexpr const CreateParams& kNoSink = kDefaultCreateParams;

constexpr uint32_t kVersion[] = {PLENAR_VERSION};
constexpr char kVersionStage = 'r';

StatusWord compressedBufSizeStatus{0};
StatusWord encodeFrameStatus{0};
StatusWord uncompressedBufSizeStatus{0};
StatusWord readMetadataStatus{0};
StatusWord decodeFrameStatus{0};

template <class... Pointers>
bool AnyNull(const Pointers*... pointers) {
    return (... || (pointers == nullptr));
}

template <class Record>
bool HasWrongSize(const Record& record) {
    return record.size != sizeof(Record);
}

template <class Object>
uint32_t Create(const CreateParams* params, Object** object) {
    if (object == nullptr) {
        return ResultNullPointer;
    }
    if (params != nullptr && HasWrongSize(*params)) {
        return ResultBadRecordSize;
    }
    *object = new Object(params != nullptr ? *params : kDefaultCreateParams);
    return ResultOk;
}

template <class Value>
void StoreIfWanted(Value* target, Value value) {
    if (target != nullptr) {
        *target = value;
    }
}

// body(state) gives the bytes that were written.
template <class Body>
uint32_t FrameCall(StatusWord& status, Codec& codec, uint32_t* bytesWritten, const Body& body) {
    return Guard(status, codec.Params(), [&] {
        codec.Call([&](CodecState& state) { StoreIfWanted(bytesWritten, static_cast<uint32_t>(body(state))); });
    });
}

}  // namespace
}  // namespace plenar

using namespace plenar;

uint32_t Plenar_CreateEncoder(const CreateParams* params, Encoder** encoder) {
    return Create(params, encoder);
}

uint32_t Plenar_CreateDecoder(const CreateParams* params, Decoder** decoder) {
    return Create(params, decoder);
}

void Plenar_DestroyEncoder(Encoder* encoder) {
    delete encoder;
}

void Plenar_DestroyDecoder(Decoder* decoder) {
    delete decoder;
}

uint32_t Plenar_EncodeFrame(Encoder* encoder, const UncompressedParams* params,
                            const CompressedParams* compressedParams, const void* src, uint32_t srcSize, void* dst,
                            uint32_t dstSize, uint32_t* bytesWritten) {
    if (AnyNull(encoder, params, compressedParams, src, dst)) {
        return ResultNullPointer;
    }
    if (HasWrongSize(*params) || HasWrongSize(*compressedParams)) {
        return ResultBadRecordSize;
    }
    return FrameCall(encodeFrameStatus, *encoder, bytesWritten, [&](CodecState& state) {
        return EncodeFrameBody(state, *params, *compressedParams, static_cast<const uint8_t*>(src), srcSize,
                               static_cast<uint8_t*>(dst), dstSize);
    });
}

uint32_t Plenar_DecodeFrame(Decoder* decoder, const UncompressedParams* params, const void* src, uint32_t srcSize,
                            void* dst, uint32_t dstSize, uint32_t* bytesWritten) {
    if (AnyNull(decoder, params, src, dst)) {
        return ResultNullPointer;
    }
    if (HasWrongSize(*params)) {
        return ResultBadRecordSize;
    }
    return FrameCall(decodeFrameStatus, *decoder, bytesWritten, [&](CodecState& state) {
        return DecodeFrameBody(state, *params, static_cast<const uint8_t*>(src), srcSize, static_cast<uint8_t*>(dst),
                               dstSize);
    });
}

uint32_t Plenar_ReadMetadata(Decoder* decoder, const void* src, uint32_t srcSize, UncompressedParams* params) {
    if (AnyNull(decoder, src, params)) {
        return ResultNullPointer;
    }
    if (HasWrongSize(*params)) {
        return ResultBadRecordSize;
    }
    return Guard(readMetadataStatus, decoder->Params(),
                 [&] { *params = ReadFrameMetadata(static_cast<const uint8_t*>(src), srcSize); });
}

uint32_t Plenar_GetCompressedBufSize(const UncompressedParams* params, const CompressedParams* compressedParams) {
    uint32_t size = 0;
    if (!AnyNull(params, compressedParams) && !HasWrongSize(*params) && !HasWrongSize(*compressedParams)) {
        Guard(compressedBufSizeStatus, kNoSink, [&] { size = PlanFrame(*params, *compressedParams).total_size; });
    }
    return size;
}

uint32_t Plenar_GetUncompressedBufSize(const UncompressedParams* params) {
    uint32_t size = 0;
    if (!AnyNull(params) && !HasWrongSize(*params)) {
        Guard(uncompressedBufSizeStatus, kNoSink, [&] { size = static_cast<uint32_t>(UncompressedBufSize(*params)); });
    }
    return size;
}

void Plenar_GetVersion(uint32_t* major, uint32_t* minor, uint32_t* patch, uint32_t* build, char* stage) {
    StoreIfWanted(major, kVersion[0]);
    StoreIfWanted(minor, kVersion[1]);
    StoreIfWanted(patch, kVersion[2]);
    StoreIfWanted(build, kVersion[3]);
    StoreIfWanted(stage, kVersionStage);
}
