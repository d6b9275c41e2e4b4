#pragma once
#include "ZvCore/Api.h"

class ZvBNode;
class ZvDrawing;
class ZvEntity;
class ZvLayer;

/// The owner link: what holds an entity (the leaf of a layer's tree, as a rule) as the entity sees it. Every question of an
/// entity about its layer or drawing goes through it.
class ZV_API IZvEntityOwner {
public:
    virtual ~IZvEntityOwner() = default;

    virtual ZvDrawing* OwnerDrawing() const = 0;
    /// Null for entities of blocks and for those that are only lent a drawing.
    virtual ZvLayer* OwnerLayer() const = 0;
    /// -1 when there is no layer.
    virtual int OwnerLayerIndex() const = 0;
    /// True for an owner that really keeps the entity, false for one that only lends its drawing.
    virtual bool OwnerIsInDrawing() const = 0;
    /// The tree node behind this owner, or null.
    virtual ZvBNode* OwnerNode() { return nullptr; }

    /// Takes the entity out; it has no owner afterwards. The entity itself is untouched.
    virtual bool OwnerRemove(ZvEntity* entity) = 0;
    /// Takes the entity out, out of the name table too, and deletes it.
    virtual bool OwnerRemoveAndDelete(ZvEntity* entity) = 0;
    virtual void OwnerEntityChanged(ZvEntity* entity) = 0;
    virtual void OwnerEntityErased(ZvEntity* entity, bool erased) = 0;
    virtual void OwnerVisibilityChanged(ZvEntity* entity) = 0;
    virtual void OwnerBoundsChanged(ZvEntity* entity) = 0;
    virtual void OwnerSelectionChanged(ZvEntity* entity, bool selected) = 0;
    virtual void OwnerLineCapChanged(ZvEntity* entity) = 0;
};
