#include "Zelvan/RenC/ZvNodeDrawer.h"
#include "Zelvan/Entities/ZvLineEntity.h"
#include "Zelvan/RenC/ZvRenderContext.h"
#include <algorithm>

namespace {

/// Entities lie anywhere in memory: this many before its turn each is asked for.
constexpr size_t kPrefetch = 16;

/// As much as is looked at before a dot is drawn; the rest of an object, where there is one, comes with the next line.
void Prefetch(const ZvEntity* entity) {
    const char* bytes = reinterpret_cast<const char*>(entity);
    __builtin_prefetch(bytes);
    __builtin_prefetch(bytes + sizeof(ZvLineEntity) - 1);
}

/// An entity's box in steps of the grid.
struct Steps {
    uint32_t minX, minY, maxX, maxY;
    explicit Steps(uint32_t packed)
        : minX(packed & 255), minY(packed >> 8 & 255), maxX(255 - (packed >> 16 & 255)),
          maxY(255 - (packed >> 24)) {}
    bool Meets(const Steps& window) const {
        return minX <= window.maxX && maxX >= window.minX && minY <= window.maxY && maxY >= window.minY;
    }
    uint32_t Width() const { return maxX - minX + 1; }
    uint32_t Height() const { return maxY - minY + 1; }
};

/// Most steps that together are less than a pixel.
uint32_t StepsInPixel(double pixel, double stepsPerWorld) {
    return uint32_t(std::clamp(pixel * stepsPerWorld, 0.0, 255.0));
}

} // namespace

ZvNodeDrawer::ZvNodeDrawer(ZvRenderContext& context)
    : m_context(context),
      m_dots(context.PlanMap() && context.Mode() != ZvRenderMode::None && !context.Heat()) {}

ZvWalkStep ZvNodeDrawer::Node(const ZvBNode& node, const ZvBounds3D& bounds) {
    ++m_context.stats.nodesVisited;
    const ZvBounds2D box = bounds.ToBounds2D(), &window = m_context.CullWindow();
    if (!window.PositiveUnion(box)) {
        ++m_context.stats.nodesCulled;
        return ZvWalkStep::Skip;
    }
    const double pixel = m_context.WorldPerPixel();
    if (!m_dots || box.Width() >= pixel || box.Height() >= pixel) {
        m_whole = box.IsInsideOf(window);
        return ZvWalkStep::Descend; // not TakeAll: nodes below may be smaller than a pixel
    }
    if (WantsNext()) {
        ++m_context.stats.nodesBelowPixel;
        DrawStandIn(node);
        m_context.Flush();
    }
    return ZvWalkStep::Skip;
}

// What is drawn last shows.
bool ZvNodeDrawer::DrawStandIn(const ZvBNode& node) {
    if (const auto own = node.DrawSet(); !own.empty()) {
        DrawOne(*own.back());
        return true;
    }
    return node.IsSplit() && (DrawStandIn(*node.Child(1)) || DrawStandIn(*node.Child(0)));
}

void ZvNodeDrawer::DrawOne(const ZvEntity& entity) {
    ++m_context.stats.entitiesDrawn;
    if (m_context.Heat())
        entity.DrawHeatmap(m_context);
    else if (m_forcePdf)
        entity.DrawPdf(m_context);
    else
        entity.Draw(m_context);
}

// Kinds that are a dot in their line's pen when their bounds are below a pixel.
const ZvLineEntity* ZvNodeDrawer::AsDot(ZvEntity& entity) {
    const ZvLineEntity* line = entity.ToLineEntity();
    return line && !entity.IsViewScaleDependent() ? line : nullptr;
}

// Dots come before the rest of the run. A run ends with everything painted, so that a frame that stops in between paints in the
// same order as one that does not.
bool ZvNodeDrawer::Run(const ZvNodeRun& run) {
    if (!WantsNext())
        return true;
    const ZvNodeGrid grid = run.node->Grid();
    const ZvBounds2D& w = m_context.CullWindow();
    const Steps window(grid.Pack(w.minX, w.minY, w.maxX, w.maxY));
    const double pixel = m_context.WorldPerPixel();
    const uint32_t dotWidth = m_dots ? StepsInPixel(pixel, double(grid.scaleX)) : 0;
    const uint32_t dotHeight = m_dots ? StepsInPixel(pixel, double(grid.scaleY)) : 0;
    const size_t count = run.entities.size();
    for (size_t i = 0; i < std::min(count, kPrefetch); ++i)
        Prefetch(run.entities[i]);
    for (size_t i = 0; i < count; ++i) {
        if (i + kPrefetch < count)
            Prefetch(run.entities[i + kPrefetch]);
        ZvEntity& entity = *run.entities[i];
        if (run.boxes[i] == ZvNodeGrid::kLoose) {
            DrawOne(entity);
            continue;
        }
        const Steps box(run.boxes[i]);
        if (!m_whole && !box.Meets(window))
            continue;
        const ZvLineEntity* dot =
            box.Width() <= dotWidth && box.Height() <= dotHeight ? AsDot(entity) : nullptr;
        if (!dot)
            DrawOne(entity);
        else if (++m_context.stats.entitiesDrawn; m_context.UsePen(*dot))
            m_context.Dot(
                (*m_context.PlanMap())(grid.originX + (box.minX - 1 + box.maxX) * 0.5 / double(grid.scaleX),
                                       grid.originY + (box.minY - 1 + box.maxY) * 0.5 / double(grid.scaleY)));
    }
    m_context.Flush();
    return GoesOn();
}
