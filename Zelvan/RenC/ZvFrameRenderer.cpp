#include "Zelvan/RenC/ZvFrameRenderer.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"

namespace {
constexpr uint64_t kProgressEvery = 16;
}

ZvFrameRenderer::ZvFrameRenderer(const ZvDrawing& drawing, ZvRenderContext& context, Options options)
    : ZvNodeDrawer(context), m_context(context), m_options(std::move(options)) {
    if (!m_options.clock)
        m_options.clock = &IZvClock::System();
    for (const ZvLayer* layer : drawing.LayerTable()->GetDrawOrder())
        if (IsShown(*layer))
            m_layers.push_back(layer);
}

bool ZvFrameRenderer::IsShown(const ZvLayer& layer) const {
    const double scale = m_context.WorldPerScreenPixel();
    if (m_context.PlanMap() && ((layer.GetMinScale() > 0 && scale < layer.GetMinScale()) ||
                                (layer.GetMaxScale() > 0 && scale > layer.GetMaxScale())))
        return false;
    if (m_options.layerFilter)
        return m_options.layerFilter(layer);
    return layer.IsVisible() && !layer.IsInternal() &&
           (m_context.Mode() != ZvRenderMode::Pdf || layer.WillPrint());
}

ZvFrameRenderer::State ZvFrameRenderer::Draw() {
    m_cancelled = false;
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
    m_context.Surface().EndGroup();
    if (!finished)
        m_stepsDone = m_steps;
    return finished;
}

// Two pieces at least come of each call, so that every frame ends.
bool ZvFrameRenderer::GoesOn() {
    if (m_options.progress && m_steps % kProgressEvery == 0 &&
        !m_options.progress->Step("drawing", m_layer, m_layers.size())) {
        m_cancelled = true;
        return false;
    }
    return m_deadline <= 0 || m_steps <= m_stepsDone + 1 || m_options.clock->MonotonicSeconds() < m_deadline;
}
