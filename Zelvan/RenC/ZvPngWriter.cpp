#include "Zelvan/RenC/ZvPngWriter.h"
#include "ZvCore/Codec.h"
#include <array>
#include <cstring>
#include <vector>

namespace {

// CRC-32 of ISO 3309, as PNG's Annex D gives it.
uint32_t Crc(const uint8_t* bytes, size_t count, uint32_t crc) {
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t n = 0; n < 256; ++n) {
            uint32_t c = n;
            for (int k = 0; k < 8; ++k)
                c = c & 1 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[n] = c;
        }
        return t;
    }();
    for (size_t i = 0; i < count; ++i)
        crc = table[(crc ^ bytes[i]) & 255] ^ (crc >> 8);
    return crc;
}

void PutBig(uint8_t* at, uint32_t v) {
    at[0] = uint8_t(v >> 24), at[1] = uint8_t(v >> 16), at[2] = uint8_t(v >> 8), at[3] = uint8_t(v);
}

bool Chunk(ZvCore::IFile& file, const char* type, const std::vector<uint8_t>& data) {
    uint8_t head[8], tail[4];
    PutBig(head, uint32_t(data.size()));
    std::memcpy(head + 4, type, 4);
    PutBig(tail, ~Crc(data.data(), data.size(), Crc(head + 4, 4, ~0u)));
    return file.Write(head, 8) == 8 && file.Write(data.data(), data.size()) == data.size() &&
           file.Write(tail, 4) == 4;
}

bool IsOpaque(const ZvPixelBuffer& picture) {
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            if (picture.At(x, y) >> 24 != 255)
                return false;
    return true;
}

uint8_t Straight(uint32_t c, uint32_t a) {
    return a ? uint8_t(std::min<uint32_t>(255, (c * 255 + a / 2) / a)) : 0;
}

// Rows with filter type 1 (difference to the pixel on the left), which suits drawings.
std::vector<uint8_t> FilteredRows(const ZvPixelBuffer& picture, bool opaque) {
    const size_t channels = opaque ? 3 : 4;
    std::vector<uint8_t> rows;
    rows.reserve(size_t(picture.Height()) * (size_t(picture.Width()) * channels + 1));
    for (int y = 0; y < picture.Height(); ++y) {
        rows.push_back(1);
        uint8_t left[4] = {};
        for (int x = 0; x < picture.Width(); ++x) {
            const uint32_t p = picture.At(x, y), a = p >> 24;
            const uint8_t now[4] = {Straight(p >> 16 & 255, a), Straight(p >> 8 & 255, a),
                                    Straight(p & 255, a), uint8_t(a)};
            for (size_t c = 0; c < channels; ++c)
                rows.push_back(uint8_t(now[c] - left[c])), left[c] = now[c];
        }
    }
    return rows;
}

} // namespace

bool ZvPngWriter::Write(const ZvPixelBuffer& picture, ZvCore::IFile& file, std::string& why) {
    if (picture.Width() == 0 || picture.Height() == 0) {
        why = "the picture is empty";
        return false;
    }
    const bool opaque = IsOpaque(picture);
    std::vector<uint8_t> header(13), data;
    PutBig(header.data(), uint32_t(picture.Width()));
    PutBig(header.data() + 4, uint32_t(picture.Height()));
    header[8] = 8;
    header[9] = opaque ? 2 : 6;
    const std::vector<uint8_t> rows = FilteredRows(picture, opaque);
    if (!ZvCore::Codec::Deflate(6, rows.data(), rows.size(), data, why))
        return false;
    static constexpr uint8_t kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (file.Write(kSignature, 8) == 8 && Chunk(file, "IHDR", header) && Chunk(file, "IDAT", data) &&
        Chunk(file, "IEND", {}))
        return true;
    why = file.ErrorText();
    return false;
}
