#pragma once
#include "Zelvan/Entities/ZvEntityOwner.h"
#include "ZvCore/Api.h"

/// Lends its drawing to entities that are in none, so that decisions which depend on the drawing (the
/// precision of packed vertices) can be made before insertion. Keeps nothing and passes nothing on.
class ZV_API ZvLooseOwner final : public IZvEntityOwner {
public:
    explicit ZvLooseOwner(ZvDrawing& drawing) : m_drawing(drawing) {}

    ZvDrawing* OwnerDrawing() const override { return &m_drawing; }
    ZvLayer* OwnerLayer() const override { return nullptr; }
    int OwnerLayerIndex() const override { return -1; }
    bool OwnerIsInDrawing() const override { return false; }
    bool OwnerRemove(ZvEntity* entity) override;
    /// False: the entity belongs to whoever made it.
    bool OwnerRemoveAndDelete(ZvEntity*) override { return false; }
    void OwnerEntityChanged(ZvEntity*) override {}
    void OwnerEntityErased(ZvEntity*, bool) override {}
    void OwnerVisibilityChanged(ZvEntity*) override {}
    void OwnerBoundsChanged(ZvEntity*) override {}
    void OwnerSelectionChanged(ZvEntity*, bool) override {}
    void OwnerLineCapChanged(ZvEntity*) override {}

private:
    ZvDrawing& m_drawing;
};
