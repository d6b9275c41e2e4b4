#include "Zelvan/Verbs/ZvVEntNewDualSource.h"
#include "Zelvan/Entities/ZvEntity.h"
#include <algorithm>

bool ZvVEntNewDualSource::AddDualSourceTripple(const ZvEntity* entity, const ZvEntity* first,
                                               const ZvEntity* second) {
    if (!first || !second || !Add(entity))
        return false;
    m_triples.push_back({entity->Name32(), first->Name32(), second->Name32()});
    ZvSelection sources(entity->ParentDrawing());
    sources.Insert(first);
    sources.Insert(second);
    MakePairsNTo1(sources, entity->Name());
    AddMetaPair(first->Name(), entity->Name());
    AddMetaPair(second->Name(), entity->Name());
    return true;
}

size_t ZvVEntNewDualSource::MemUsage() const {
    return ZvVEntNew::MemUsage() + sizeof(m_triples) + m_triples.capacity() * sizeof(Triple);
}

void ZvVEntNewDualSource::RemoveFromSet(const ZvSelection& leaving) {
    ZvVEntNew::RemoveFromSet(leaving);
    std::erase_if(m_triples, [&](const Triple& triple) {
        return leaving.Contains(ZvName(triple.entity)) || leaving.Contains(ZvName(triple.first)) ||
               leaving.Contains(ZvName(triple.second));
    });
}

bool ZvVEntNewDualSource::UsesEntities(const std::set<uint32_t>& names) const {
    return ZvVEntNew::UsesEntities(names) ||
           std::any_of(m_triples.begin(), m_triples.end(), [&](const Triple& triple) {
               return names.count(triple.first) || names.count(triple.second);
           });
}
