// Walks for drawing.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/RenC/ZvRenderContext.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvBNodePair.h"

namespace {

bool OutsideOf(const ZvBounds3D& b, const ZvBounds2D& window) {
    return b.minX > window.maxX || b.maxX < window.minX || b.minY > window.maxY || b.maxY < window.minY;
}

/// Hands a context what its window shows.
class DrawVisitor : public IZvBNodeVisitor {
public:
    explicit DrawVisitor(ZvRenderContext& context) : m_context(context), m_window(context.WorldWindow()) {
        if (context.PlanMap())
            m_pixel = context.WorldPerPixel();
    }

    ZvWalkStep Node(const ZvBNode& node, const ZvBounds3D& bounds) override {
        ++m_context.stats.nodesVisited;
        if (OutsideOf(bounds, m_window)) {
            ++m_context.stats.nodesCulled;
            return ZvWalkStep::Skip;
        }
        if (bounds.maxX - bounds.minX < m_pixel && bounds.maxY - bounds.minY < m_pixel) {
            // All of it falls on one pixel: what is drawn last decides, any one stands for it.
            ++m_context.stats.nodesBelowPixel;
            DrawAny(node);
            return ZvWalkStep::Skip;
        }
        return bounds.IsInsideOf2D(m_window) ? ZvWalkStep::TakeAll : ZvWalkStep::Descend;
    }

    bool Run(const ZvNodeRun& run) override {
        for (ZvEntity* entity : run.entities)
            entity->Draw(m_context);
        return true;
    }

private:
    bool DrawAny(const ZvBNode& node) {
        if (const auto drawn = node.DrawSet(); !drawn.empty()) {
            drawn.back()->Draw(m_context);
            return true;
        }
        return node.IsSplit() && (DrawAny(*node.Child(1)) || DrawAny(*node.Child(0)));
    }

    ZvRenderContext& m_context;
    const ZvBounds2D m_window;
    double m_pixel = 0;
};

} // namespace

bool ZvBNode::Walk(IZvBNodeVisitor& visitor) const {
    RepairBounds();
    return WalkNode(visitor, false);
}

bool ZvBNode::WalkNode(IZvBNodeVisitor& visitor, bool whole) const {
    // What cannot be placed has no part in the bounds and must be shown all the same.
    const bool loose = IsRoot() && m_list.Size() > 0;
    const ZvBounds3D& bounds = VisibleBounds();
    if (bounds.IsNull() && !loose)
        return true;
    if (!whole && !bounds.IsNull()) {
        const ZvWalkStep step = visitor.Node(*this, bounds);
        if (step == ZvWalkStep::Stop)
            return false;
        if (step == ZvWalkStep::Skip && !loose)
            return true;
        if (step == ZvWalkStep::Skip)
            return RunLoose(visitor);
        whole = step == ZvWalkStep::TakeAll;
    }
    const std::span<ZvEntity* const> own = DrawSet();
    if (!own.empty() && !visitor.Run({own, DrawSetBoxes(), this, whole}))
        return false;
    return !m_children ||
           (m_children->child[0].WalkNode(visitor, whole) && m_children->child[1].WalkNode(visitor, whole));
}

bool ZvBNode::RunLoose(IZvBNodeVisitor& visitor) const {
    const std::span<ZvEntity* const> own = DrawSet();
    const uint32_t* boxes = DrawSetBoxes();
    for (size_t i = 0; i < own.size(); ++i)
        if (boxes[i] == ZvNodeGrid::kLoose && !visitor.Run({own.subspan(i, 1), boxes + i, this, false}))
            return false;
    return true;
}

void ZvBNode::Draw(ZvRenderContext& context) const {
    DrawVisitor visitor(context);
    Walk(visitor);
    context.Flush();
}

void ZvBNode::DrawPdf(ZvRenderContext& context) const {
    const ZvBounds2D& window = context.WorldWindow();
    const auto draw = [&context](ZvEntity* entity) {
        entity->DrawPdf(context);
        return true;
    };
    ForEachInRect(window, {.visibleOnly = true}, draw);
}

void ZvBNode::DrawCachedSet(ZvRenderContext& context) const {
    for (const ZvEntity* entity : DrawSet())
        entity->Draw(context);
}

void ZvBNode::DrawNonCached(ZvRenderContext& context) const {
    for (const ZvEntity* entity : m_list)
        if (!entity->IsErased() && entity->IsVisible())
            entity->Draw(context);
}
