#pragma once
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/ZvBounds.h"
#include "Zelvan/ZvColor.h"
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class ZvBrush;
class ZvDrawing;
class ZvEntity;
class ZvFilledEntity;
class ZvLayer;
class ZvLineEntity;
class ZvLineType;
class ZvLineTypeRec;
class ZvLineWidth;
namespace Zelvan {
class ZvViewXForm;
}

/// Which of an entity's drawing operations a context asks for. None: the context only measures, nothing is drawn.
enum class ZvRenderMode { None, Raster, Pdf, Gdi };

/// World XY to pixels as an affine map: what a plan view comes down to. px = xx * x + xy * y + x0, py = yx * x + yy * y + y0.
struct ZvPixelMap {
    double xx = 1, xy = 0, x0 = 0;
    double yx = 0, yy = 1, y0 = 0;
    Vec2f operator()(double x, double y) const {
        return {float(xx * x + xy * y + x0), float(yx * x + yy * y + y0)};
    }
};

/// Counts of one frame, for the benchmarks and the statistics line.
struct ZvRenderStats {
    uint64_t nodesVisited = 0, nodesCulled = 0, nodesBelowPixel = 0;
    uint64_t entitiesDrawn = 0, entitiesBelowPixel = 0;
    uint64_t verticesRead = 0, verticesPainted = 0;
};

/// Where and how entities draw in one frame: surface, view, current pen and fill, by-layer values of the layer at hand. An entity
/// asks for its pen or fill (by-layer values are resolved once per run of equal attributes), maps its points and hands them over;
/// thinning and batching happen here. One frame, one thread.
class ZV_API ZvRenderContext {
public:
    /// `surface` and `xform` must outlive the context; `drawing` gives palette references and line types and may be null.
    ZvRenderContext(ZvRenderMode mode, IZvSurface& surface, const Zelvan::ZvViewXForm& xform,
                    const ZvDrawing* drawing);
    ~ZvRenderContext();
    ZvRenderContext(const ZvRenderContext&) = delete;
    ZvRenderContext& operator=(const ZvRenderContext&) = delete;

    ZvRenderMode Mode() const { return m_mode; }
    IZvSurface& Surface() { return m_surface; }
    const Zelvan::ZvViewXForm& XForm() const { return m_xform; }
    const ZvScaleSetup& Scale() const { return m_scale; }
    /// Null for views that are not plan views: map through XForm() then.
    const ZvPixelMap* PlanMap() const { return m_isPlan ? &m_planMap : nullptr; }
    /// World extent of the surface, wider by a few pixels and by what the current pen reaches: geometry beyond does not show.
    /// Everything for views that are not plan views.
    const ZvBounds2D& WorldWindow() const { return m_worldWindow; }
    /// World extent of the surface, wider by what lines and markers of the layer at hand may reach beyond their bounds.
    const ZvBounds2D& CullWindow() const { return m_cullWindow; }
    /// World units covered by a pixel at the view's centre.
    double WorldPerPixel() const { return m_worldPerPixel; }
    /// Pixels of the surface to one of a screen (96 to the inch): sizes given in pixels are multiplied by it.
    double PixelScale() const { return m_pixelScale; }
    double WorldPerScreenPixel() const { return m_worldPerPixel * m_pixelScale; }
    /// Palette index 7 draws black on light backgrounds, white on dark ones. At first that of the view's options.
    void SetBackground(uint32_t argb) { m_background = argb; }
    /// Resolution at which sizes in points, millimetres and pixels (96 to the inch) are drawn; at first that of the view's options.
    /// Where these give a paper scale, it goes on deciding points and millimetres.
    void SetDotsPerInch(double dpi);

    /// By-layer values from here on; null: palette index 7, thin, continuous, empty.
    void EnterLayer(const ZvLayer* layer);

    /// Makes the entity's line the current pen. False when nothing is to be stroked. Lines wider than two pixels have round ends
    /// unless the entity's line cap says flat (1) or square (2); dashes are flat.
    bool UsePen(const ZvLineEntity& entity);
    /// Makes the entity's brush the current fill. False when the brush is empty.
    bool UseFill(const ZvFilledEntity& entity);
    /// A thin pen in the colour of an entity without line attributes.
    void UseColor(const ZvEntity& entity);

    /// Scratch for mapped points, kept between calls: at least `count` points, contents undefined.
    Vec2f* Points(size_t count);
    /// Strokes with the current pen. `points` may lie in Points(); vertices within half a pixel of the last one kept are left out.
    void Stroke(Vec2f* points, size_t count, bool closed);
    /// Even-odd fill of rings that lie one after another in `points`; ends[i] is one past the last point of ring i. Also strokes
    /// their outline when `outline` is set. Thins like Stroke.
    void Fill(Vec2f* points, const uint32_t* ends, size_t ringCount, bool outline);
    /// What is smaller than a pixel: one pixel in the current pen's colour.
    void Dot(Vec2f at);
    /// Marker of a point entity, `size` pixels across: a filled dot of that diameter.
    void Marker(Vec2f at, float size);
    Vec2f MapPoint(const Vec3d& world) const;

    /// Grid into which DrawHeatmap adds lengths or counts; one cell a pixel. Null unless asked for.
    std::vector<float>* Heat() { return m_heat.get(); }
    int HeatWidth() const { return m_heatWidth; }
    void EnableHeat(int width, int height);

    /// Entities of one class waiting to be drawn together (the batched DrawRast); Flush before changing layers.
    void Batch(const ZvEntity* entity);
    void Flush();

    ZvRenderStats stats;

private:
    void SetUpView();
    uint32_t ResolveColor(const ZvColor& color) const;
    void ApplyPen(uint32_t argb, const ZvLineWidth& width, const ZvLineType& type, int lineCap);
    double WidthInPixels(const ZvLineWidth& width) const;
    Vec2f HatchOrigin(const ZvFill& fill) const;
    std::vector<float> DashesInPixels(const ZvLineTypeRec& type) const;
    size_t Thin(Vec2f* points, size_t count) const;

    ZvRenderMode m_mode;
    IZvSurface& m_surface;
    const Zelvan::ZvViewXForm& m_xform;
    const ZvDrawing* m_drawing;
    ZvScaleSetup m_scale;
    ZvPixelMap m_planMap;
    bool m_isPlan = false;
    ZvBounds2D m_surfaceWindow, m_worldWindow, m_cullWindow; // what the surface shows; see the accessors
    double m_worldPerPixel = 1;
    double m_pixelScale = 1;
    uint32_t m_background = 0xFFFFFFFF;
    const ZvLayer* m_layer = nullptr;

    struct PenKey {
        uint32_t color;
        int16_t colorIndex, lineType;
        float width;
        int lineCap;
        friend bool operator==(const PenKey&, const PenKey&) = default;
    };
    struct FillKey {
        uint32_t color;
        int16_t colorIndex, style;
        friend bool operator==(const FillKey&, const FillKey&) = default;
    };
    PenKey m_penKey{};
    FillKey m_fillKey{};
    bool m_penValid = false, m_fillValid = false, m_penDraws = false, m_fillDraws = false;
    uint32_t m_penColor = 0xFF000000;
    std::vector<Vec2f> m_points;
    std::vector<ZvSurfaceRing> m_rings;
    std::unique_ptr<std::vector<float>> m_heat;
    int m_heatWidth = 0;
    std::vector<const ZvEntity*> m_batch, m_batchInWork;
    uint32_t m_batchCode = 0;
};
