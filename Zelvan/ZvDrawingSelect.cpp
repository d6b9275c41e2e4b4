#include "Zelvan/DrawingAux/IZvCommandRunner.h"
#include "Zelvan/DrawingAux/ZvSelectClipper.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/View/ZvView.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvSelFilter.h"
#include <algorithm>

// Finding entities in the layers' trees, and the selections made of what was found.

namespace {

bool Searched(const ZvLayer& layer, const ZvDrawing::Find& options) {
    return !layer.IsErased() && (options.invisible || layer.IsVisible()) &&
           (options.internalLayers || !layer.IsInternal()) && (options.lockedLayers || !layer.IsLocked());
}

ZvTreeQuery TreeQuery(const ZvDrawing::Find& options) {
    ZvTreeQuery query;
    query.visibleOnly = !options.invisible;
    query.enclosed = !options.crossing;
    return query;
}

/// Entities that a user can pick, in any case.
ZvDrawing::Find Picking(bool crossing, bool exact) {
    ZvDrawing::Find options;
    options.unselectable = false;
    options.crossing = crossing;
    options.exact = exact;
    return options;
}

bool IsPickable(const ZvEntity& entity) {
    const ZvLayer* layer = entity.GetLayer();
    return entity.IsSelectable() && entity.IsVisible() && !entity.IsErased() && layer &&
           Searched(*layer, ZvDrawing::Find());
}

} // namespace

// --- finding ----------------------------------------------------------------------------------------------

void ZvDrawing::FindEntities(const ZvBounds2D& box, std::vector<ZvEntity*>& found) const {
    FindEntities(box, found, Find());
}

void ZvDrawing::FindEntities(const ZvBounds2D& box, std::vector<ZvEntity*>& found,
                             const Find& options) const {
    FindEntitiesOnLayers(m_layerTable->GetDrawOrder(), box, found, options);
}

void ZvDrawing::FindEntitiesOnLayers(const std::vector<ZvLayer*>& layers, const ZvBounds2D& box,
                                     std::vector<ZvEntity*>& found, const Find& options) const {
    const ZvTreeQuery query = TreeQuery(options);
    for (ZvLayer* layer : layers) {
        if (!layer || !Searched(*layer, options) || !layer->EnsureEntireLayerLoaded())
            continue;
        layer->Tree().ForEachInRect(box, query, [&](ZvEntity* entity) {
            if ((options.unselectable || entity->IsSelectable()) &&
                (!options.exact || !options.crossing || entity->ClipTest(box) != ZvClipResult::Outside))
                found.push_back(entity);
            return true;
        });
    }
}

ZvEntity* ZvDrawing::FindClosest(const Vec3d& point, double radius, double* distance) const {
    std::vector<ZvEntity*> near;
    Find options;
    options.exact = false;
    FindEntities({point.x - radius, point.y - radius, point.x + radius, point.y + radius}, near, options);
    ZvEntity* closest = nullptr;
    double best = radius;
    for (ZvEntity* entity : near) // in drawing order: of equals, the last one lies on top
        if (const double d = entity->DistanceToG(point); d <= best) {
            best = d;
            closest = entity;
        }
    if (closest && distance)
        *distance = best;
    return closest;
}

// --- the Select family ------------------------------------------------------------------------------------

int ZvDrawing::AddFiltered(const std::vector<ZvEntity*>& found, ZvSelection& selection) const {
    const int before = selection.Count();
    for (const ZvEntity* entity : found)
        if (m_selectionFilter->Filter(entity))
            selection.Insert(entity);
    return selection.Count() - before;
}

bool ZvDrawing::Select(ZvEntity* entity, ZvSelection& selection) const {
    return entity && entity->ParentDrawing() == this && IsPickable(*entity) &&
           AddFiltered({entity}, selection) > 0;
}

int ZvDrawing::SelectAll(ZvSelection& selection) const {
    return SelectRect(ZvBounds2D::SuperBounds(), false, selection);
}

int ZvDrawing::SelectRect(const ZvBounds2D& box, bool crossing, ZvSelection& selection) const {
    std::vector<ZvEntity*> found;
    FindEntities(box, found, Picking(crossing, true));
    return AddFiltered(found, selection);
}

int ZvDrawing::SelectCylinder(const Ray3d& ray, double pixels, ZvSelection& selection) const {
    return m_currentView
               ? SelectCylinderWorldRadius(ray, pixels * m_currentView->XForm().WorldPerPixel(), selection)
               : 0;
}

int ZvDrawing::SelectCylinderWorldRadius(const Ray3d& ray, double radius, ZvSelection& selection) const {
    const Find options = Picking(true, false);
    const ZvTreeQuery query = TreeQuery(options);
    ZvScaleSetup scale;
    if (m_currentView)
        scale = m_currentView->XForm().Scale();
    std::vector<std::pair<double, ZvEntity*>> hits;
    dvect<ZvEntity*> near;
    for (ZvLayer* layer : m_layerTable->GetDrawOrder()) {
        if (!Searched(*layer, options) || !layer->EnsureEntireLayerLoaded())
            continue;
        near.clear();
        layer->Tree().PureSelectRay(ray, radius, near, query);
        for (ZvEntity* entity : near) {
            if (!entity->IsSelectable())
                continue;
            double distance = entity->DistanceToV(ray, m_currentView ? &scale : nullptr);
            if (distance > radius && entity->AllowSingleClickSelectInside() &&
                entity->InteriorTest(ray) == ZvOccupancy::Inside)
                distance = radius;
            if (distance <= radius)
                hits.emplace_back(distance, entity);
        }
    }
    std::reverse(hits.begin(), hits.end()); // of equals, the one on top comes first
    std::stable_sort(hits.begin(), hits.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<ZvEntity*> found;
    for (const auto& [distance, entity] : hits)
        found.push_back(entity);
    return AddFiltered(found, selection);
}

int ZvDrawing::SelectInCurrentView(ZvSelection& selection) const {
    return m_currentView ? SelectRect(m_currentView->XForm().VisibleWorld(), true, selection) : 0;
}

int ZvDrawing::SelectClipper(const std::vector<Vec2d>& polygon, bool crossing, ZvSelection& selection) const {
    const ZvSelectClipper clipper(polygon);
    if (!clipper.IsValid())
        return 0;
    std::vector<ZvEntity*> found;
    FindEntities(clipper.Bounds(), found, Picking(crossing, false));
    std::erase_if(found, [&](const ZvEntity* entity) {
        const ZvClipResult result = clipper.Test(*entity);
        return crossing ? result == ZvClipResult::Outside : result != ZvClipResult::Inside;
    });
    return AddFiltered(found, selection);
}

// --- the current selection --------------------------------------------------------------------------------

bool ZvDrawing::ChangeSelection(const ZvSelection& selection) {
    if (&selection == m_selection.get() || m_selection->Equals(selection))
        return false;
    *m_selection = selection;
    m_selection->SetParentDrawing(this);
    m_selection->AssignToDrawing();
    if (m_processor)
        m_processor->UpdateGrips();
    PostEvent(ZvDrawingEvent::SelectionChanged);
    return true;
}

void ZvDrawing::ClearCurrentSelection() {
    (void)ChangeSelection(ZvSelection(this));
}

bool ZvDrawing::AutoZoomCurrentSelection() {
    if (!m_currentView || m_selection->IsEmpty())
        return false;
    const ZvBounds3D bounds = m_selection->GetBounds();
    return !bounds.IsNull() && m_currentView->ZoomTo(bounds.ToBounds2D());
}
