#include "ZvCore/Codec.h"
#include "ZvCore/MD5.h"
#include "ZvCore/ZlibCodec.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string_view>

using ZvCore::Codec;
using ZvCore::Digest;
using ZvCore::MD5;
using ZvCore::ZlibCodec;

namespace {

using Bytes = std::vector<uint8_t>;

Bytes Sample(size_t size, unsigned range) {
    std::mt19937 random(unsigned(size) + range);
    Bytes bytes(size);
    for (uint8_t& byte : bytes)
        byte = uint8_t(random() % range);
    return bytes;
}

bool Inflates(decltype(&Codec::Inflate) inflate, const Bytes& packed, Bytes& out, std::string& why) {
    const size_t size = out.size();
    out.resize(size + 16, 0xCD);
    const bool ok = inflate(packed.data(), packed.size(), out.data(), size, why);
    EXPECT_EQ(Bytes(out.begin() + std::ptrdiff_t(size), out.end()), Bytes(16, 0xCD))
        << "written past the end";
    out.resize(size);
    return ok;
}

} // namespace

TEST(Codec, StreamsOfEitherLibraryAreReadByTheOther) {
    std::string why;
    for (int level : {-3, 1, 6, 9, 100})
        for (size_t size : {0, 1, 31, 5000, 400'000})
            for (unsigned range : {1u, 7u, 256u}) {
                const Bytes plain = Sample(size, range);
                for (const auto deflate : {&Codec::Deflate, &ZlibCodec::Deflate})
                    for (const auto inflate : {&Codec::Inflate, &ZlibCodec::Inflate}) {
                        Bytes packed, out(size);
                        ASSERT_TRUE(deflate(level, plain.data(), size, packed, why)) << why;
                        ASSERT_TRUE(Inflates(inflate, packed, out, why)) << why;
                        ASSERT_EQ(out, plain);
                        ASSERT_LE(size, packed.size() * Codec::kMaxExpansion);
                    }
            }
}

TEST(Codec, WrongSizesDamageAndTrailingBytesAreRefused) {
    const Bytes plain = Sample(20'000, 9);
    Bytes packed;
    std::string why;
    ASSERT_TRUE(Codec::Deflate(6, plain.data(), plain.size(), packed, why));
    for (const auto inflate : {&Codec::Inflate, &ZlibCodec::Inflate}) {
        const auto reason = [&](const Bytes& bytes, size_t expected) {
            Bytes out(expected);
            why.clear();
            EXPECT_FALSE(Inflates(inflate, bytes, out, why));
            return why;
        };
        EXPECT_EQ(reason(packed, plain.size() - 1), ZlibCodec::kTooLong);
        EXPECT_EQ(reason(packed, plain.size() + 1), ZlibCodec::kTooShort);
        EXPECT_EQ(reason(packed, 0), ZlibCodec::kTooLong);
        Bytes longer = packed;
        longer.push_back(0);
        EXPECT_EQ(reason(longer, plain.size()), ZlibCodec::kTrailing);
        EXPECT_FALSE(reason({}, 10).empty());
        for (size_t cut : {size_t(1), size_t(2), packed.size() / 2, packed.size() - 1})
            EXPECT_FALSE(
                reason(Bytes(packed.begin(), packed.begin() + std::ptrdiff_t(cut)), plain.size()).empty());
        for (size_t at = 0; at < packed.size(); at += 97) {
            Bytes damaged = packed;
            damaged[at] ^= 0x10;
            reason(damaged, plain.size());
        }
    }
}

// The test suite of RFC 1321, appendix A.5.
TEST(MD5, GivesTheDigestsOfItsDefinition) {
    const std::pair<std::string_view, const char*> cases[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
    };
    for (const auto& [text, digest] : cases)
        EXPECT_EQ(MD5::ToHex(MD5::Of(text.data(), text.size())), digest);
}

TEST(MD5, PiecesAndPairsGiveWhatTheWholeGives) {
    const Bytes bytes = Sample(2000, 256);
    for (size_t size = 0; size < 300; ++size) {
        const Digest whole = MD5::Of(bytes.data(), size);
        MD5 pieces;
        for (size_t at = 0, n = 1; at < size; at += n, n = n * 3 % 71 + 1)
            pieces.Update(bytes.data() + at, std::min(n, size - at));
        EXPECT_EQ(pieces.Finish(), whole);
        Digest first, second;
        const size_t other = size * 7 % 1999;
        MD5::OfPair(bytes.data(), size, bytes.data() + 1, other, first, second);
        EXPECT_EQ(first, whole);
        EXPECT_EQ(second, MD5::Of(bytes.data() + 1, other));
        MD5 one, two;
        const size_t cut = size / 3, otherCut = other / 2;
        MD5::UpdatePair(one, bytes.data(), cut, two, bytes.data() + 1, otherCut);
        MD5::UpdatePair(one, bytes.data() + cut, size - cut, two, bytes.data() + 1 + otherCut,
                        other - otherCut);
        EXPECT_EQ(one.Finish(), whole);
        EXPECT_EQ(two.Finish(), second);
    }
}
