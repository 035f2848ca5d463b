#include "frame_work.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "reference_work.h"
#include "testing/codecs.h"
#include "testing/sample_model.h"

namespace plenar_bench {

namespace {

using plenar_test::DecoderHandle;
using plenar_test::EncoderHandle;

constexpr size_t kCachedBytes = size_t{256} * 1024;
constexpr uint32_t kPackedRowPixels = 48;  // rows of Packed10 are padded to a multiple of this
constexpr size_t kLineBytes = 64;

uint32_t EncodeOnce(const Frame& frame, const uint8_t* picture, uint8_t* payload) {
    const EncoderHandle encoder(1);
    const UncompressedParams params = frame.Picture(Direction::Encode);
    const CompressedParams options = frame.Options();
    uint32_t written = 0;
    if (Plenar_EncodeFrame(encoder.get(), &params, &options, picture, frame.PictureBytes(Direction::Encode), payload,
                           frame.PayloadLimit(), &written) != PLENAR_RESULT_OK) {
        throw std::runtime_error("a frame that can't be encoded: " + frame.format.Name());
    }
    return written;
}

Work EncodeWork(const Frame& frame, uint32_t threads, const uint8_t* picture, uint8_t* payload) {
    const auto encoder = std::make_shared<EncoderHandle>(threads);
    return {[=, params = frame.Picture(Direction::Encode), options = frame.Options(),
             size = frame.PictureBytes(Direction::Encode), limit = frame.PayloadLimit()] {
        uint32_t written = 0;
        return Plenar_EncodeFrame(encoder->get(), &params, &options, picture, size, payload, limit, &written) ==
               PLENAR_RESULT_OK;
    }};
}

Work DecodeWork(const Frame& frame, uint32_t threads, const uint8_t* payload, uint32_t payloadSize, uint8_t* picture) {
    const auto decoder = std::make_shared<DecoderHandle>(threads);
    return {[=, params = frame.Picture(Direction::Decode), size = frame.PictureBytes(Direction::Decode)] {
        return Plenar_DecodeFrame(decoder->get(), &params, payload, payloadSize, picture, size, nullptr) ==
               PLENAR_RESULT_OK;
    }};
}

struct CopyEnds {
    const uint8_t* src;
    uint8_t* dst;
    size_t size;
};

CopyEnds EndsOfCopy(size_t movedBytes, Direction direction) {
    const size_t size = movedBytes / 2;
    uint8_t* picture = PictureMemory(size + kLineBytes);
    uint8_t* payload = PayloadMemory(size + kLineBytes);
    return direction == Direction::Encode ? CopyEnds{picture, payload, size} : CopyEnds{payload, picture, size};
}

Work CopyWork(const CopyEnds& ends) {
    return {[ends] {
                std::memcpy(ends.dst, ends.src, ends.size);
                return true;
            },
            2 * ends.size};
}

}  // namespace

const char* NameOf(Direction direction) {
    return direction == Direction::Encode ? "encode" : "decode";
}

std::string Format::Name() const {
    return plenar_test::OrderName(order) + "-" + plenar_test::TypeName(type);
}

UncompressedParams Frame::Picture(Direction direction) const {
    const bool asDecoded = direction == Direction::Decode && format.decodedType != 0;
    return {sizeof(UncompressedParams),
            format.order,
            asDecoded ? format.decodedType : format.type,
            size.width,
            size.height,
            0,
            0,
            0};
}

CompressedParams Frame::Options() const {
    return {sizeof(CompressedParams), static_cast<uint8_t>(codesAlpha ? 1 : 0), 0};
}

uint32_t Frame::PictureBytes(Direction direction) const {
    const UncompressedParams params = Picture(direction);
    return Plenar_GetUncompressedBufSize(&params);
}

uint32_t Frame::PayloadLimit() const {
    const UncompressedParams params = Picture(Direction::Encode);
    const CompressedParams options = Options();
    return Plenar_GetCompressedBufSize(&params, &options);
}

PictureSize CachedSize(const Format& format, Direction direction) {
    const Frame sample = {format, {kPackedRowPixels, kPackedRowPixels}};
    const double bytesOfPixel =
        static_cast<double>(sample.MovedBytes(direction)) / static_cast<double>(sample.Pixels());
    const double pixels = static_cast<double>(kCachedBytes) / bytesOfPixel;
    const auto columns = static_cast<uint32_t>(std::sqrt(pixels * 16 / 9));
    const uint32_t width = columns / kPackedRowPixels * kPackedRowPixels;
    const auto height = static_cast<uint32_t>(pixels / width);
    return {width, height / 2 * 2};
}

Work FrameWork(const Frame& frame, Direction direction, uint32_t threads, const std::vector<uint8_t>& contents) {
    const size_t pictureBytes = std::max(frame.PictureBytes(Direction::Encode), frame.PictureBytes(direction));
    uint8_t* picture = PictureMemory(pictureBytes);
    uint8_t* payload = PayloadMemory(frame.PayloadLimit());
    std::memcpy(picture, contents.data(), contents.size());
    Work work;
    if (direction == Direction::Encode) {
        work = EncodeWork(frame, threads, picture, payload);
    } else {
        work = DecodeWork(frame, threads, payload, EncodeOnce(frame, picture, payload), picture);
    }
    work.bytes = frame.codesAlpha ? frame.PictureBytes(direction) : frame.MovedBytes(direction);
    work.counts["pixels"] = static_cast<double>(frame.Pixels());
    return work;
}

std::vector<uint8_t> EncodedFrame(const Frame& frame, const std::vector<uint8_t>& contents) {
    std::vector<uint8_t> payload(frame.PayloadLimit());
    payload.resize(EncodeOnce(frame, contents.data(), payload.data()));
    return payload;
}

Work MemcpyWork(size_t movedBytes, Direction direction) {
    return CopyWork(EndsOfCopy(movedBytes, direction));
}

Work ShiftedMemcpyWork(size_t movedBytes, Direction direction) {
    CopyEnds ends = EndsOfCopy(movedBytes, direction);
    if (direction == Direction::Encode) {
        ends.dst += kFirstPlaneOffset;
    } else {
        ends.src += kFirstPlaneOffset;
    }
    return CopyWork(ends);
}

Work StreamingCopyWork(size_t movedBytes, Direction direction) {
    const CopyEnds ends = EndsOfCopy(movedBytes, direction);
    return {[ends] {
                StreamingCopy(ends.dst, ends.src, ends.size);
                return true;
            },
            2 * ends.size};
}

Work TwoThreadMemcpyWork(size_t movedBytes, Direction direction) {
    const CopyEnds ends = EndsOfCopy(movedBytes, direction);
    const size_t half = ends.size / 2 / kLineBytes * kLineBytes;
    const auto pair = std::make_shared<RunningPair>();
    return {[=] {
                pair->Run([&](int index) {
                    const size_t from = index == 0 ? 0 : half;
                    std::memcpy(ends.dst + from, ends.src + from, index == 0 ? half : ends.size - half);
                });
                return true;
            },
            2 * ends.size};
}

}  // namespace plenar_bench
