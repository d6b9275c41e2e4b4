#pragma once
#include "Zelvan/ZvSelFilterState.h"
#include "ZvCore/Api.h"
#include "ZvCore/ZvcEvent.h"
#include <vector>

class ZvDrawing;
class ZvEntity;
class ZvSelection;
namespace ZvCore {
class BinXmlNode;
}

/// Removes from selections the entities that do not match its criteria. States form a stack, so that a
/// command can narrow the filter for a while. A reset of the drawing resets the filter.
class ZV_API ZvSelFilter : public ZvcIEventListener {
public:
    /// `listen`: hear the drawing's events.
    ZvSelFilter(ZvDrawing* drawing, bool listen);
    void SetDrawing(ZvDrawing* drawing);

    bool IsEnabled() const { return m_state.enabled; }
    void Enable(bool on) { m_state.enabled = on; }
    const ZvSelFilterState& GetState() const { return m_state; }
    void SetState(const ZvSelFilterState& state) { m_state = state; }
    void PushState() { m_stack.push_back(m_state); }
    /// False when nothing was pushed.
    bool PopState();

    /// True when the entity passes; a disabled filter lets everything pass.
    bool Filter(const ZvEntity* entity) const;
    /// Adds the members of `in` that pass to `out`.
    void Filter(const ZvSelection* in, ZvSelection* out) const;
    /// In place.
    void Filter(ZvSelection* selection) const;

    /// The state, not the stack.
    void SaveXml(ZvCore::BinXmlNode& node) const;
    void LoadXml(const ZvCore::BinXmlNode& node);
    void OnEvent(const ZvcEvent& event) override;

private:
    ZvDrawing* m_drawing = nullptr;
    bool m_listen;
    ZvSelFilterState m_state;
    std::vector<ZvSelFilterState> m_stack;
};
