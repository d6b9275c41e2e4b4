// Walks for drawing.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/RenC/ZvNodeDrawer.h"
#include "Zelvan/RenC/ZvRenderContext.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvBNodePair.h"

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
    ZvNodeDrawer drawer(context);
    Walk(drawer);
}

void ZvBNode::DrawPdf(ZvRenderContext& context) const {
    ZvNodeDrawer drawer(context);
    drawer.ForcePdf();
    Walk(drawer);
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
