#pragma once
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/RenC/ZvCoverageFill.h"
#include "Zelvan/RenC/ZvDasher.h"
#include "Zelvan/RenC/ZvPixelBuffer.h"
#include "Zelvan/RenC/ZvStroker.h"
#include <vector>

/// The engine's own surface: draws into a 32-bit picture in memory. Thin lines and areas are several times as fast as with general
/// painters; wide and dashed pens are stroked into the same coverage buffer. Text goes to the companion surface, when there is one
/// that paints into the same picture.
class ZV_API ZvRasterSurface : public IZvSurface {
public:
    /// `backgroundArgb`: straight alpha.
    ZvRasterSurface(int width, int height, uint32_t backgroundArgb = 0xFFFFFFFF);
    ZvRasterSurface(const ZvRasterSurface&) = delete;
    ZvRasterSurface& operator=(const ZvRasterSurface&) = delete;

    /// Off: lines and edges of areas are not smoothed (twice as fast for thin lines).
    void SetAntialias(bool on);
    /// Asked for text. Must paint into Picture(); the caller keeps it. To be set before clips are pushed.
    void SetCompanion(IZvSurface* companion) { m_companion = companion; }
    ZvPixelBuffer& Picture() { return m_picture; }
    const ZvPixelBuffer& Picture() const { return m_picture; }

    int Width() const override { return m_picture.Width(); }
    int Height() const override { return m_picture.Height(); }
    void SetPen(const ZvPen& pen) override;
    void SetFill(const ZvFill& fill) override;
    void Polyline(const Vec2f* points, size_t count, bool closed) override;
    void Polygon(const ZvSurfaceRing* rings, size_t count, bool outline) override;
    bool Text(const ZvTextRun& run) override;
    bool Image(const uint32_t* pixels, int width, int height, Vec2f origin, Vec2f right, Vec2f down) override;
    void PushClip(const Rect2I& clip) override;
    void PopClip() override;

private:
    void Stroke(const Vec2f* points, size_t count, bool closed);
    void PaintHatch();
    static ZvPixelBuffer Shrunk(const uint32_t* pixels, int width, int height, int fx, int fy);
    void PaintImage(const uint32_t* pixels, int width, int height, Vec2f origin, Vec2f right, Vec2f down,
                    float spanX, float spanY);

    ZvPixelBuffer m_picture;
    ZvCoverageFill m_cover;
    ZvStroker m_stroker{m_cover};
    ZvDasher m_dasher;
    ZvPen m_pen;
    ZvFill m_fill;
    uint32_t m_penColor = 0xFF000000;
    uint32_t m_fillColor = 0xFF000000;
    bool m_antialias = true;
    std::vector<Rect2I> m_clips;
    IZvSurface* m_companion = nullptr;
};
