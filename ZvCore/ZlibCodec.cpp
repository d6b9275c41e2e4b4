#include "ZvCore/ZlibCodec.h"
#include <algorithm>
#include <new>
#include <zlib.h>

namespace ZvCore {

namespace {

constexpr size_t kMostPerCall = size_t(1) << 30; // zlib counts in 32 bits

/// Gives zlib the next piece of what is left of a buffer that may be longer than it can count.
template <class Byte>
void Feed(Byte*& next, uInt& available, Byte* begin, size_t total, size_t& fed) {
    if (available > 0 || fed == total)
        return;
    const size_t n = std::min(total - fed, kMostPerCall);
    next = begin + fed;
    available = uInt(n);
    fed += n;
}

} // namespace

bool ZlibCodec::Deflate(int level, const uint8_t* source, size_t count, std::vector<uint8_t>& target,
                        std::string& why) {
    z_stream stream{};
    if (deflateInit(&stream, std::clamp(level, 1, 9)) != Z_OK) {
        why = kOutOfMemory;
        return false;
    }
    try {
        // The bound of compressBound(), without its 32-bit type.
        target.resize(count + (count >> 12) + (count >> 14) + (count >> 25) + 13);
    } catch (const std::bad_alloc&) {
        deflateEnd(&stream);
        why = kOutOfMemory;
        return false;
    }
    size_t fedIn = 0, fedOut = 0;
    int result = Z_OK;
    while (result == Z_OK) {
        Feed(stream.next_in, stream.avail_in, const_cast<Bytef*>(source), count, fedIn);
        Feed(stream.next_out, stream.avail_out, target.data(), target.size(), fedOut);
        result = deflate(&stream, fedIn == count ? Z_FINISH : Z_NO_FLUSH);
    }
    target.resize(fedOut - stream.avail_out);
    deflateEnd(&stream);
    if (result != Z_STREAM_END)
        why = kOutOfMemory; // all that deflate can lack: the target holds the worst case
    return result == Z_STREAM_END;
}

bool ZlibCodec::Inflate(const uint8_t* source, size_t count, uint8_t* target, size_t expected,
                        std::string& why) {
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) {
        why = kOutOfMemory;
        return false;
    }
    Bytef nothing = 0;
    stream.next_out = &nothing; // zlib wants an address also for nothing
    size_t fedIn = 0, fedOut = 0;
    int result = Z_OK;
    while (result == Z_OK) {
        Feed(stream.next_in, stream.avail_in, const_cast<Bytef*>(source), count, fedIn);
        Feed(stream.next_out, stream.avail_out, target, expected, fedOut);
        result = inflate(&stream, Z_NO_FLUSH);
    }
    const size_t usedIn = fedIn - stream.avail_in, usedOut = fedOut - stream.avail_out;
    inflateEnd(&stream);
    if (result == Z_STREAM_END && usedIn == count && usedOut == expected)
        return true;
    if (result == Z_STREAM_END)
        why = usedOut != expected ? kTooShort : kTrailing;
    else if (result == Z_BUF_ERROR)
        why = usedIn == count ? kTooShort : kTooLong;
    else
        why = result == Z_MEM_ERROR ? kOutOfMemory : kDamaged;
    return false;
}

size_t ZlibCodec::InflatePrefix(const uint8_t* source, size_t count, size_t most,
                                std::vector<uint8_t>& target) {
    constexpr size_t kStep = size_t(1) << 18;
    target.clear();
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return 0;
    size_t fedIn = 0, made = 0;
    int result = Z_OK;
    try {
        while (result == Z_OK && made <= most) { // room for one byte more lets the end of the stream be read
            const size_t room = std::min(kStep, most + 1 - made);
            target.resize(made + room);
            Feed(stream.next_in, stream.avail_in, const_cast<Bytef*>(source), count, fedIn);
            stream.next_out = target.data() + made;
            stream.avail_out = uInt(room);
            result = inflate(&stream, Z_SYNC_FLUSH);
            made += room - stream.avail_out;
        }
    } catch (const std::bad_alloc&) {
        made = 0;
    }
    const size_t taken = result == Z_STREAM_END && made <= most ? fedIn - stream.avail_in : 0;
    target.resize(std::min(made, most));
    inflateEnd(&stream);
    return taken;
}

} // namespace ZvCore
