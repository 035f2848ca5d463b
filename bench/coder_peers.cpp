#include "coder_peers.h"

#include <memory>

#if PLENAR_BENCH_LZ4
#include <lz4.h>
#endif
#if PLENAR_BENCH_ZSTD
#include <zstd.h>
#endif

namespace plenar_bench {

namespace {

#if PLENAR_BENCH_LZ4

struct Lz4Buffers {
    explicit Lz4Buffers(const std::vector<uint8_t>& samples)
        : plain(reinterpret_cast<const char*>(samples.data())),
          plainBytes(static_cast<int>(samples.size())),
          coded(static_cast<size_t>(LZ4_compressBound(plainBytes))),
          decoded(samples.size()) {}

    bool Encode() {
        codedBytes = LZ4_compress_default(plain, coded.data(), plainBytes, static_cast<int>(coded.size()));
        return codedBytes > 0;
    }
    bool Decode() { return LZ4_decompress_safe(coded.data(), decoded.data(), codedBytes, plainBytes) == plainBytes; }

    const char* plain;
    int plainBytes;
    int codedBytes = 0;
    std::vector<char> coded;
    std::vector<char> decoded;
};

#endif

#if PLENAR_BENCH_ZSTD

constexpr int kZstdLevel = 1;

struct ZstdBuffers {
    explicit ZstdBuffers(const std::vector<uint8_t>& samples)
        : plain(samples), coded(ZSTD_compressBound(samples.size())), decoded(samples.size()) {}

    bool Encode() {
        codedBytes =
            ZSTD_compressCCtx(compressor.get(), coded.data(), coded.size(), plain.data(), plain.size(), kZstdLevel);
        return ZSTD_isError(codedBytes) == 0;
    }
    bool Decode() {
        return ZSTD_decompressDCtx(decompressor.get(), decoded.data(), decoded.size(), coded.data(), codedBytes) ==
               plain.size();
    }

    const std::vector<uint8_t>& plain;
    size_t codedBytes = 0;
    std::vector<uint8_t> coded;
    std::vector<uint8_t> decoded;
    std::shared_ptr<ZSTD_CCtx> compressor{ZSTD_createCCtx(), ZSTD_freeCCtx};
    std::shared_ptr<ZSTD_DCtx> decompressor{ZSTD_createDCtx(), ZSTD_freeDCtx};
};

#endif

template <class Buffers>
CoderPeer MakePeer(const char* name) {
    return {name,
            [](const std::vector<uint8_t>& plain) -> Work {
                const auto buffers = std::make_shared<Buffers>(plain);
                return {[buffers] { return buffers->Encode(); }, plain.size()};
            },
            [](const std::vector<uint8_t>& plain) -> Work {
                const auto buffers = std::make_shared<Buffers>(plain);
                const bool coded = buffers->Encode();
                return {[buffers, coded] { return coded && buffers->Decode(); }, plain.size()};
            }};
}

}  // namespace

std::vector<CoderPeer> CoderPeers() {
    std::vector<CoderPeer> peers;
#if PLENAR_BENCH_LZ4
    peers.push_back(MakePeer<Lz4Buffers>("lz4"));
#endif
#if PLENAR_BENCH_ZSTD
    peers.push_back(MakePeer<ZstdBuffers>("zstd"));
#endif
    return peers;
}

}  // namespace plenar_bench
