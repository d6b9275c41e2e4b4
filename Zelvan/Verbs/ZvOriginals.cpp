#include "Zelvan/Verbs/ZvOriginals.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/ZvErrors.h"

ZvOriginals::ZvOriginals() = default;
ZvOriginals::~ZvOriginals() = default;
ZvOriginals::ZvOriginals(ZvOriginals&&) noexcept = default;
ZvOriginals& ZvOriginals::operator=(ZvOriginals&&) noexcept = default;

void ZvOriginals::Keep(const ZvEntity& entity) {
    Kept kept{entity.Name32(), ZvDrawPlace(entity), entity.Clone(), nullptr};
    m_bytes += Bytes(kept);
    m_kept.push_back(std::move(kept));
}

void ZvOriginals::KeepOrigin(const ZvXLine& line) {
    Kept kept{line.Name32(), ZvDrawPlace(line), nullptr, std::make_unique<Vec4d>(line.Origin())};
    m_bytes += Bytes(kept);
    m_kept.push_back(std::move(kept));
}

size_t ZvOriginals::Bytes(const Kept& kept) {
    return kept.copy ? kept.copy->MemUsage() : sizeof(Vec4d);
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
    m_bytes -= Bytes(m_kept.back());
    m_kept.pop_back();
}

void ZvOriginals::Remove(const ZvSelection& leaving) {
    std::erase_if(m_kept, [&](const Kept& kept) {
        const bool leaves = leaving.Contains(ZvName(kept.name));
        m_bytes -= leaves ? Bytes(kept) : 0;
        return leaves;
    });
}

void ZvOriginals::Clear() {
    std::vector<Kept>().swap(m_kept);
    m_bytes = 0;
}

size_t ZvOriginals::MemUsage() const {
    return m_bytes + m_kept.capacity() * sizeof(Kept);
}
