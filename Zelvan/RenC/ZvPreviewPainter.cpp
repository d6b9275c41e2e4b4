#include "Zelvan/RenC/ZvPreviewPainter.h"
#include "Zelvan/RenC/ZvFrameRenderer.h"
#include "Zelvan/RenC/ZvRasterSurface.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/View/ZvViewXForm.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvPreviewBitmap.h"

namespace {

constexpr double kMargin = 6; // pixels

bool IsShown(const ZvLayer& layer) {
    return layer.IsVisible() && !layer.IsInternal();
}

ZvBounds2D VisibleExtent(const ZvDrawing& drawing) {
    ZvBounds2D extent;
    for (const ZvLayer* layer : drawing.LayerTable()->GetDrawOrder())
        if (IsShown(*layer) && !layer->Tree().VisibleBounds().IsNull())
            extent.ExpandToFit(layer->Tree().VisibleBounds().ToBounds2D());
    if (extent.IsNull())
        extent.Set(0, 0, 1, 1);
    return extent;
}

} // namespace

bool ZvPreviewPainter::Paint(const ZvDrawing& drawing, ZvPreviewBitmap& bitmap) {
    if (bitmap.width < 1 || bitmap.height < 1)
        return false;
    ZvRasterSurface surface(bitmap.width, bitmap.height);
    Zelvan::ZvViewXForm view;
    view.SetWindowRect(Rect2I{0, 0, bitmap.width, bitmap.height}, false);
    view.FitPlan(VisibleExtent(drawing), kMargin);
    ZvRenderContext context(ZvRenderMode::Raster, surface, view, &drawing);
    ZvFrameRenderer::Options options;
    options.layerFilter = IsShown;
    options.budgetSeconds = kMostSeconds;
    ZvFrameRenderer(drawing, context, std::move(options)).Draw();
    bitmap.pixels.clear();
    for (int y = 0; y < bitmap.height; ++y)
        for (int x = 0; x < bitmap.width; ++x)
            bitmap.pixels.push_back(surface.Picture().At(x, y) & 0x00FFFFFFu);
    return true;
}
