#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"

class ZvDrawing;
class ZvEntity;

/// A plug-in's say in what a user does to a drawing. Each question may be vetoed by answering false; `reason`
/// is then shown.
class ZV_API IZvDrawingUIReactor {
public:
    virtual ~IZvDrawingUIReactor() = default;
    virtual bool AllowCommand(ZvDrawing&, const XStringW& /*command*/, XStringW& /*reason*/) { return true; }
    virtual bool AllowCreation(ZvDrawing&, const ZvEntity&, XStringW& /*reason*/) { return true; }
    virtual bool AllowErasure(ZvDrawing&, const ZvEntity&, XStringW& /*reason*/) { return true; }
    virtual bool AllowModification(ZvDrawing&, const ZvEntity&, XStringW& /*reason*/) { return true; }
    /// The drawing is about to be torn down; everything is still there.
    virtual void DrawingDying(ZvDrawing&) {}
};
