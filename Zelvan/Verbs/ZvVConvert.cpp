#include "Zelvan/Verbs/ZvVConvert.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"

ZvVConvert::ZvVConvert(ZvDrawing* drawing) : ZvVerb(drawing) {}

ZvVConvert::~ZvVConvert() = default;

bool ZvVConvert::AddPair(const ZvEntity* entity, std::unique_ptr<ZvEntity> converted) {
    if (!converted || !AcceptsEntity(entity) || !Entities().Insert(entity))
        return false;
    m_from.push_back(entity->Name32());
    m_to.push_back(0);
    m_waiting.push_back(std::move(converted));
    return true;
}

bool ZvVConvert::AddPair(const ZvEntity* entity, const ZvEntity* converted) {
    if (!AcceptsEntity(entity) || !AcceptsEntity(converted) || entity == converted ||
        Entities().Contains(converted) || !Entities().Insert(entity))
        return false;
    Entities().Insert(converted);
    m_from.push_back(entity->Name32());
    m_to.push_back(converted->Name32());
    AddMetaPair(entity->Name(), converted->Name());
    return true;
}

XStringW ZvVConvert::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbConvert);
}

size_t ZvVConvert::MemUsage() const {
    return ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) +
           (m_from.capacity() + m_to.capacity()) * sizeof(uint32_t) +
           m_waiting.capacity() * sizeof(m_waiting[0]) + m_erasedBytes;
}

void ZvVConvert::InsertWaiting() {
    size_t next = 0, kept = 0;
    for (size_t i = 0; i < m_from.size(); ++i) {
        if (m_to[i] == 0) {
            const ZvEntity* former = Drawing()->GetEntity(ZvName(m_from[i]));
            const ZvName name = former && !former->IsErased()
                                    ? Drawing()->Insert(std::move(m_waiting[next]), former->GetLayerName())
                                    : ZvName();
            ++next;
            if (name.IsNull())
                continue; // nothing to convert, or nowhere to put it
            m_to[i] = name.value;
            Entities().Insert(name);
            AddMetaPair(ZvName(m_from[i]), name);
        }
        m_from[kept] = m_from[i];
        m_to[kept++] = m_to[i];
    }
    m_from.resize(kept);
    m_to.resize(kept);
    m_waiting.clear();
}

void ZvVConvert::Do() {
    InsertWaiting();
    Operate(true);
}

bool ZvVConvert::Redo() {
    if (!AllExist(Entities().Names(), "ZvVConvert.Redo"))
        return false;
    Operate(true);
    return true;
}

void ZvVConvert::Operate(bool converted) {
    const std::vector<uint32_t>&leaving = converted ? m_from : m_to, &coming = converted ? m_to : m_from;
    if (!converted)
        TakeBackMeta();
    SetErased(coming, false, "ZvVConvert.Operate");
    SwapInSelection(leaving, coming);
    m_erasedBytes = SetErased(leaving, true, "ZvVConvert.Operate");
    if (converted)
        GiveMeta();
}

void ZvVConvert::FlushUni(bool done) {
    ManageEntityDeletion(done ? m_from : m_to);
}

void ZvVConvert::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    size_t kept = 0;
    for (size_t i = 0; i < m_from.size(); ++i)
        if (Entities().Contains(ZvName(m_from[i])) || Entities().Contains(ZvName(m_to[i]))) {
            m_from[kept] = leaving.Contains(ZvName(m_from[i])) ? 0 : m_from[i];
            m_to[kept++] = leaving.Contains(ZvName(m_to[i])) ? 0 : m_to[i];
        }
    m_from.resize(kept);
    m_to.resize(kept);
    m_erasedBytes = 0;
    for (const std::vector<uint32_t>* names : {&m_from, &m_to})
        for (const uint32_t name : *names)
            if (const ZvEntity* entity = Drawing()->GetEntity(ZvName(name)); entity && entity->IsErased())
                m_erasedBytes += entity->MemUsage();
}
