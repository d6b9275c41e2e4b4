#pragma once
#include "ZvCore/Api.h"
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ZvCore {

/// zlib streams (RFC 1950) of whole buffers. Uses libdeflate where the build has it; the streams are
/// interchangeable. Thread-safe.
class ZV_API Codec {
public:
    /// Most bytes that one stored byte of deflate can inflate to.
    static constexpr uint64_t kMaxExpansion = 1032;

    /// level is clamped to 1..9. False with `why` set on failure (out of memory).
    static bool Deflate(int level, const uint8_t* source, size_t count, std::vector<uint8_t>& target,
                        std::string& why);
    /// Inflates exactly `expected` bytes into `target` (which has that many) from exactly `count` bytes; more
    /// or fewer of either is a failure. Never writes past `expected`.
    static bool Inflate(const uint8_t* source, size_t count, uint8_t* target, size_t expected,
                        std::string& why);
    /// Of a stream that is damaged or cut: what inflates before the damage is met, at most `most` bytes. The last of them may be
    /// wrong, for deflate notices damage late. Empty when nothing does or the memory does not suffice. Answers the bytes that the
    /// stream takes when it comes to its end and its own checksum fits, else 0.
    static size_t InflatePrefix(const uint8_t* source, size_t count, size_t most,
                                std::vector<uint8_t>& target);
};

} // namespace ZvCore
