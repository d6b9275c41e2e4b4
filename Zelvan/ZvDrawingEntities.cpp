#include "Zelvan/DrawingAux/ZvDefaultProperties.h"
#include "Zelvan/DrawingAux/ZvDrawingUIReactorHandler.h"
#include "Zelvan/DrawingAux/ZvEntityAssociator.h"
#include "Zelvan/DrawingAux/ZvEntityNotifier.h"
#include "Zelvan/DrawingAux/ZvEntityProperties.h"
#include "Zelvan/DrawingAux/ZvEntityReactorHandler.h"
#include "Zelvan/DrawingAux/ZvTemporaryData.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/ZvErrors.h"

// Entities: in and out, and the memory that they take.

/// Null, reported, when there is no layer to put entities on.
ZvLayer* ZvDrawing::LayerForInsert(const XStringW& layerName) {
    const XStringW name = layerName.IsEmpty() ? XStringW(u"0") : layerName;
    ZvLayer* layer = layerName.IsEmpty() ? m_layerTable->GetCurrent() : nullptr;
    if (!layer)
        layer = m_layerTable->GetByName(name);
    if (!layer)
        layer = m_layerTable->InsertNew(name);
    if (!layer)
        ZvErrors::Report(ZvErrorCode::NoDefaultLayer, "No default layer");
    return layer;
}

ZvName ZvDrawing::Insert(std::unique_ptr<ZvEntity> entity, const XStringW& layerName) {
    ZvLayer* layer = entity ? LayerForInsert(layerName) : nullptr;
    if (!layer)
        return {};
    ZvEntity* inserted = entity.get();
    const ZvName name = layer->Adopt(std::move(entity));
    if (!name.IsNull())
        m_entityReactorHandler->EntityInserted(*inserted);
    return name;
}

ZvName ZvDrawing::Insert(ZvEntity* entity, const XStringW& layerName) {
    if (!entity || !LayerForInsert(layerName))
        return entity ? entity->Name() : ZvName();
    return Insert(std::unique_ptr<ZvEntity>(entity), layerName);
}

void ZvDrawing::Remove(ZvEntity* entity) {
    if (!entity) {
        ZvErrors::Fatal("Null entity for ZvDrawing.Remove");
        return;
    }
    if (m_nameTable.GetQuiet(entity->Name()) == entity) {
        if (m_entityReactorHandler)
            m_entityReactorHandler->EntityRemoved(*entity);
        if (entity->IsAssociated() && m_entityAssociator)
            m_entityAssociator->Remove(entity->Name());
    }
    m_nameTable.Remove(entity);
    if (entity->IsSubscriber() && m_entityNotifier)
        m_entityNotifier->UnsubscribeAll(*entity);
}

bool ZvDrawing::FinalizeNewEntity(ZvEntity& entity, bool applyCurrent, XStringW* reason) {
    if (applyCurrent) {
        m_defaultEntityProperties->ApplyTo(entity);
        m_defaultProperties->ApplyTo(entity);
    }
    entity.Finalize();
    return entity.OkForInsertion(reason) && m_uiReactorHandler->MayCreate(entity, reason);
}

// --- all trees --------------------------------------------------------------------------------------------

void ZvDrawing::ForEachTree(const std::function<void(ZvBNode&)>& visit) const {
    for (int i = 0; m_layerTable && i < m_layerTable->Count(); ++i)
        visit(m_layerTable->Get(i)->Tree());
    for (int i = 0; !m_hasProxyTables && m_blockTable && i < m_blockTable->Count(); ++i)
        visit(m_blockTable->Get(i)->Tree());
    if (m_scratchLayer)
        visit(m_scratchLayer->Tree());
}

ZvBounds3D ZvDrawing::Bounds(bool visibleOnly) const {
    ZvBounds3D bounds;
    for (int i = 0; i < m_layerTable->Count(); ++i) {
        const ZvLayer& layer = *m_layerTable->Get(i);
        if (layer.IsInternal() || layer.IsErased() || (visibleOnly && !layer.IsVisible()))
            continue;
        bounds.ExpandToFit(visibleOnly ? layer.Tree().VisibleBounds() : layer.Tree().Bounds());
    }
    return bounds;
}

void ZvDrawing::Regenerate(bool deep) {
    if (deep)
        ForEachTree([](ZvBNode& tree) { tree.InvalidateAllCachedBounds(); });
    Invalidate(ZvBounds3D::SuperBounds());
}

// --- erased entities and memory ---------------------------------------------------------------------------

void ZvDrawing::PurgeErased() {
    const std::set<uint32_t> inUse = m_verbs->EntitiesInUse();
    if (inUse.empty()) {
        ForEachTree([](ZvBNode& tree) { tree.PurgeErased(); });
    } else {
        for (ZvName name = m_nameTable.Next({}); !name.IsNull(); name = m_nameTable.Next(name)) {
            ZvEntity* entity = m_nameTable.GetQuiet(name);
            if (entity->IsErased() && !inUse.count(name.value) && entity->Owner())
                entity->Owner()->OwnerRemoveAndDelete(entity);
        }
    }
    for (int i = 0; i < m_layerTable->Count(); ++i)
        m_layerTable->Get(i)->KeepAttributes(
            [&](ZvName name) { return m_nameTable.Exists(name) || inUse.count(name.value) != 0; });
}

size_t ZvDrawing::HeapLiveBytes() const {
    ZvHeapMarks marks;
    ForEachTree(
        [&](ZvBNode& tree) { tree.ForEach([&](const ZvEntity* entity) { entity->GC_Mark(marks); }); });
    return marks.liveBytes;
}

/// Moves every block out of the arena and gives it back, when less than half of it is in use. Entities that
/// are in no tree may have blocks there, too, and only verbs and the temporary data keep such entities: while
/// they hold any, nothing is moved.
void ZvDrawing::CompactEntityHeap() {
    if (m_verbs->StackSize() > 0 || !m_temporaryData->Entities().empty() || m_entityHeap->BytesUsed() == 0 ||
        HeapLiveBytes() >= m_entityHeap->BytesUsed() / 2)
        return;
    ForEachTree([](ZvBNode& tree) { tree.ForEach([](ZvEntity* entity) { entity->Repack(true); }); });
    if (HeapLiveBytes() == 0)
        m_entityHeap->Clear();
}

size_t ZvDrawing::MemUsage() const {
    size_t bytes =
        m_nameTable.MemUsage() + m_entityHeap->MemUsage() + m_verbs->MemUsage() + m_heap->MemUsage();
    for (ZvName name = m_nameTable.Next({}); !name.IsNull(); name = m_nameTable.Next(name))
        bytes += m_nameTable.GetQuiet(name)->MemUsage();
    const size_t live = HeapLiveBytes(); // counted by the entities as well
    return bytes - std::min(bytes, live);
}
