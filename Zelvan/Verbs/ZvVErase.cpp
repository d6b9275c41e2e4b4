#include "Zelvan/Verbs/ZvVErase.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include <algorithm>

ZvVErase::ZvVErase(const ZvSelection& entities) : ZvVerb(entities.ParentDrawing()) {
    Entities() = entities;
}

bool ZvVErase::Add(const ZvEntity* entity) {
    return AcceptsEntity(entity) && Entities().Insert(entity);
}

bool ZvVErase::AddErased(const ZvEntity* entity) {
    if (!Add(entity))
        return false;
    m_erasedByCaller.push_back(entity->Name32());
    return true;
}

size_t ZvVErase::CalcEntityMemUsage() {
    return m_erasedBytes = MemUsageOf(Entities());
}

XStringW ZvVErase::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbErase);
}

size_t ZvVErase::MemUsage() const {
    return ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) +
           m_erasedByCaller.capacity() * sizeof(uint32_t) + m_erasedBytes;
}

/// Undoing must not bring back what something else erased.
void ZvVErase::LeaveOutErased() {
    std::sort(m_erasedByCaller.begin(), m_erasedByCaller.end());
    ZvSelection leaving(Drawing());
    for (int i = 0; i < Entities().Count(); ++i) {
        const ZvEntity* entity = Entities().GetEntityQuietNoCheck(i);
        const uint32_t name = Entities().GetName(i).value;
        if (!entity || (entity->IsErased() &&
                        !std::binary_search(m_erasedByCaller.begin(), m_erasedByCaller.end(), name)))
            leaving.Insert(ZvName(name));
    }
    if (!leaving.IsEmpty())
        Entities().Remove(leaving);
    m_erasedByCaller = {};
}

void ZvVErase::Erase(bool note) {
    LeaveSelection(Entities(), note);
    m_erasedBytes = SetErased(Entities().Names(), true, "ZvVErase.Do");
}

void ZvVErase::Do() {
    LeaveOutErased();
    Erase(true);
}

void ZvVErase::Undo() {
    SetErased(Entities().Names(), false, "ZvVErase.Undo");
    m_erasedBytes = 0;
}

bool ZvVErase::Redo() {
    if (!AllExist(Entities().Names(), "ZvVErase.Redo"))
        return false;
    Erase(true);
    return true;
}

void ZvVErase::FlushDone() {
    ManageEntityDeletion(Entities().Names());
}

void ZvVErase::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    if (m_erasedBytes)
        CalcEntityMemUsage();
}
