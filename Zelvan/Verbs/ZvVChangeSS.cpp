#include "Zelvan/Verbs/ZvVChangeSS.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"

ZvVChangeSS::ZvVChangeSS(const ZvSelection& selection)
    : ZvVerb(selection.ParentDrawing()), m_former(selection.ParentDrawing()) {
    Entities() = selection;
}

bool ZvVChangeSS::IsNullOp() const {
    return Drawing() && (m_wasDone ? m_former : Drawing()->CurrentSelection()).Equals(Entities());
}

void ZvVChangeSS::Do() {
    LeaveOutGone("ZvVChangeSS.Do");
    m_former = Drawing()->CurrentSelection();
    m_wasDone = true;
    Drawing()->ChangeSelection(Entities());
}

void ZvVChangeSS::Undo() {
    Drawing()->ChangeSelection(m_former);
}

void ZvVChangeSS::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    m_former.Remove(leaving);
}

XStringW ZvVChangeSS::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbChangeSS);
}

size_t ZvVChangeSS::MemUsage() const {
    return ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) - sizeof(m_former) + m_former.MemUsage();
}
