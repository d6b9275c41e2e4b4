#include "Zelvan/Verbs/ZvOriginals.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>

ZvOriginals::ZvOriginals() = default;
ZvOriginals::~ZvOriginals() = default;
ZvOriginals::ZvOriginals(ZvOriginals&&) noexcept = default;
ZvOriginals& ZvOriginals::operator=(ZvOriginals&&) noexcept = default;

bool ZvOriginals::Has(uint32_t name) const {
    return std::any_of(m_kept.begin(), m_kept.end(), [&](const Kept& kept) { return kept.name == name; });
}

void ZvOriginals::Keep(const ZvEntity& entity) {
    m_kept.push_back({entity.Name32(), ZvDrawPlace(entity), entity.Clone(), nullptr});
}

void ZvOriginals::KeepOrigin(const ZvXLine& line) {
    m_kept.push_back({line.Name32(), ZvDrawPlace(line), nullptr, std::make_unique<Vec4d>(line.Origin())});
}

void ZvOriginals::PutBack(const Kept& kept, ZvEntity& entity) {
    if (kept.copy) {
        entity.CloneFrom(*kept.copy);
        entity.RecalcBounds();
        entity.Touch();
    } else if (ZvXLine* line = entity.ToXLine()) {
        line->SetOrigin(*kept.origin);
    }
    kept.place.Restore(entity);
}

void ZvOriginals::Restore(ZvDrawing& drawing, std::string_view context) const {
    for (auto kept = m_kept.rbegin(); kept != m_kept.rend(); ++kept) {
        if (ZvEntity* entity = drawing.GetEntity(ZvName(kept->name)))
            PutBack(*kept, *entity);
        else
            ZvErrors::Report(ZvErrorCode::VerbEntityGone, context);
    }
}

void ZvOriginals::RestoreLast(ZvEntity& entity) {
    PutBack(m_kept.back(), entity);
    m_kept.pop_back();
}

void ZvOriginals::Remove(const ZvSelection& leaving) {
    std::erase_if(m_kept, [&](const Kept& kept) { return leaving.Contains(ZvName(kept.name)); });
}

void ZvOriginals::Clear() {
    std::vector<Kept>().swap(m_kept);
}

size_t ZvOriginals::MemUsage() const {
    size_t bytes = m_kept.capacity() * sizeof(Kept);
    for (const Kept& kept : m_kept)
        bytes += kept.copy ? kept.copy->MemUsage() : sizeof(Vec4d);
    return bytes;
}
