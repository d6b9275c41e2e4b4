#include "Zelvan/RenC/ZvFrameRenderer.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"

namespace {

// Stands for a whole node in the colour of one of its entities.
const ZvEntity* FirstDrawn(const ZvBNode& node) {
    if (const auto own = node.DrawSet(); !own.empty())
        return own.front();
    for (int i = 0; i < 2; ++i)
        if (const ZvBNode* child = node.Child(i))
            if (const ZvEntity* first = FirstDrawn(*child))
                return first;
    return nullptr;
}

} // namespace

ZvFrameRenderer::ZvFrameRenderer(const ZvDrawing& drawing, ZvRenderContext& context, Options options)
    : m_context(context), m_options(std::move(options)) {
    if (!m_options.clock)
        m_options.clock = &IZvClock::System();
    for (const ZvLayer* layer : drawing.LayerTable()->GetDrawOrder())
        if (m_options.layerFilter ? m_options.layerFilter(*layer)
                                  : layer->IsVisible() && !layer->IsInternal())
            m_layers.push_back(layer);
}

ZvFrameRenderer::State ZvFrameRenderer::Draw() {
    m_deadline =
        m_options.budgetSeconds > 0 ? m_options.clock->MonotonicSeconds() + m_options.budgetSeconds : 0;
    for (; m_layer < m_layers.size(); ++m_layer) {
        if (!DrawLayer(*m_layers[m_layer]))
            return m_cancelled ? State::Cancelled : State::OutOfTime;
        m_stepsDone = 0;
    }
    return State::Finished;
}

bool ZvFrameRenderer::DrawLayer(const ZvLayer& layer) {
    m_context.EnterLayer(&layer);
    m_context.Surface().BeginGroup(layer.GetName().ToUtf8());
    m_steps = 0;
    const bool finished = layer.Tree().Walk(*this);
    m_context.Flush();
    m_context.Surface().EndGroup();
    if (!finished)
        m_stepsDone = m_steps;
    return finished;
}

bool ZvFrameRenderer::IsTimeUp() {
    if (m_deadline > 0 && m_steps > m_stepsDone + 1 && m_options.clock->MonotonicSeconds() >= m_deadline)
        return true;
    if (m_options.progress && m_steps % 256 == 0)
        m_cancelled = !m_options.progress->Step("drawing", m_layer, m_layers.size());
    return m_cancelled;
}

ZvWalkStep ZvFrameRenderer::Node(const ZvBNode& node, const ZvBounds3D& bounds) {
    ++m_context.stats.nodesVisited;
    const ZvBounds2D box = bounds.ToBounds2D();
    const ZvBounds2D& window = m_context.WorldWindow();
    if (!window.PositiveUnion(box)) {
        ++m_context.stats.nodesCulled;
        return ZvWalkStep::Skip;
    }
    const double pixel = m_context.WorldPerPixel();
    if (box.Width() >= pixel || box.Height() >= pixel || !m_context.PlanMap())
        return m_whole = box.IsInsideOf(window), ZvWalkStep::Descend;
    if (++m_steps > m_stepsDone) {
        ++m_context.stats.nodesBelowPixel;
        if (const ZvEntity* first = FirstDrawn(node)) {
            m_context.UseColor(*first);
            m_context.Dot(m_context.MapPoint(bounds.Center()));
        }
    }
    return ZvWalkStep::Skip;
}

bool ZvFrameRenderer::Run(const ZvNodeRun& run) {
    if (++m_steps <= m_stepsDone)
        return true;
    const ZvBounds2D& window = m_context.WorldWindow();
    for (const ZvEntity* entity : run.entities) {
        if (!m_whole && !window.PositiveUnion(entity->Bounds2D(m_context.Scale())))
            continue;
        entity->Draw(m_context);
        ++m_context.stats.entitiesDrawn;
    }
    return !IsTimeUp();
}
