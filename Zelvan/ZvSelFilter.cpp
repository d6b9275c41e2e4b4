#include "Zelvan/ZvSelFilter.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/BinXml.h"

ZvSelFilter::ZvSelFilter(ZvDrawing* drawing, bool listen) : m_listen(listen) {
    SetDrawing(drawing);
}

void ZvSelFilter::SetDrawing(ZvDrawing* drawing) {
    if (m_drawing && m_listen)
        m_drawing->RemoveListener(this);
    m_drawing = drawing;
    if (m_drawing && m_listen)
        m_drawing->AddListener(this);
}

bool ZvSelFilter::PopState() {
    if (m_stack.empty())
        return false;
    m_state = std::move(m_stack.back());
    m_stack.pop_back();
    return true;
}

bool ZvSelFilter::Filter(const ZvEntity* entity) const {
    if (!entity || !m_state.enabled)
        return entity != nullptr;
    if (!m_state.types.empty() && !m_state.types.count(entity->GetFullCode()))
        return false;
    if (!m_state.layers.empty() && !m_state.layers.count(entity->GetLayerName().ToUpper()))
        return false;
    return m_state.colors.empty() || m_state.colors.count(entity->GetColor().To64());
}

void ZvSelFilter::Filter(const ZvSelection* in, ZvSelection* out) const {
    for (int i = 0; in && out && i < in->Count(); ++i)
        if (const ZvEntity* entity = in->GetEntityQuiet(i); Filter(entity))
            out->Insert(entity);
}

void ZvSelFilter::Filter(ZvSelection* selection) const {
    if (!selection || !m_state.enabled)
        return;
    ZvSelection passing(selection->ParentDrawing());
    Filter(selection, &passing);
    *selection = passing;
}

void ZvSelFilter::SaveXml(ZvCore::BinXmlNode& node) const {
    node.Set("Enabled", m_state.enabled);
    for (uint32_t type : m_state.types)
        node.AddChild("Type").Set("Code", int64_t(type));
    for (const XStringW& layer : m_state.layers)
        node.AddChild("Layer").Set("Name", layer);
    for (uint64_t color : m_state.colors)
        node.AddChild("Color").Set("Value", int64_t(color));
}

void ZvSelFilter::LoadXml(const ZvCore::BinXmlNode& node) {
    m_state = {};
    m_state.enabled = node.GetBool("Enabled", false);
    for (const ZvCore::BinXmlNode& item : node.Children()) {
        if (item.Name() == "Type")
            m_state.types.insert(uint32_t(item.GetInt("Code", 0)));
        else if (item.Name() == "Layer")
            m_state.layers.insert(item.GetString("Name", {}).ToUpper());
        else if (item.Name() == "Color")
            m_state.colors.insert(uint64_t(item.GetInt("Value", 0)));
    }
}

void ZvSelFilter::OnEvent(const ZvcEvent& event) {
    if (event.code == ZvDrawingEvent::Reset) {
        m_state = {};
        m_stack.clear();
    }
}
