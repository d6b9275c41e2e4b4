#pragma once
#include "ZvCore/Api.h"
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ZvCore {

/// Codec's operations through zlib alone: what builds without libdeflate use, and the reference for those
/// with it.
class ZV_API ZlibCodec {
public:
    static bool Deflate(int level, const uint8_t* source, size_t count, std::vector<uint8_t>& target,
                        std::string& why);
    static bool Inflate(const uint8_t* source, size_t count, uint8_t* target, size_t expected,
                        std::string& why);
    /// See Codec.
    static size_t InflatePrefix(const uint8_t* source, size_t count, size_t most,
                                std::vector<uint8_t>& target);

    static constexpr const char* kOutOfMemory = "out of memory";
    static constexpr const char* kDamaged = "the compressed bytes are damaged";
    static constexpr const char* kTooLong = "the compressed bytes hold more than they should";
    static constexpr const char* kTooShort = "the compressed bytes hold less than they should";
    static constexpr const char* kTrailing = "there are bytes behind the end of the compressed stream";
};

} // namespace ZvCore
