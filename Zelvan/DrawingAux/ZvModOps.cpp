#include "Zelvan/DrawingAux/ZvModOps.h"
#include "Zelvan/DrawingAux/ZvDrawingUIReactorHandler.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvSelection.h"
#include "Zelvan/ZvStrings.h"
#include <cmath>

bool ZvModOps::MayChange(const ZvEntity& entity, XStringW& reason) const {
    const ZvLayer* layer = entity.GetLayer();
    if (entity.IsErased())
        reason = ZvStrings::GetW(ZvStr::EntityIsErased);
    else if (layer && (layer->IsLocked() || !layer->IsEditable()))
        reason = XStringW::Format(ZvStrings::Get(ZvStr::LayerIsLocked), layer->GetName().ToUtf8().c_str());
    else
        return true;
    return false;
}

ZvModOps::Result ZvModOps::RefuseAll(const ZvSelection& selection, const char16_t* reason) {
    return {0, selection.Count(), reason};
}

ZvModOps::Result ZvModOps::ForEach(const ZvSelection& selection,
                                   const std::function<bool(ZvEntity&, XStringW&)>& change) {
    Result result;
    ZvBounds3D touched;
    for (const uint32_t name : std::vector<uint32_t>(selection.Names())) {
        ZvEntity* entity = m_drawing.GetEntity(ZvName(name));
        XStringW reason;
        if (!entity)
            continue;
        const ZvBounds3D before = entity->Bounds3D();
        if (!MayChange(*entity, reason) || !change(*entity, reason)) {
            if (result.refused++ == 0)
                result.reason = reason;
            continue;
        }
        ++result.changed;
        touched.ExpandToFit(before);
        touched.ExpandToFit(entity->Bounds3D());
    }
    if (result.changed) {
        m_drawing.SetModified();
        m_drawing.Invalidate(touched);
    }
    return result;
}

ZvModOps::Result ZvModOps::Translate(const ZvSelection& selection, const Vec3d& by) {
    return Transform(selection, Mat4d::Translation(by));
}

ZvModOps::Result ZvModOps::Rotate(const ZvSelection& selection, const Vec3d& center, double angle) {
    return Transform(selection,
                     Mat4d::Translation(center) * Mat4d::RotationZ(angle) * Mat4d::Translation(center * -1));
}

ZvModOps::Result ZvModOps::Scale(const ZvSelection& selection, const Vec3d& center, double factor) {
    return Transform(selection, Mat4d::Translation(center) * Mat4d::Scaling({factor, factor, factor}) *
                                    Mat4d::Translation(center * -1));
}

ZvModOps::Result ZvModOps::Transform(const ZvSelection& selection, const Mat4d& xform) {
    Mat4d inverse;
    if (!xform.Inverse(inverse))
        return RefuseAll(selection, u"The transformation cannot be inverted");
    return ForEach(selection, [&](ZvEntity& entity, XStringW& reason) {
        if (!m_drawing.UIReactorHandler()->MayModify(entity, &reason))
            return false;
        entity.Transform(xform);
        return true;
    });
}

ZvModOps::Result ZvModOps::Erase(const ZvSelection& selection) {
    return ForEach(selection, [&](ZvEntity& entity, XStringW& reason) {
        if (!m_drawing.UIReactorHandler()->MayErase(entity, &reason))
            return false;
        m_drawing.CurrentSelection().Remove(&entity);
        entity.SetErased(true);
        return true;
    });
}

ZvModOps::Result ZvModOps::MoveToLayer(const ZvSelection& selection, ZvLayer* layer) {
    if (!layer || !m_drawing.LayerTable()->IsRecordInTable(layer))
        return RefuseAll(selection, u"The layer is not in this drawing");
    return ForEach(selection, [&](ZvEntity& entity, XStringW& reason) {
        if (!m_drawing.UIReactorHandler()->MayModify(entity, &reason))
            return false;
        return entity.GetLayer() == layer || entity.MoveToLayer(layer);
    });
}
