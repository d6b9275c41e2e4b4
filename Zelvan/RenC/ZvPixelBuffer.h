#pragma once
#include "ZvCore/Vec.h"
#include <algorithm>
#include <cstdint>
#include <vector>

/// A 32-bit picture in memory: premultiplied ARGB (0xAARRGGBB), rows from top to bottom without padding.
class ZvPixelBuffer {
public:
    ZvPixelBuffer() = default;
    ZvPixelBuffer(int width, int height)
        : m_width(std::max(width, 0)), m_height(std::max(height, 0)),
          m_pixels(size_t(m_width) * size_t(m_height)) {}

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    uint32_t* Row(int y) { return m_pixels.data() + size_t(y) * size_t(m_width); }
    const uint32_t* Row(int y) const { return m_pixels.data() + size_t(y) * size_t(m_width); }
    uint32_t At(int x, int y) const { return Row(y)[x]; }
    void Clear(uint32_t premultiplied) { std::fill(m_pixels.begin(), m_pixels.end(), premultiplied); }
    size_t SizeInBytes() const { return m_pixels.size() * sizeof(uint32_t); }
    friend bool operator==(const ZvPixelBuffer&, const ZvPixelBuffer&) = default;

    /// Straight alpha 0xAARRGGBB to premultiplied.
    static constexpr uint32_t Premultiply(uint32_t argb) {
        const uint32_t a = argb >> 24;
        return a == 255 ? argb
                        : a << 24 | Times(argb >> 16 & 255, a) << 16 | Times(argb >> 8 & 255, a) << 8 |
                              Times(argb & 255, a);
    }
    /// c * a / 255, rounded to nearest (J. Blinn, "Three Wrongs Make a Right", 1995).
    static constexpr uint32_t Times(uint32_t c, uint32_t a) {
        const uint32_t t = c * a + 128;
        return (t + (t >> 8)) >> 8;
    }
    /// Source-over of a premultiplied colour weakened to `coverage` / 255.
    static constexpr uint32_t Over(uint32_t under, uint32_t over, uint32_t coverage) {
        if (coverage < 255)
            over = ScaleAll(over, coverage);
        return over + ScaleAll(under, 255 - (over >> 24));
    }

    /// Over for colours of full alpha: `over` and `under` mixed as `coverage` is to 255, rounded once.
    static constexpr uint32_t Mix(uint32_t under, uint32_t over, uint32_t coverage) {
        uint64_t wide = Spread(over) * coverage + Spread(under) * (255 - coverage) + 0x0080008000800080ull;
        wide = (wide + (wide >> 8 & kLanes)) >> 8 & kLanes;
        return uint32_t(wide | wide >> 24);
    }

private:
    static constexpr uint64_t kLanes = 0x00FF00FF00FF00FFull;
    /// The four channels as 16-bit lanes.
    static constexpr uint64_t Spread(uint32_t pixel) { return (uint64_t(pixel) << 24 | pixel) & kLanes; }
    static constexpr uint32_t ScaleAll(uint32_t pixel, uint32_t a) {
        uint64_t wide = Spread(pixel) * a + 0x0080008000800080ull;
        wide = (wide + (wide >> 8 & kLanes)) >> 8 & kLanes;
        return uint32_t(wide | wide >> 24);
    }
    int m_width = 0;
    int m_height = 0;
    std::vector<uint32_t> m_pixels;
};
