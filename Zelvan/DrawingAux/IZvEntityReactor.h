#pragma once
#include "ZvCore/Api.h"

class ZvDrawing;
class ZvEntity;

/// Hears what happens to the reactable entities of a drawing.
class ZV_API IZvEntityReactor {
public:
    virtual ~IZvEntityReactor() = default;
    virtual void EntityInserted(ZvDrawing&, ZvEntity&) {}
    /// Geometry or appearance.
    virtual void EntityChanged(ZvDrawing&, ZvEntity&) {}
    virtual void EntityErased(ZvDrawing&, ZvEntity&, bool /*erased*/) {}
    /// Leaves the drawing; it still has its name.
    virtual void EntityRemoved(ZvDrawing&, ZvEntity&) {}
    /// The drawing is about to be torn down; everything is still there.
    virtual void DrawingDying(ZvDrawing&) {}
};
