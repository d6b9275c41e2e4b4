#include "Zelvan/ZvPreviewBitmap.h"
#include <cstring>

namespace {

constexpr size_t kFileHead = 14;
constexpr size_t kInfoHead = 40;
constexpr size_t kPixels = kFileHead + kInfoHead;

size_t RowBytes(size_t width, size_t bits) {
    return (width * bits / 8 + 3) & ~size_t(3);
}

template <class T>
void Put(std::vector<uint8_t>& to, size_t at, T value) {
    std::memcpy(to.data() + at, &value, sizeof(T));
}

template <class T>
T Load(const uint8_t* from) {
    T value;
    std::memcpy(&value, from, sizeof(T));
    return value;
}

} // namespace

std::vector<uint8_t> ZvPreviewBitmap::Encode() const {
    const size_t rowBytes = RowBytes(size_t(width), 24);
    std::vector<uint8_t> bytes(kPixels + rowBytes * size_t(height));
    bytes[0] = 'B';
    bytes[1] = 'M';
    Put(bytes, 2, uint32_t(bytes.size()));
    Put(bytes, 10, uint32_t(kPixels));
    Put(bytes, kFileHead, uint32_t(kInfoHead));
    Put(bytes, kFileHead + 4, int32_t(width));
    Put(bytes, kFileHead + 8, int32_t(height));
    Put(bytes, kFileHead + 12, uint16_t(1));
    Put(bytes, kFileHead + 14, uint16_t(24));
    Put(bytes, kFileHead + 20, uint32_t(rowBytes * size_t(height)));
    for (int y = 0; y < height; ++y) {
        const uint32_t* from = pixels.data() + size_t(y) * size_t(width);
        uint8_t* to = bytes.data() + kPixels + rowBytes * size_t(height - 1 - y);
        for (int x = 0; x < width; ++x, to += 3) {
            to[0] = uint8_t(from[x]);
            to[1] = uint8_t(from[x] >> 8);
            to[2] = uint8_t(from[x] >> 16);
        }
    }
    return bytes;
}

bool ZvPreviewBitmap::Decode(const uint8_t* bytes, size_t count) {
    if (count < kPixels || bytes[0] != 'B' || bytes[1] != 'M' ||
        Load<uint32_t>(bytes + kFileHead) < kInfoHead)
        return false;
    const size_t start = Load<uint32_t>(bytes + 10);
    const int64_t w = Load<int32_t>(bytes + kFileHead + 4), h = Load<int32_t>(bytes + kFileHead + 8);
    const size_t bits = Load<uint16_t>(bytes + kFileHead + 14);
    const bool fromTop = h < 0;
    const int64_t rows = fromTop ? -h : h;
    if (w < 1 || rows < 1 || w > kLargestSide || rows > kLargestSide || (bits != 24 && bits != 32) ||
        Load<uint32_t>(bytes + kFileHead + 16) != 0)
        return false;
    const size_t rowBytes = RowBytes(size_t(w), bits);
    if (start > count || rowBytes * size_t(rows) > count - start)
        return false;
    width = int(w);
    height = int(rows);
    pixels.resize(size_t(w) * size_t(rows));
    for (int y = 0; y < height; ++y) {
        const uint8_t* from = bytes + start + rowBytes * size_t(fromTop ? y : height - 1 - y);
        uint32_t* to = pixels.data() + size_t(y) * size_t(width);
        for (int x = 0; x < width; ++x, from += bits / 8)
            to[x] = uint32_t(from[0] | from[1] << 8 | from[2] << 16);
    }
    return true;
}
