// Frames through the ten functions as work to measure, and memcpy of as many bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "measurement.h"
#include "plenar_sdk.h"

namespace plenar_bench {

enum class Direction { Encode, Decode };
const char* NameOf(Direction direction);

struct PictureSize {
    uint32_t width;
    uint32_t height;
};

inline constexpr PictureSize kHd = {1920, 1080};
inline constexpr PictureSize kUhd = {3840, 2160};

// An arrangement of samples as a caller has it in memory; rows stand without padding.
struct Format {
    uint32_t order;
    uint32_t type;
    uint32_t decodedType = 0;  // what a decode asks for; 0: the type itself

    std::string Name() const;
};

// Where the data of a payload's only plane begins.
inline constexpr size_t kFirstPlaneOffset = 37;

// A format at a size.
struct Frame {
    Format format;
    PictureSize size;
    bool codesAlpha = false;

    UncompressedParams Picture(Direction direction) const;
    CompressedParams Options() const;
    uint32_t PictureBytes(Direction direction) const;
    uint32_t PayloadLimit() const;
    size_t Pixels() const { return size_t{size.width} * size.height; }

    // Read plus written; without coded alpha.
    size_t MovedBytes(Direction direction) const { return size_t{PictureBytes(direction)} + PayloadLimit(); }
};

// The size at which picture and payload have about 256 KiB together, and so stay in the second-level cache.
PictureSize CachedSize(const Format& format, Direction direction);

// An encode from PictureMemory to PayloadMemory, or the decode back. `threads` as in CreateParams::numThreads. With
// `contents`, the picture begins with those bytes.
Work FrameWork(const Frame& frame, Direction direction, uint32_t threads, const std::vector<uint8_t>& contents = {});

// The payload of a picture of just `contents`.
std::vector<uint8_t> EncodedFrame(const Frame& frame, const std::vector<uint8_t>& contents);

// What moves as many bytes between the same memories, half of them read and half of them written.
Work MemcpyWork(size_t movedBytes, Direction direction);
// Likewise, to where the first plane of a payload without alpha begins, instead of to an aligned address.
Work ShiftedMemcpyWork(size_t movedBytes, Direction direction);
Work StreamingCopyWork(size_t movedBytes, Direction direction);
// One half on each of two threads that are running already.
Work TwoThreadMemcpyWork(size_t movedBytes, Direction direction);

}  // namespace plenar_bench
