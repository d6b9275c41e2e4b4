#include "Zelvan/Verbs/ZvVMoveGrip.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include <algorithm>
#include <cmath>
#include <unordered_set>

bool ZvVMoveGrip::AddGripPair(const ZvEntity& entity, int gripId, const Vec3d& to) {
    if (!AcceptsEntity(&entity))
        return false;
    ZvGrips grips;
    entity.GetGrips(grips);
    const auto grip =
        std::find_if(grips.begin(), grips.end(), [&](const ZvGrip& g) { return g.id == gripId; });
    if (grip == grips.end() || !std::isfinite(to.x) || !std::isfinite(to.y) || !std::isfinite(to.z))
        return false;
    m_pairs.push_back({entity.Name32(), gripId, grip->point, to});
    Entities().Insert(&entity);
    return true;
}

bool ZvVMoveGrip::IsNullOp() const {
    return IsRefused() ||
           std::all_of(m_pairs.begin(), m_pairs.end(), [](const Pair& pair) { return pair.from == pair.to; });
}

void ZvVMoveGrip::DoInternal(bool forward) {
    if (!forward)
        return m_originals.Restore(*Drawing(), "ZvVMoveGrip.Undo");
    LeaveOutGone("ZvVMoveGrip.Do");
    m_originals.Clear();
    if (IsNullOp())
        return;
    std::unordered_set<uint32_t> kept;
    size_t refused = 0;
    for (const Pair& pair : m_pairs) {
        ZvEntity& entity = *Drawing()->GetEntity(ZvName(pair.name));
        if (kept.insert(pair.name).second)
            m_originals.Keep(entity);
        refused += !entity.UpdateByGrip(pair.gripId, pair.to);
    }
    if (refused > 0)
        Refuse(ZvStrings::GetW(ZvStr::RefusedGrip), refused == m_pairs.size());
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
