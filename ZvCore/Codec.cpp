#include "ZvCore/Codec.h"
#include "ZvCore/ZlibCodec.h"

#ifdef ZV_HAVE_LIBDEFLATE

#include <algorithm>
#include <libdeflate.h>
#include <memory>
#include <new>

namespace ZvCore {

namespace {

struct FreeCompressor {
    void operator()(libdeflate_compressor* c) const { libdeflate_free_compressor(c); }
};
struct FreeDecompressor {
    void operator()(libdeflate_decompressor* d) const { libdeflate_free_decompressor(d); }
};

constexpr int kMostLevel = 9;

/// Kept between calls: a compressor is about a megabyte to set up, and blocks are many.
libdeflate_compressor* CompressorOf(int level) {
    thread_local std::unique_ptr<libdeflate_compressor, FreeCompressor> kept;
    thread_local int keptLevel = 0;
    if (!kept || keptLevel != level) {
        kept.reset(libdeflate_alloc_compressor(level));
        keptLevel = level;
    }
    return kept.get();
}

libdeflate_decompressor* TheDecompressor() {
    thread_local std::unique_ptr<libdeflate_decompressor, FreeDecompressor> kept;
    if (!kept)
        kept.reset(libdeflate_alloc_decompressor());
    return kept.get();
}

} // namespace

bool Codec::Deflate(int level, const uint8_t* source, size_t count, std::vector<uint8_t>& target,
                    std::string& why) {
    libdeflate_compressor* compressor = CompressorOf(std::clamp(level, 1, kMostLevel));
    try {
        if (compressor) {
            target.resize(libdeflate_zlib_compress_bound(compressor, count));
            const size_t used =
                libdeflate_zlib_compress(compressor, source, count, target.data(), target.size());
            target.resize(used);
            if (used > 0)
                return true;
        }
    } catch (const std::bad_alloc&) {}
    why = ZlibCodec::kOutOfMemory; // all that can be lacking: the target holds the worst case
    return false;
}

bool Codec::Inflate(const uint8_t* source, size_t count, uint8_t* target, size_t expected, std::string& why) {
    libdeflate_decompressor* decompressor = TheDecompressor();
    if (!decompressor) {
        why = ZlibCodec::kOutOfMemory;
        return false;
    }
    size_t usedIn = 0, usedOut = 0;
    const libdeflate_result result =
        libdeflate_zlib_decompress_ex(decompressor, source, count, target, expected, &usedIn, &usedOut);
    if (result == LIBDEFLATE_SUCCESS && usedIn == count && usedOut == expected)
        return true;
    if (result == LIBDEFLATE_INSUFFICIENT_SPACE)
        why = ZlibCodec::kTooLong;
    else if (result == LIBDEFLATE_SUCCESS)
        why = usedOut != expected ? ZlibCodec::kTooShort : ZlibCodec::kTrailing;
    else
        why = ZlibCodec::kDamaged;
    return false;
}

} // namespace ZvCore

#else

namespace ZvCore {

bool Codec::Deflate(int level, const uint8_t* source, size_t count, std::vector<uint8_t>& target,
                    std::string& why) {
    return ZlibCodec::Deflate(level, source, count, target, why);
}

bool Codec::Inflate(const uint8_t* source, size_t count, uint8_t* target, size_t expected, std::string& why) {
    return ZlibCodec::Inflate(source, count, target, expected, why);
}

} // namespace ZvCore

#endif

size_t ZvCore::Codec::InflatePrefix(const uint8_t* source, size_t count, size_t most,
                                    std::vector<uint8_t>& target) {
    return ZlibCodec::InflatePrefix(source, count, most, target);
}
