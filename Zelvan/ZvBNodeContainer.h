#pragma once
#include "ZvCore/Api.h"

class ZvDrawing;
class ZvEntity;
class ZvLayer;

/// What owns an entity tree: a layer or a block record. It outlives the tree.
class ZV_API IZvBNodeContainer {
public:
    virtual ~IZvBNodeContainer() = default;

    /// Null for a record that is in no drawing.
    virtual ZvDrawing* TreeDrawing() const = 0;
    /// Null for a block.
    virtual ZvLayer* TreeLayer() const = 0;
    /// -1 for a block and for a layer that is in no table.
    virtual int TreeLayerIndex() const = 0;
    /// An entity was inserted, removed or changed (appearance, bounds, erased or visible state): stamps and views of the
    /// container are stale. Called once for a bulk insertion, with null.
    virtual void TreeTouched(ZvEntity* entity) = 0;
};
