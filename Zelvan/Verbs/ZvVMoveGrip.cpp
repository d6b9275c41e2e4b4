#include "Zelvan/Verbs/ZvVMoveGrip.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>
#include <cmath>

bool ZvVMoveGrip::AddGripPair(const ZvEntity& entity, int gripId, const Vec3d& to) {
    ZvGrips grips;
    entity.GetGrips(grips);
    const auto grip =
        std::find_if(grips.begin(), grips.end(), [&](const ZvGrip& g) { return g.id == gripId; });
    if (grip == grips.end() || !std::isfinite(to.x) || !std::isfinite(to.y) || !std::isfinite(to.z))
        return false;
    m_pairs.push_back({entity.Name32(), gripId, grip->point, to});
    if (!Entities().ParentDrawing())
        Entities().SetParentDrawing(entity.ParentDrawing());
    Entities().Insert(&entity);
    return true;
}

bool ZvVMoveGrip::IsNullOp() const {
    return std::all_of(m_pairs.begin(), m_pairs.end(), [](const Pair& pair) { return pair.from == pair.to; });
}

void ZvVMoveGrip::DoInternal(bool forward) {
    if (!forward)
        return m_originals.Restore(*Drawing(), "ZvVMoveGrip.Undo");
    m_originals.Clear();
    for (const Pair& pair : m_pairs) {
        ZvEntity* entity = Drawing()->GetEntity(ZvName(pair.name));
        if (!entity) {
            ZvErrors::Report(ZvErrorCode::VerbEntityGone, "ZvVMoveGrip.Do");
            continue;
        }
        if (!m_originals.Has(pair.name))
            m_originals.Keep(*entity);
        entity->UpdateByGrip(pair.gripId, pair.to);
    }
}

void ZvVMoveGrip::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    std::erase_if(m_pairs, [&](const Pair& pair) { return leaving.Contains(ZvName(pair.name)); });
    m_originals.Remove(leaving);
}

XStringW ZvVMoveGrip::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbMoveGrip);
}

size_t ZvVMoveGrip::MemUsage() const {
    return ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) + m_pairs.capacity() * sizeof(Pair) +
           m_originals.MemUsage();
}
