#pragma once
#include "ZvCore/Api.h"

class ZvRenderContext;
class ZvView;

/// Draws things of a plug-in's own over the entities of a view.
class ZV_API IZvClientDraw {
public:
    virtual ~IZvClientDraw() = default;
    /// Whether there is anything to draw now.
    virtual bool WantsToDraw() const { return true; }
    virtual void ClientDraw(ZvView& view, ZvRenderContext& context) = 0;
};
