#include "Modules/Gdi/ZvGdiSurface.h"
#include "SurfaceShapes.h"
#include "Zelvan/RenC/ZvRasterSurface.h"
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace SurfaceShapes;

/// A white picture in memory that GDI paints on.
class DibSection {
public:
    DibSection() : m_context(CreateCompatibleDC(nullptr)) {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof(BITMAPINFOHEADER), kSide, -kSide, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        m_bitmap = CreateDIBSection(m_context, &info, DIB_RGB_COLORS, &m_bits, nullptr, 0);
        m_former = SelectObject(m_context, m_bitmap);
        std::fill_n(static_cast<uint32_t*>(m_bits), kSide * kSide, 0x00FFFFFFu);
    }
    ~DibSection() {
        SelectObject(m_context, m_former);
        DeleteObject(m_bitmap);
        DeleteDC(m_context);
    }
    HDC Context() const { return m_context; }
    uint32_t At(int x, int y) const {
        GdiFlush();
        return static_cast<const uint32_t*>(m_bits)[y * kSide + x] & 0xFFFFFF;
    }

private:
    HDC m_context;
    HBITMAP m_bitmap;
    HGDIOBJ m_former;
    void* m_bits = nullptr;
};

template <class Picture>
int Ink(const Picture& picture, int left = 0, int top = 0, int size = kSide) {
    int ink = 0;
    for (int y = top; y < top + size; ++y)
        for (int x = left; x < left + size; ++x)
            ink += (picture.At(x, y) >> 8 & 255) < 128;
    return ink;
}

ZvPen Pen(float width, std::vector<float> dashes = {}) {
    ZvPen pen;
    pen.widthPx = width;
    pen.dashes = std::move(dashes);
    return pen;
}

ZvFill Solid() {
    ZvFill fill;
    fill.kind = ZvFill::Kind::Solid;
    return fill;
}

TEST(ZvGdiSurface, PaintsWhatTheRasterSurfacePaints) {
    const float distant = 3e8f, inf = std::numeric_limits<float>::infinity();
    struct Case {
        const char* name;
        Scene scene;
        int blocks; ///< most difference of ink in a block of 12 x 12 pixels: wide lines of GDI end on whole pixels
    };
    const Case cases[] = {
        {"thin lines", [](IZvSurface& s) { s.SetPen({}), Polyline(s, kStar, true); }, 5},
        {"open line",
         [](IZvSurface& s) {
             s.SetPen({}), Polyline(s, {{10, 10}, {50, 10}, {50, 70}});
         },
         3},
        {"wide line",
         [](IZvSurface& s) {
             s.SetPen(Pen(7)), Polyline(s, {{20, 30}, {90, 40}, {30, 90}});
         },
         24},
        {"thin dashes",
         [](IZvSurface& s) {
             s.SetPen(Pen(0, {9, 5})), Polyline(s, {{10, 10}, {100, 10}});
         },
         4},
        {"dots",
         [](IZvSurface& s) {
             s.SetPen({}), Polyline(s, {{20, 20}}), s.SetPen(Pen(9)), Polyline(s, {{60, 60}});
         },
         18},
        {"fill with a hole",
         [](IZvSurface& s) {
             s.SetFill(Solid()), Polygon(s, {kStar, kHole});
         },
         12},
        {"outline",
         [](IZvSurface& s) {
             s.SetFill({}), s.SetPen({}), Polygon(s, {kStar, kHole}, true);
         },
         6},
        {"distant line",
         [=](IZvSurface& s) {
             s.SetPen({}), Polyline(s, {{-distant, 60 - distant / 2}, {distant, 60 + distant / 2}});
         },
         3},
        {"distant polygon",
         [=](IZvSurface& s) {
             s.SetFill(Solid()), Polygon(s, {{{60, 20}, {distant, distant}, {-distant, distant}}});
         },
         12},
        {"not finite",
         [=](IZvSurface& s) {
             s.SetPen({}), Polyline(s, {{10, 20}, {50, 20}, {inf, 0}, {60, 90}, {100, 90}});
         },
         3},
        {"clips",
         [](IZvSurface& s) {
             s.SetFill(Solid()), s.PushClip({20, 20, 90, 90}), s.PushClip({40, 0, 120, 70}),
                 Polygon(s, {kStar}), s.PopClip(), s.PopClip(), Polygon(s, {kHole});
         },
         12},
    };
    for (const Case& c : cases) {
        DibSection gdi;
        {
            ZvGdiSurface surface(gdi.Context(), kSide, kSide);
            c.scene(surface);
        }
        ZvRasterSurface ours(kSide, kSide);
        ours.SetAntialias(false);
        c.scene(ours);
        EXPECT_GT(Ink(gdi), 5) << c.name;
        for (int y = 0; y < kSide; y += 12)
            for (int x = 0; x < kSide; x += 12)
                EXPECT_NEAR(Ink(gdi, x, y, 12), Ink(ours.Picture(), x, y, 12), c.blocks)
                    << c.name << " at " << x << ',' << y;
    }
}

TEST(ZvGdiSurface, ImagesAreStretchedAndTurned) {
    const uint32_t four[4] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFF000000};
    DibSection gdi;
    ZvGdiSurface surface(gdi.Context(), kSide, kSide);
    ASSERT_TRUE(surface.Image(four, 2, 2, {20, 20}, {40, 0}, {0, 40}));
    EXPECT_EQ(gdi.At(30, 30), 0xFF0000u);
    EXPECT_EQ(gdi.At(50, 30), 0x00FF00u);
    EXPECT_EQ(gdi.At(30, 50), 0x0000FFu);
    EXPECT_EQ(gdi.At(15, 30), 0xFFFFFFu);
    EXPECT_FALSE(surface.Image(four, 2, 2, {20, 20}, {40, 0}, {80, 0}));
}

TEST(ZvGdiSurface, HatchesStayWithTheirOrigin) {
    ZvFill fill;
    fill.kind = ZvFill::Kind::Hatch;
    DibSection plain, moved;
    const std::vector<Vec2f> area{{2, 2}, {118, 2}, {118, 118}, {2, 118}};
    ZvGdiSurface first(plain.Context(), kSide, kSide), second(moved.Context(), kSide, kSide);
    first.SetFill(fill);
    Polygon(first, {area});
    fill.hatchOrigin = {3, 0};
    second.SetFill(fill);
    Polygon(second, {area});
    EXPECT_GT(Ink(plain), 500);
    for (int y = 10; y < 100; ++y)
        for (int x = 10; x < 100; ++x)
            ASSERT_EQ(moved.At(x + 3, y), plain.At(x, y));
}

TEST(ZvGdiSurface, TheContextComesBackAsItWas) {
    DibSection gdi;
    const HGDIOBJ pen = GetCurrentObject(gdi.Context(), OBJ_PEN),
                  brush = GetCurrentObject(gdi.Context(), OBJ_BRUSH);
    {
        ZvGdiSurface surface(gdi.Context(), kSide, kSide);
        surface.SetPen(Pen(5));
        surface.SetFill(Solid());
        surface.PushClip({0, 0, 10, 10});
        surface.SetPen(Pen(2));
        surface.PopClip();
        ZvTextRun run;
        run.text = u"HHHH";
        run.heightPx = 20;
        run.baselineStart = {30, 70};
        EXPECT_TRUE(surface.Text(run));
    }
    EXPECT_EQ(GetCurrentObject(gdi.Context(), OBJ_PEN), pen);
    EXPECT_EQ(GetCurrentObject(gdi.Context(), OBJ_BRUSH), brush);
}

} // namespace
