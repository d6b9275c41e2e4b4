#include "Apps/zvd/CompareDrawings.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"

namespace {

bool AreEntitiesEqual(const ZvEntity& a, const ZvEntity& b) {
    return a.GetFullCode() == b.GetFullCode() && a.GetFlags() == b.GetFlags() && a.IsAppearanceEqual(b) &&
           a.IsGeometryEqual(b) && a.GetLayerName() == b.GetLayerName();
}

bool AreLayersEqual(const ZvLayer& a, const ZvLayer& b, std::string& why) {
    const std::string name = a.GetName().ToUtf8();
    const bool same = a.GetName() == b.GetName() && a.GetColor() == b.GetColor() &&
                      a.GetLineWidth() == b.GetLineWidth() && a.GetLineType() == b.GetLineType() &&
                      a.GetBrush() == b.GetBrush() && a.IsVisible() == b.IsVisible() &&
                      a.IsLocked() == b.IsLocked() && a.GetGuid() == b.GetGuid();
    if (!same)
        why = "layer '" + name + "' differs";
    else if (a.Tree().CountNonErased() != b.Tree().CountNonErased())
        why = "layer '" + name + "' holds " + std::to_string(a.Tree().CountNonErased()) + " and " +
              std::to_string(b.Tree().CountNonErased()) + " entities";
    const ZvAttributeTable *left = a.AttributesOrNull(), *right = b.AttributesOrNull();
    if (why.empty() && (left ? !left->IsEmpty() : false) != (right ? !right->IsEmpty() : false))
        why = "only one of the layers '" + name + "' has attributes";
    if (why.empty() && left && right && !(*left == *right))
        why = "attributes of layer '" + name + "' differ";
    return why.empty();
}

} // namespace

bool AreDrawingsEqual(const ZvDrawing& a, const ZvDrawing& b, std::string& why) {
    why.clear();
    const auto left = a.LayerTable()->GetDrawOrder(), right = b.LayerTable()->GetDrawOrder();
    if (left.size() != right.size()) {
        why = std::to_string(left.size()) + " and " + std::to_string(right.size()) + " layers";
        return false;
    }
    for (size_t i = 0; i < left.size(); ++i)
        if (!AreLayersEqual(*left[i], *right[i], why))
            return false;
    for (const ZvEntity* entity = a.NameTable().NextNonErased(nullptr); entity;
         entity = a.NameTable().NextNonErased(entity)) {
        const ZvEntity* other = b.GetEntity(entity->Name());
        if (!other || !AreEntitiesEqual(*entity, *other)) {
            why = "entity " + entity->Name().ToString().ToUtf8() + (other ? " differs" : " is missing");
            return false;
        }
    }
    return true;
}
