#include "Zelvan/DrawingAux/IZvClientDraw.h"
#include "Zelvan/DrawingAux/IZvCommandRunner.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/View/ZvView.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>

// Views and the user interface around the drawing.

ZvView* ZvDrawing::AddView(std::unique_ptr<ZvView> view) {
    if (!view)
        return nullptr;
    int id = std::max(1, view->GetId());
    while (GetViewById(id))
        ++id;
    view->SetId(id);
    view->SetDrawing(this);
    view->SetOptions(m_viewOptions.get());
    m_views.push_back(std::move(view));
    ZvView* added = m_views.back().get();
    if (!m_currentView)
        m_currentView = added;
    PostEvent(ZvDrawingEvent::ViewsChanged, 0, added);
    return added;
}

std::unique_ptr<ZvView> ZvDrawing::RemoveView(ZvView* view) {
    const auto found =
        std::find_if(m_views.begin(), m_views.end(), [&](const auto& held) { return held.get() == view; });
    if (!view || found == m_views.end())
        return nullptr;
    std::unique_ptr<ZvView> removed = std::move(*found);
    m_views.erase(found);
    if (m_currentView == view)
        m_currentView = m_views.empty() ? nullptr : m_views.front().get();
    removed->SetOptions(nullptr);
    PostEvent(ZvDrawingEvent::ViewsChanged, 0, view);
    return removed;
}

ZvView* ZvDrawing::GetView(int index) const {
    return index >= 0 && index < GetViewCount() ? m_views[size_t(index)].get() : nullptr;
}

ZvView* ZvDrawing::GetViewById(int id) const {
    for (const auto& view : m_views)
        if (view->GetId() == id)
            return view.get();
    return nullptr;
}

bool ZvDrawing::SetCurrentView(ZvView* view) {
    if (!view || GetViewById(view->GetId()) != view)
        return false;
    if (m_currentView != view) {
        m_currentView = view;
        PostEvent(ZvDrawingEvent::ViewsChanged, 0, view);
    }
    return true;
}

bool ZvDrawing::InitUI(std::unique_ptr<IZvCommandRunner> processor) {
    if (m_processor || !processor)
        return false;
    m_processor = std::move(processor);
    return true;
}

void ZvDrawing::ShutdownUI() {
    if (m_processor && m_processor->IsBusy())
        m_processor->CancelCommand();
    m_processor.reset();
}

void ZvDrawing::StatusBar(const XStringW& text) {
    if (m_host)
        m_host->SetStatusText(text);
}

void ZvDrawing::Prompt(const XStringW& text) const {
    if (m_host)
        m_host->Print(text);
}

void ZvDrawing::PromptL(const XStringW& text) const {
    Prompt(text + XStringW(u"\n"));
}

void ZvDrawing::PromptControl(const XStringW& prompt) const {
    if (m_host)
        m_host->SetPrompt(prompt);
}

bool ZvDrawing::Execute(const XStringW& line) {
    return m_processor && m_processor->ExecuteLine(line);
}

void ZvDrawing::Invalidate(const ZvBounds3D& bounds) {
    if (bounds.IsNull() || Destroying())
        return;
    for (const auto& view : m_views)
        view->Invalidate(bounds);
    // Viewports of layouts show model space at places of their own.
    for (int i = 0; m_layoutTable && i < m_layoutTable->Count(); ++i) {
        const ZvDrawing* layout = m_layoutTable->Get(i)->Drawing();
        for (int v = 0; layout && v < layout->GetViewCount(); ++v)
            layout->GetView(v)->InvalidateAll();
    }
}

void ZvDrawing::RegisterClientDraw(IZvClientDraw* drawer) {
    if (drawer && std::find(m_clientDrawers.begin(), m_clientDrawers.end(), drawer) == m_clientDrawers.end())
        m_clientDrawers.push_back(drawer);
}

void ZvDrawing::UnregisterClientDraw(IZvClientDraw* drawer) {
    std::erase(m_clientDrawers, drawer);
}

std::vector<IZvClientDraw*> ZvDrawing::GetClientDrawers() const {
    std::vector<IZvClientDraw*> drawers;
    std::copy_if(m_clientDrawers.begin(), m_clientDrawers.end(), std::back_inserter(drawers),
                 [](const IZvClientDraw* drawer) { return drawer->WantsToDraw(); });
    return drawers;
}
