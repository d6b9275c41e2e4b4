#include "Zelvan/DrawingAux/ZvDrawingUtility.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"

namespace {

template <class Visit>
void ForAll(const ZvDrawing& drawing, Visit visit) {
    const ZvEntityNameTable& names = drawing.NameTable();
    for (ZvName name = names.Next({}); !name.IsNull(); name = names.Next(name))
        visit(*names.GetQuiet(name));
}

void Count(const ZvEntity& entity, ZvDrawingUtility::Tally& tally) {
    ++tally.count;
    tally.bytes += entity.MemUsage();
    if (entity.IsErased())
        ++tally.erased;
    else
        tally.vertices += entity.MLVGetVertexCount();
}

} // namespace

std::map<uint32_t, ZvDrawingUtility::Tally> ZvDrawingUtility::CountByKind() const {
    std::map<uint32_t, Tally> tallies;
    ForAll(m_drawing, [&](const ZvEntity& entity) { Count(entity, tallies[entity.GetFullCode()]); });
    return tallies;
}

std::map<int, ZvDrawingUtility::Tally> ZvDrawingUtility::CountByLayer() const {
    std::map<int, Tally> tallies;
    ForAll(m_drawing, [&](const ZvEntity& entity) { Count(entity, tallies[entity.GetLayerIndex()]); });
    return tallies;
}

ZvDrawingUtility::Tally ZvDrawingUtility::CountAll() const {
    Tally tally;
    ForAll(m_drawing, [&](const ZvEntity& entity) { Count(entity, tally); });
    return tally;
}

void ZvDrawingUtility::EntitiesOfKind(uint32_t fullCode, std::vector<ZvEntity*>& entities) const {
    const ZvEntityNameTable& names = m_drawing.NameTable();
    for (ZvName name = names.Next({}); !name.IsNull(); name = names.Next(name))
        if (ZvEntity* entity = names.GetQuiet(name); !entity->IsErased() && entity->GetFullCode() == fullCode)
            entities.push_back(entity);
}
