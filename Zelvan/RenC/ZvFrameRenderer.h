#pragma once
#include "Zelvan/RenC/ZvNodeDrawer.h"
#include "Zelvan/RenC/ZvRenderContext.h"
#include "ZvCore/Api.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/Progress.h"
#include <functional>
#include <vector>

class ZvDrawing;
class ZvLayer;

/// Draws one frame of a drawing: visible layers from the bottom to the top of the layer table's order, each by a walk of its tree in
/// which nodes outside the window are left out and nodes smaller than a pixel become one dot. A frame can stop at a deadline, say
/// that it is not finished, and go on with the next call.
class ZV_API ZvFrameRenderer : private ZvNodeDrawer {
public:
    struct Options {
        /// Null: all layers that are visible and not internal; of a PDF those that print. Layers whose scale range does not hold the
        /// view's scale are never drawn.
        std::function<bool(const ZvLayer&)> layerFilter;
        /// Seconds for one call of Draw; 0: no limit. Looked at between nodes.
        double budgetSeconds = 0;
        const IZvClock* clock = nullptr; ///< null: the system's
        ZvCore::IProgress* progress = nullptr;
    };
    ZvFrameRenderer(const ZvDrawing& drawing, ZvRenderContext& context, Options options);

    enum class State { Finished, OutOfTime, Cancelled };
    /// Draws, or goes on drawing where the former call stopped. The drawing must not change in between.
    State Draw();

private:
    bool WantsNext() override { return ++m_steps > m_stepsDone; }
    bool GoesOn() override;
    bool IsShown(const ZvLayer& layer) const;
    bool DrawLayer(const ZvLayer& layer);

    ZvRenderContext& m_context;
    Options m_options;
    std::vector<const ZvLayer*> m_layers; // bottom first
    size_t m_layer = 0;
    uint64_t m_steps = 0;     // pieces of work seen in this layer by this walk
    uint64_t m_stepsDone = 0; // by earlier calls: left out
    double m_deadline = 0;
    bool m_cancelled = false;
};
