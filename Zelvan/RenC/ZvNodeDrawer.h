#pragma once
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Api.h"

class ZvLineEntity;
class ZvRenderContext;

/// Draws what a context's window shows of trees, by the context's mode (into its heat map where it has one). Nodes outside the window
/// are left out and nodes smaller than a pixel are one of their entities; so are entities outside and lines smaller than a pixel,
/// as far as their boxes in the node's grid tell, without a look at the entity's vertices.
class ZV_API ZvNodeDrawer : public IZvBNodeVisitor {
public:
    explicit ZvNodeDrawer(ZvRenderContext& context);
    /// Every entity by its DrawPdf, whatever the context's mode.
    void ForcePdf() { m_forcePdf = true; }
    ZvWalkStep Node(const ZvBNode& node, const ZvBounds3D& bounds) final;
    bool Run(const ZvNodeRun& run) final;

protected:
    /// Asked before each piece of work, a run of entities or a node below a pixel. False leaves it out.
    virtual bool WantsNext() { return true; }
    /// Asked after each run; false ends the walk.
    virtual bool GoesOn() { return true; }
    ZvRenderContext& Context() { return m_context; }

private:
    void DrawOne(const ZvEntity& entity);
    bool DrawStandIn(const ZvBNode& node);
    static const ZvLineEntity* AsDot(ZvEntity& entity);

    ZvRenderContext& m_context;
    bool m_dots; // what is below a pixel may become one
    bool m_forcePdf = false;
    bool m_whole =
        false; // the node asked about last lies in the window entirely; its own run follows at once
};
