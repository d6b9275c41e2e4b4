#include "Zelvan/Verbs/ZvVModify.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include <stdexcept>

ZvVModify::ZvVModify(ZvDrawing* drawing) : ZvVerb(drawing), m_erase(drawing), m_new(drawing) {}

void ZvVModify::NotePair(ZvName old, ZvName fresh) {
    MakePair(old, fresh);
    AddMetaPair(old, fresh);
}

bool ZvVModify::MayPair(const ZvEntity* old, const ZvEntity* fresh) const {
    return old && fresh && !m_new.Entities().Contains(fresh);
}

/// `old` is among what is erased. True.
bool ZvVModify::AddPair(const ZvEntity& old, const ZvEntity& fresh) {
    if (!Drawing())
        SetParent(old.ParentDrawing());
    m_new.Add(&fresh);
    NotePair(old.Name(), fresh.Name());
    return true;
}

bool ZvVModify::Add1To1(const ZvEntity* old, const ZvEntity* fresh) {
    return MayPair(old, fresh) && m_erase.Add(old) && AddPair(*old, *fresh);
}

bool ZvVModify::Add1To1(const ZvEntity* old, std::unique_ptr<ZvEntity> fresh) {
    if (!old || !fresh || !m_erase.Add(old))
        return false;
    if (!Drawing())
        SetParent(old->ParentDrawing());
    m_new.Add(std::move(fresh), old->GetLayerName());
    m_waitingOld.push_back(old->Name32());
    return true;
}

bool ZvVModify::Add1To1Manual(const ZvEntity* old, const ZvEntity* fresh) {
    return MayPair(old, fresh) && m_erase.AddErased(old) && AddPair(*old, *fresh);
}

XStringW ZvVModify::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbReplace);
}

ZvBounds3D ZvVModify::GetBounds(const ZvScaleSetup* scale) const {
    ZvBounds3D bounds = m_erase.GetBounds(scale);
    bounds.ExpandToFit(m_new.GetBounds(scale));
    return bounds;
}

size_t ZvVModify::MemUsage() const {
    return ZvVerb::MemUsage() + m_erase.MemUsage() + m_new.MemUsage();
}

void ZvVModify::Do() {
    for (size_t i = m_waitingOld.size(); i-- > 0;)
        if (const ZvEntity* old = Drawing()->GetEntity(ZvName(m_waitingOld[i])); !old || old->IsErased()) {
            m_new.DropWaiting(i); // nothing is there that it could stand for
            m_waitingOld.erase(m_waitingOld.begin() + ptrdiff_t(i));
        }
    m_erase.Do();
    m_new.Do();
    if (!m_new.Refusal().IsEmpty())
        throw std::runtime_error("ZvVModify.Do: " + m_new.Refusal().ToUtf8());
    const std::vector<uint32_t>& names = m_new.Entities().Names(); // those that waited stand last
    for (size_t i = 0; i < m_waitingOld.size(); ++i)
        NotePair(ZvName(m_waitingOld[i]), ZvName(names[names.size() - m_waitingOld.size() + i]));
    m_waitingOld = {};
    GiveMeta();
    UpdateLayersUsed();
}

void ZvVModify::Undo() {
    TakeBackMeta();
    m_new.Undo();
    m_erase.Undo();
}

bool ZvVModify::Redo() {
    if (!m_erase.Redo())
        return false;
    if (!m_new.Redo()) {
        m_erase.Undo();
        m_erase.RestoreSelection();
        return false;
    }
    GiveMeta();
    return true;
}

void ZvVModify::FlushDone() {
    m_new.FlushDone();
    m_erase.FlushDone();
}

void ZvVModify::FlushNeverDone() {
    m_new.FlushNeverDone();
    m_erase.FlushNeverDone();
}

void ZvVModify::UpdateLayersUsed() {
    for (const ZvVerb* inner : {static_cast<const ZvVerb*>(&m_erase), static_cast<const ZvVerb*>(&m_new)})
        AddLayersOf(inner->Entities());
}

void ZvVModify::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    m_erase.RemoveFromSet(leaving);
    m_new.RemoveFromSet(leaving);
}

void ZvVModify::CollectEntities(std::set<uint32_t>& names) const {
    m_erase.CollectEntities(names);
    m_new.CollectEntities(names);
}

void ZvVModify::SetParent(ZvDrawing* drawing) {
    ZvVerb::SetParent(drawing);
    m_erase.SetParent(drawing);
    m_new.SetParent(drawing);
}

void ZvVModify::SetSequence(int sequence) {
    ZvVerb::SetSequence(sequence);
    m_erase.SetSequence(sequence);
    m_new.SetSequence(sequence);
}

void ZvVModify::RestoreSelection() {
    m_erase.RestoreSelection();
}
