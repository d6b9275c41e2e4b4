#include "Zelvan/Verbs/ZvVEntModify.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"

bool ZvVEntModify::AddOriginal(const ZvEntity& entity) {
    if (!AcceptsEntity(&entity) || entity.IsErased())
        return false;
    if (!Entities().Insert(&entity)) {
        ZvErrors::Report(ZvErrorCode::EntityTwiceInVerb, "ZvVEntModify.AddOriginal");
        return false;
    }
    m_originals.Take(entity);
    return true;
}

bool ZvVEntModify::StoreModified() {
    if (m_modified.Count() > 0) {
        ZvErrors::Report(ZvErrorCode::ModifiedTwice, "ZvVEntModify.StoreModified");
        return false;
    }
    for (int i = 0; i < Entities().Count(); ++i)
        if (const ZvEntity* entity = Entities().GetEntityQuietNoCheck(i))
            m_modified.Take(*entity);
        else
            ZvErrors::Report(ZvErrorCode::VerbEntityGone, "ZvVEntModify.StoreModified");
    return true;
}

bool ZvVEntModify::AddModified(const ZvEntity& entity, std::unique_ptr<ZvEntity> state) {
    if (!state || state->GetFullCode() != entity.GetFullCode() || !Entities().Contains(&entity))
        return false;
    if (!m_stated)
        m_stated = std::make_unique<std::unordered_set<uint32_t>>();
    if (!m_stated->insert(entity.Name32()).second)
        return false;
    m_modified.Take(entity, std::move(state));
    m_applyInDo = true;
    return true;
}

bool ZvVEntModify::AddOriginalAndModified(const ZvEntity& entity, std::unique_ptr<ZvEntity> state) {
    return state && state->GetFullCode() == entity.GetFullCode() && AddOriginal(entity) &&
           AddModified(entity, std::move(state));
}

XStringW ZvVEntModify::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbModify);
}

size_t ZvVEntModify::MemUsage() const {
    return ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) + m_originals.MemUsage() +
           m_modified.MemUsage();
}

void ZvVEntModify::Do() {
    if (m_applyInDo)
        MakeModified();
    m_stated.reset();
}

void ZvVEntModify::Undo() {
    MakeOriginal();
}

bool ZvVEntModify::Redo() {
    if (m_modified.Count() != m_originals.Count() || !AllExist(m_modified.Names(), "ZvVEntModify.Redo"))
        return false;
    MakeModified();
    return true;
}

void ZvVEntModify::MakeOriginal() {
    MakeAll(m_originals);
}

void ZvVEntModify::MakeModified() {
    MakeAll(m_modified);
}

void ZvVEntModify::MakeAll(const ZvEntitySnapshots& copies) {
    for (size_t i = 0; i < copies.Count(); ++i)
        (void)copies.Restore(*Drawing(), i); // reports what is gone
}

void ZvVEntModify::UpdateLayersUsed() {
    ZvVerb::UpdateLayersUsed();
    std::vector<ZvLayer*> layers;
    m_originals.AddLayers(*Drawing(), layers);
    m_modified.AddLayers(*Drawing(), layers);
    for (ZvLayer* layer : layers)
        AddLayerUsed(layer);
}

void ZvVEntModify::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    m_originals.Remove(leaving);
    m_modified.Remove(leaving);
}
