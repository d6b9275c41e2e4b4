#pragma once
#include "ZvCore/Api.h"
#include <cstddef>
#include <cstdint>
#include <vector>

/// A small picture of a drawing: rows from the top, 0x00RRGGBB a pixel. In files it is a 24-bit device-independent
/// bitmap file (BITMAPFILEHEADER, BITMAPINFOHEADER, rows from the bottom), which any viewer opens.
struct ZV_API ZvPreviewBitmap {
    static constexpr int kSide = 256;         ///< of what the engine writes
    static constexpr int kLargestSide = 4096; ///< of what it reads

    int width = 0;
    int height = 0;
    std::vector<uint32_t> pixels;

    std::vector<uint8_t> Encode() const;
    /// 24 and 32 bits a pixel, uncompressed, rows from the bottom or from the top. False (this untouched) for anything else.
    bool Decode(const uint8_t* bytes, size_t count);
};
