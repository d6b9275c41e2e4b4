#include "Zelvan/DrawingAux/ZvTemporaryData.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>

ZvTemporaryData::ZvTemporaryData(ZvDrawing& drawing) : m_drawing(drawing), m_owner(drawing) {}

ZvTemporaryData::~ZvTemporaryData() = default;

ZvEntity* ZvTemporaryData::Add(std::unique_ptr<ZvEntity> entity) {
    if (!entity)
        return nullptr;
    entity->SetTempDraw(true);
    entity->SetParentBlock(&m_owner);
    m_entities.push_back(std::move(entity));
    m_drawing.Invalidate(m_entities.back()->Bounds3D());
    return m_entities.back().get();
}

std::unique_ptr<ZvEntity> ZvTemporaryData::Take(const ZvEntity* entity) {
    const auto found = std::find_if(m_entities.begin(), m_entities.end(),
                                    [&](const auto& held) { return held.get() == entity; });
    if (!entity || found == m_entities.end())
        return nullptr;
    std::unique_ptr<ZvEntity> taken = std::move(*found);
    m_entities.erase(found);
    m_drawing.Invalidate(taken->Bounds3D());
    taken->SetTempDraw(false);
    taken->SetParentBlock(nullptr);
    return taken;
}

void ZvTemporaryData::Clear() {
    if (m_entities.empty())
        return;
    const ZvBounds3D bounds = Bounds();
    m_entities.clear();
    m_drawing.Invalidate(bounds);
}

ZvBounds3D ZvTemporaryData::Bounds() const {
    ZvBounds3D bounds;
    for (const auto& entity : m_entities)
        bounds.ExpandToFit(entity->Bounds3D());
    return bounds;
}
