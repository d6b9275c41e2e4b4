#pragma once
#include "Zelvan/RenC/ZvRenderContext.h"
#include "Zelvan/ZvBNode.h"
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
class ZV_API ZvFrameRenderer : private IZvBNodeVisitor {
public:
    struct Options {
        /// Null: all layers that are visible and not internal.
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
    ZvWalkStep Node(const ZvBNode& node, const ZvBounds3D& bounds) override;
    bool Run(const ZvNodeRun& run) override;
    bool DrawLayer(const ZvLayer& layer);
    bool IsTimeUp();

    ZvRenderContext& m_context;
    Options m_options;
    std::vector<const ZvLayer*> m_layers; // bottom first
    size_t m_layer = 0;
    uint64_t m_steps = 0;     // nodes and runs handled in this layer by this walk
    uint64_t m_stepsDone = 0; // by earlier calls: skipped
    double m_deadline = 0;
    bool m_cancelled = false;
    bool m_whole =
        false; // the node asked about last lies in the window entirely; its own run follows at once
};
