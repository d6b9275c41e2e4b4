#include "Zelvan/RenC/ZvPngWriter.h"
#include "ZvCore/Codec.h"
#include "ZvCore/FaultyFile.h"
#include "ZvCore/MemFile.h"
#include <gtest/gtest.h>
#include <random>

namespace {

uint32_t Big(const uint8_t* at) {
    return uint32_t(at[0]) << 24 | uint32_t(at[1]) << 16 | uint32_t(at[2]) << 8 | at[3];
}

// CRC-32 bit by bit, as ISO 3309 has it.
uint32_t Crc(const uint8_t* bytes, size_t count) {
    uint32_t crc = ~0u;
    for (size_t i = 0; i < count; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xEDB88320u : crc >> 1;
    }
    return ~crc;
}

struct Png {
    int width = 0, height = 0, channels = 0;
    std::vector<uint8_t> samples;
};

// Reads what the format's rules allow of 8-bit RGB and RGBA with row filters 0 and 1.
Png Decode(const std::vector<uint8_t>& bytes) {
    Png png;
    static const uint8_t signature[8] = {0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A};
    EXPECT_TRUE(bytes.size() > 8 && std::equal(signature, signature + 8, bytes.begin()));
    std::vector<uint8_t> data;
    std::string order;
    for (size_t at = 8; at + 12 <= bytes.size();) {
        const size_t length = Big(&bytes[at]);
        const std::string type(bytes.begin() + long(at) + 4, bytes.begin() + long(at) + 8);
        EXPECT_EQ(Big(&bytes[at + 8 + length]), Crc(&bytes[at + 4], length + 4)) << type;
        order += type + ' ';
        if (type == "IHDR") {
            png.width = int(Big(&bytes[at + 8]));
            png.height = int(Big(&bytes[at + 12]));
            EXPECT_EQ(bytes[at + 16], 8);
            png.channels = bytes[at + 17] == 6 ? 4 : bytes[at + 17] == 2 ? 3 : 0;
        } else if (type == "IDAT") {
            data.insert(data.end(), &bytes[at + 8], &bytes[at + 8] + length);
        }
        at += 12 + length;
    }
    EXPECT_EQ(order, "IHDR IDAT IEND ");
    const size_t row = size_t(png.width) * size_t(png.channels);
    std::vector<uint8_t> rows(size_t(png.height) * (row + 1));
    std::string why;
    EXPECT_TRUE(ZvCore::Codec::Inflate(data.data(), data.size(), rows.data(), rows.size(), why)) << why;
    for (size_t y = 0; y < size_t(png.height); ++y) {
        const uint8_t* filtered = &rows[y * (row + 1)];
        EXPECT_LE(filtered[0], 1);
        for (size_t i = 0; i < row; ++i) {
            const bool hasLeft = filtered[0] == 1 && i >= size_t(png.channels);
            png.samples.push_back(uint8_t(
                filtered[1 + i] + (hasLeft ? png.samples[png.samples.size() - size_t(png.channels)] : 0)));
        }
    }
    return png;
}

TEST(ZvPngWriter, WrittenPicturesReadBack) {
    std::mt19937 random(1);
    for (int transparent = 0; transparent < 2; ++transparent) {
        ZvPixelBuffer picture(37, 19);
        for (int y = 0; y < 19; ++y)
            for (int x = 0; x < 37; ++x)
                picture.Row(y)[x] =
                    ZvPixelBuffer::Premultiply(uint32_t(random()) | (transparent ? 0 : 0xFF000000));
        ZvCore::MemFile file;
        std::string why;
        ASSERT_TRUE(ZvPngWriter::Write(picture, file, why)) << why;
        const Png png = Decode(file.Take());
        ASSERT_EQ(png.width, 37);
        ASSERT_EQ(png.height, 19);
        ASSERT_EQ(png.channels, transparent ? 4 : 3);
        for (size_t i = 0; i < 37 * 19; ++i) {
            const uint8_t* s = &png.samples[i * size_t(png.channels)];
            const uint32_t straight =
                uint32_t(transparent ? s[3] : 255) << 24 | uint32_t(s[0] << 16 | s[1] << 8 | s[2]);
            ASSERT_EQ(ZvPixelBuffer::Premultiply(straight), picture.At(int(i % 37), int(i / 37)));
        }
    }
}

TEST(ZvPngWriter, RefusesAnEmptyPictureAndTellsOfAFailedWrite) {
    ZvCore::MemFile file;
    std::string why;
    EXPECT_FALSE(ZvPngWriter::Write(ZvPixelBuffer(0, 5), file, why));
    EXPECT_FALSE(why.empty());
    uint64_t failAt = 1;
    for (;; ++failAt) {
        ZvCore::MemFile inner;
        ZvCore::FaultyFile faulty(inner, failAt);
        why.clear();
        if (ZvPngWriter::Write(ZvPixelBuffer(3, 3), faulty, why))
            break;
        EXPECT_FALSE(why.empty()) << "failure of call " << failAt;
    }
    EXPECT_GT(failAt, 8u);
}

} // namespace
