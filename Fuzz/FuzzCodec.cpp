#include "ZvCore/Codec.h"
#include "ZvCore/ZlibCodec.h"

#include <cstdlib>
#include <cstring>

// Two bytes of expected size, then a compressed stream. What zlib reads, the fast library reads alike; it
// takes a little more than zlib does (reserved length codes).
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    uint16_t expected = 0;
    if (size < sizeof expected)
        return 0;
    std::memcpy(&expected, data, sizeof expected);
    data += sizeof expected, size -= sizeof expected;
    std::vector<uint8_t> fast(expected), reference(expected);
    std::string why;
    const bool fastOk = ZvCore::Codec::Inflate(data, size, fast.data(), expected, why);
    if (ZvCore::ZlibCodec::Inflate(data, size, reference.data(), expected, why) &&
        (!fastOk || fast != reference))
        std::abort();
    return 0;
}
