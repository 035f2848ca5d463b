#include "conversion_peers.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <stdexcept>

#if PLENAR_BENCH_LIBYUV
#include <libyuv.h>
#endif
#if PLENAR_BENCH_SWSCALE
extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}
#endif

namespace plenar_bench {

namespace {

// Where a peer finds the caller's picture and the planes, each without padding. The colour stands where the library
// puts a payload's first plane.
struct PeerPlanes {
    uint8_t* picture;
    uint8_t* colour;
    uint8_t* alpha;
    int width;
    int height;
    size_t pixels;
};

PeerPlanes PlanesOf(const Frame& frame) {
    const size_t pictureBytes = frame.PictureBytes(Direction::Encode);
    uint8_t* colour = PayloadMemory(kFirstPlaneOffset + 2 * pictureBytes) + kFirstPlaneOffset;
    return {
        PictureMemory(pictureBytes),         colour,        colour + pictureBytes, static_cast<int>(frame.size.width),
        static_cast<int>(frame.size.height), frame.Pixels()};
}

#if PLENAR_BENCH_LIBYUV

using YuvRun = int (*)(const PeerPlanes& p, Direction direction);

// Pairs are exchanged by shuffles of whole pixels of two pairs; libyuv has no kernel by that name.
int YuvSwapBytes(const PeerPlanes& p, Direction direction) {
    static constexpr uint8_t kSwapped[16] = {1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14};
    const bool encode = direction == Direction::Encode;
    return libyuv::ARGBShuffle(encode ? p.picture : p.colour, 2 * p.width, encode ? p.colour : p.picture, 2 * p.width,
                               kSwapped, p.width / 2, p.height);
}

int YuvSwapWords(const PeerPlanes& p, Direction direction) {
    static constexpr uint8_t kSwapped[16] = {2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13};
    const bool encode = direction == Direction::Encode;
    const auto* src = reinterpret_cast<const uint16_t*>(encode ? p.picture : p.colour);
    auto* dst = reinterpret_cast<uint16_t*>(encode ? p.colour : p.picture);
    return libyuv::AR64Shuffle(src, 2 * p.width, dst, 2 * p.width, kSwapped, p.width / 2, p.height);
}

int YuvReverseTriples(const PeerPlanes& p, Direction direction) {
    const bool encode = direction == Direction::Encode;
    return libyuv::RAWToRGB24(encode ? p.picture : p.colour, 3 * p.width, encode ? p.colour : p.picture, 3 * p.width,
                              p.width, p.height);
}

// Colour and alpha take a call each. libyuv's ARGB is BGRA in memory, and its RAW is RGB.
template <auto DropAlpha, auto AddOpaqueAlpha>
int YuvWithAlpha(const PeerPlanes& p, Direction direction) {
    if (direction == Direction::Encode) {
        return DropAlpha(p.picture, 4 * p.width, p.colour, 3 * p.width, p.width, p.height) |
               libyuv::ARGBExtractAlpha(p.picture, 4 * p.width, p.alpha, p.width, p.width, p.height);
    }
    return AddOpaqueAlpha(p.colour, 3 * p.width, p.picture, 4 * p.width, p.width, p.height) |
           libyuv::ARGBCopyYToAlpha(p.alpha, p.width, p.picture, 4 * p.width, p.width, p.height);
}

struct YuvLike {
    Format format;
    YuvRun run;
};

constexpr YuvLike kYuvLikes[] = {
    {{PLENAR_ORDER_YCBYCR, PLENAR_TYPE_UINT8}, YuvSwapBytes},
    {{PLENAR_ORDER_YCBYCR, PLENAR_TYPE_UINT16}, YuvSwapWords},
    {{PLENAR_ORDER_BGR, PLENAR_TYPE_UINT8}, YuvReverseTriples},
    {{PLENAR_ORDER_BGRA, PLENAR_TYPE_UINT8}, YuvWithAlpha<libyuv::ARGBToRAW, libyuv::RAWToARGB>},
    {{PLENAR_ORDER_RGBA, PLENAR_TYPE_UINT8}, YuvWithAlpha<libyuv::ARGBToRGB24, libyuv::RGB24ToARGB>},
};

void AddLibyuv(const Frame& frame, Direction direction, std::vector<Peer>& peers) {
    for (const YuvLike& like : kYuvLikes) {
        if (like.format.order != frame.format.order || like.format.type != frame.format.type) {
            continue;
        }
        peers.push_back({"libyuv", [frame, direction, run = like.run]() -> Work {
                             const PeerPlanes planes = PlanesOf(frame);
                             return {[=] { return run(planes, direction) == 0; }, frame.MovedBytes(direction)};
                         }});
    }
}

#endif

#if PLENAR_BENCH_SWSCALE

// The pixel formats on both sides. Alpha isn't kept: the colour alone is converted.
struct ScaleLike {
    Format format;
    AVPixelFormat picture;
    AVPixelFormat plane;
    int pictureBytes;  // of a pixel
    int planeBytes;
};

constexpr ScaleLike kScaleLikes[] = {
    {{PLENAR_ORDER_YCBYCR, PLENAR_TYPE_UINT8}, AV_PIX_FMT_YUYV422, AV_PIX_FMT_UYVY422, 2, 2},
    {{PLENAR_ORDER_BGR, PLENAR_TYPE_UINT8}, AV_PIX_FMT_BGR24, AV_PIX_FMT_RGB24, 3, 3},
    {{PLENAR_ORDER_BGR, PLENAR_TYPE_UINT16}, AV_PIX_FMT_BGR48LE, AV_PIX_FMT_RGB48LE, 6, 6},
    {{PLENAR_ORDER_ARGB, PLENAR_TYPE_UINT8}, AV_PIX_FMT_ARGB, AV_PIX_FMT_RGB24, 4, 3},
    {{PLENAR_ORDER_BGRA, PLENAR_TYPE_UINT8}, AV_PIX_FMT_BGRA, AV_PIX_FMT_RGB24, 4, 3},
    {{PLENAR_ORDER_RGBA, PLENAR_TYPE_UINT8}, AV_PIX_FMT_RGBA, AV_PIX_FMT_RGB24, 4, 3},
    {{PLENAR_ORDER_ABGR, PLENAR_TYPE_UINT8}, AV_PIX_FMT_ABGR, AV_PIX_FMT_RGB24, 4, 3},
};

Work ScaleWork(const Frame& frame, Direction direction, const ScaleLike& like) {
    const PeerPlanes p = PlanesOf(frame);
    const bool encode = direction == Direction::Encode;
    const std::shared_ptr<SwsContext> context(
        sws_getContext(p.width, p.height, encode ? like.picture : like.plane, p.width, p.height,
                       encode ? like.plane : like.picture, SWS_POINT, nullptr, nullptr, nullptr),
        sws_freeContext);
    if (!context) {
        throw std::runtime_error("swscale has no such conversion");
    }
    const int srcStride = p.width * (encode ? like.pictureBytes : like.planeBytes);
    const int dstStride = p.width * (encode ? like.planeBytes : like.pictureBytes);
    return {[=] {
                const uint8_t* const src[] = {encode ? p.picture : p.colour};
                uint8_t* const dst[] = {encode ? p.colour : p.picture};
                return sws_scale(context.get(), src, &srcStride, 0, p.height, dst, &dstStride) == p.height;
            },
            p.pixels * static_cast<size_t>(like.pictureBytes + like.planeBytes)};
}

void AddSwscale(const Frame& frame, Direction direction, std::vector<Peer>& peers) {
    for (const ScaleLike& like : kScaleLikes) {
        if (like.format.order == frame.format.order && like.format.type == frame.format.type) {
            peers.push_back({"swscale", [=] { return ScaleWork(frame, direction, like); }});
        }
    }
}

#endif

}  // namespace

std::vector<Peer> ConversionPeers([[maybe_unused]] const Frame& frame, [[maybe_unused]] Direction direction) {
    std::vector<Peer> peers;
#if PLENAR_BENCH_LIBYUV
    AddLibyuv(frame, direction, peers);
#endif
#if PLENAR_BENCH_SWSCALE
    AddSwscale(frame, direction, peers);
#endif
    return peers;
}

}  // namespace plenar_bench
