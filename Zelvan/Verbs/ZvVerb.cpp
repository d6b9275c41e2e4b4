#include "Zelvan/Verbs/ZvVerb.h"
#include <algorithm>

ZvVerb::~ZvVerb() = default;

ZvBounds3D ZvVerb::GetBounds(const ZvScaleSetup* scale) const {
    return m_entities.GetBounds(scale);
}

size_t ZvVerb::MemUsage() const {
    return sizeof(*this) - sizeof(m_entities) + m_entities.MemUsage();
}

bool ZvVerb::IsUndoable(bool* quiet) const {
    if (quiet)
        *quiet = false;
    return true;
}

bool ZvVerb::Redo() {
    Do();
    return true;
}

void ZvVerb::UpdateLayersUsed() {
    m_entities.FreshenLayersUsed();
    m_layers = m_entities.GetLayersUsed();
}

void ZvVerb::RemoveFromSet(const ZvSelection& leaving) {
    m_entities.Remove(leaving);
}

void ZvVerb::ReplaceSet(const ZvSelection& entities) {
    m_entities = entities;
}

bool ZvVerb::UsesEntities(const std::set<uint32_t>& names) const {
    std::set<uint32_t> used;
    CollectEntities(used);
    return std::any_of(used.begin(), used.end(), [&](uint32_t name) { return names.count(name) != 0; });
}

void ZvVerb::CollectEntities(std::set<uint32_t>& names) const {
    names.insert(m_entities.Names().begin(), m_entities.Names().end());
}

void ZvVerb::SetParent(ZvDrawing* drawing) {
    m_drawing = drawing;
    m_entities.SetParentDrawing(drawing);
}

bool ZvVerb::UsesLayers(const std::set<ZvLayer*>& layers) const {
    return std::any_of(m_layers.begin(), m_layers.end(),
                       [&](ZvLayer* layer) { return layers.count(layer) != 0; });
}
