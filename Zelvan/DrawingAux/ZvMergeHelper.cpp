#include "Zelvan/DrawingAux/ZvMergeHelper.h"
#include "Zelvan/DrawingAux/ZvEntityAssociator.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvTableTable.h"

namespace {

constexpr uint32_t kLayerCode = ZvTableCode::Full(ZvTableCode::Layer);

/// Every record of the drawing's own tables counts as used.
void UseAll(const ZvDrawing& drawing, ZvUsageTable& usage) {
    for (int t = 0; t < drawing.TableTable()->Count(); ++t) {
        const ZvTable* table = drawing.TableTable()->Get(t);
        for (int i = 0; i < table->Count(); ++i)
            if (!table->Get(i)->IsErased())
                usage.Use(table->GetFullCode(), i);
    }
}

void EntitiesToMerge(const ZvDrawing& from, const ZvSelection* selection, std::vector<ZvEntity*>& entities) {
    if (selection) {
        selection->GetValidEntities(entities);
    } else {
        dvect<ZvEntity*> onLayer;
        for (ZvLayer* layer : from.LayerTable()->GetDrawOrder())
            if (layer->EnsureEntireLayerLoaded())
                layer->Tree().EnumAll(onLayer, false);
        entities.assign(onLayer.begin(), onLayer.end());
    }
    std::erase_if(entities, [](const ZvEntity* entity) { return entity->IsErased() || !entity->GetLayer(); });
}

} // namespace

ZvMergeHelper::Result ZvMergeHelper::Merge(const ZvDrawing& from, const ZvMergeProfile& profile,
                                           const ZvSelection* selection, ZvCore::IProgress* progress) {
    Result result;
    if (&from == &m_drawing) {
        result.status = Zv::Status::Failure;
        return result;
    }
    ZvUsageTable usage;
    if (selection)
        from.GatherUsageInfo(usage, selection);
    else
        UseAll(from, usage);

    ZvNativeFile native;
    ZvNativeDesc desc(native, m_drawing);
    result.status = m_drawing.TableTable()->CopyRecords(*from.TableTable(), usage, profile, desc);
    if (!Zv::Ok(result.status) || !profile.takeEntities)
        return result;

    std::vector<ZvEntity*> entities;
    EntitiesToMerge(from, selection, entities);
    uint64_t done = 0;
    for (const ZvEntity* entity : entities) {
        if (progress && done % 1024 == 0 && !progress->Step("merging", done, entities.size())) {
            result.status = Zv::Status::Cancelled;
            break;
        }
        ++done;
        ZvLayer* layer =
            m_drawing.LayerTable()->Get(desc.TranslateIndex(kLayerCode, entity->GetLayerIndex(), true));
        if (!layer)
            continue; // the profile leaves the layer out
        std::unique_ptr<ZvEntity> copy = entity->Clone();
        copy->TableUpdate(desc);
        copy->SetAssociated(false);
        copy->SetSubscriber(false);
        const ZvName name = layer->Adopt(std::move(copy));
        layer->CopyAttributes(name, *entity->GetLayer(), entity->Name());
        result.names[entity->Name32()] = name.value;
        ++result.entities;
    }
    for (const auto& [theirs, ours] : result.names)
        for (ZvName partner : from.EntityAssociator()->GetAssociates(ZvName(theirs)))
            if (const auto found = result.names.find(partner.value); found != result.names.end())
                result.associations +=
                    m_drawing.EntityAssociator()->Associate(ZvName(ours), ZvName(found->second));
    if (result.entities) {
        m_drawing.SetModified();
        m_drawing.Invalidate(ZvBounds3D::SuperBounds());
    }
    return result;
}
