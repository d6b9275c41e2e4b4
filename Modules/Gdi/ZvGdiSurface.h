#pragma once
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/RenC/ZvSurfaceCut.h"
#include <vector>
#include <windows.h>

/// A surface over a Windows device context: windows, printers, memory bitmaps. The context stays the caller's and must outlive the
/// surface; its state is saved at construction and put back at the end. GDI has no alpha: colours are blended with nothing. What
/// reaches far out is cut near the surface's edges, because GDI counts in integers.
class ZvGdiSurface : public IZvSurface {
public:
    ZvGdiSurface(HDC context, int width, int height);
    ~ZvGdiSurface() override;
    ZvGdiSurface(const ZvGdiSurface&) = delete;
    ZvGdiSurface& operator=(const ZvGdiSurface&) = delete;

    int Width() const override { return m_width; }
    int Height() const override { return m_height; }
    void SetPen(const ZvPen& pen) override;
    void SetFill(const ZvFill& fill) override;
    void Polyline(const Vec2f* points, size_t count, bool closed) override;
    void Polygon(const ZvSurfaceRing* rings, size_t count, bool outline) override;
    bool Text(const ZvTextRun& run) override;
    bool Image(const uint32_t* pixels, int width, int height, Vec2f origin, Vec2f right, Vec2f down) override;
    void PushClip(const Rect2I& clip) override;
    void PopClip() override;

private:
    HPEN MakePen() const;
    void SelectAndDelete(HGDIOBJ fresh, HGDIOBJ& held);
    void DrawLine(const Vec2f* points, size_t count, bool closed);
    ZvSurfaceCut::Box Reach() const;

    HDC m_context;
    int m_width, m_height;
    int m_saved;
    HGDIOBJ m_pen = nullptr;   // ours, selected
    HGDIOBJ m_brush = nullptr; // ours, selected; null while the fill is none
    ZvPen m_penSpec;
    std::vector<POINT> m_points;
    std::vector<Vec2f> m_cut;
    std::vector<INT> m_counts;
};
