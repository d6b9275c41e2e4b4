#include "Zelvan/Verbs/ZvVRecordErase.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvBlock.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvStrings.h"
#include "Zelvan/ZvTableTable.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>

namespace {

/// The tree of a record that owns entities; null for other kinds.
ZvBNode* TreeOf(ZvTableRecord& record) {
    if (auto* layer = dynamic_cast<ZvLayer*>(&record))
        return &layer->Tree();
    auto* block = dynamic_cast<ZvBlock*>(&record);
    return block ? &block->Tree() : nullptr;
}

} // namespace

ZvVRecordErase::ZvVRecordErase(const ZvTableRecord& record) : ZvVerb(record.GetParentDrawing()) {
    (void)Add(record);
}

bool ZvVRecordErase::Add(const ZvTableRecord& record) {
    const ZvTable* table = record.GetTable();
    if (!table || !table->IsRecordInTable(&record) || record.IsErased() || !table->MayDelete(record))
        return false;
    const ZvRecordKey key = ZvRecordKey::Of(record);
    for (const Entry& entry : m_entries)
        if (entry.key.tableCode == key.tableCode && entry.key.id == key.id)
            return false;
    m_entries.push_back({key, {}});
    return true;
}

void ZvVRecordErase::Do() {
    Entities().Clear();
    Entities().SetParentDrawing(Drawing());
    DropReferences();
    for (Entry& entry : m_entries) {
        ZvTableRecord* record = entry.key.Find(*Drawing());
        if (!record || record->IsErased())
            continue;
        ZvTable& table = *record->GetTable();
        entry.before = ZvRecordState(*record);
        entry.wasCurrent = table.GetCurrent() == record;
        entry.isErased = true;
        EraseContents(*record);
        record->SetErased(true);
        record->SetName(u"~" + record->GetGuid().ToString());
        if (entry.wasCurrent)
            table.SetCurrent(table.FindNewCurrent(record));
    }
    m_erasedBytes = MemUsageOf(Entities());
    LeaveSelection(Entities(), true);
    if (std::none_of(m_entries.begin(), m_entries.end(), [](const Entry& entry) { return entry.isErased; }))
        Refuse(ZvStrings::GetW(ZvStr::RefusedErase));
}

void ZvVRecordErase::EraseContents(ZvTableRecord& record) {
    ZvBNode* tree = TreeOf(record);
    if (!tree)
        return;
    AddLayerUsed(dynamic_cast<ZvLayer*>(&record));
    dvect<ZvEntity*> entities;
    tree->EnumAll(entities, false);
    for (ZvEntity* entity : entities) {
        Entities().Insert(entity);
        entity->SetErased(true);
    }
}

// --- references --------------------------------------------------------------------------------------------

bool ZvVRecordErase::RefersToErased(const ZvUsageTable& usage) const {
    return std::any_of(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
        const ZvTableRecord* record = entry.key.Find(*Drawing());
        return record && usage.Count(entry.key.tableCode, record->GetTableIndex()) > 0;
    });
}

void ZvVRecordErase::DropReferences() {
    m_referrers.Clear();
    m_referringRecords.clear();
    ZvNativeFile file;
    ZvNativeDesc desc(file, *Drawing());
    for (int i = 0; i < Drawing()->TableTable()->Count(); ++i) {
        const ZvTable& table = *Drawing()->TableTable()->Get(i);
        for (int index = 0; index < table.Count(); ++index)
            desc.SetTableIndex(table.GetFullCode(), index, index);
    }
    bool held = false;
    for (const Entry& entry : m_entries)
        if (const ZvTableRecord* record = entry.key.Find(*Drawing())) {
            held = held || record->GetTable()->IsHeldByIndex();
            desc.SetTableIndex(entry.key.tableCode, record->GetTableIndex(), -1);
        }
    m_currentLineType = Drawing()->CurrentLineType();
    m_currentBrush = Drawing()->CurrentBrush();
    m_currentTextStyle = Drawing()->CurrentTextProperties().style;
    if (!held)
        return;
    DropEntityReferences(desc);
    DropRecordReferences(desc);
    DropCurrentReferences(desc);
}

void ZvVRecordErase::DropEntityReferences(ZvNativeDesc& desc) {
    const ZvEntityNameTable& names = Drawing()->NameTable();
    for (ZvName name = names.Next({}); !name.IsNull(); name = names.Next(name)) {
        ZvEntity* entity = names.GetQuiet(name);
        ZvUsageTable usage;
        entity->TableUsage(usage);
        if (!RefersToErased(usage))
            continue;
        m_referrers.Keep(*entity);
        entity->TableUpdate(desc);
        entity->Touch();
    }
}

void ZvVRecordErase::DropRecordReferences(ZvNativeDesc& desc) {
    for (int i = 0; i < Drawing()->TableTable()->Count(); ++i) {
        const ZvTable& table = *Drawing()->TableTable()->Get(i);
        for (int index = 0; index < table.Count(); ++index) {
            ZvTableRecord& record = *table.Get(index);
            ZvUsageTable usage;
            record.TableUsage(usage);
            if (!RefersToErased(usage))
                continue;
            m_referringRecords.emplace_back(ZvRecordKey::Of(record), ZvRecordState(record));
            record.TableUpdate(desc);
            record.NotifyVisState();
        }
    }
}

void ZvVRecordErase::DropCurrentReferences(ZvNativeDesc& desc) {
    const auto gone = [&](ZvTableCode::Code table, int index) {
        return index >= 0 && desc.TranslateIndex(ZvTableCode::Full(table), index, false) < 0;
    };
    if (gone(ZvTableCode::LineType, m_currentLineType.GetIndex()))
        Drawing()->SetCurrentLineType(ZvLineType::Continuous());
    if (gone(ZvTableCode::Texture, m_currentBrush.GetTexture())) {
        ZvBrush brush = m_currentBrush;
        brush.SetEmpty();
        Drawing()->SetCurrentBrush(brush);
    }
    if (gone(ZvTableCode::TextStyle, m_currentTextStyle)) {
        ZvTextProperties text = Drawing()->CurrentTextProperties();
        text.style = -1;
        Drawing()->SetCurrentTextProperties(text);
    }
}

// --- undo --------------------------------------------------------------------------------------------------

void ZvVRecordErase::Undo() {
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry) {
        if (!std::exchange(entry->isErased, false))
            continue;
        ZvTableRecord* record = entry->key.Find(*Drawing());
        if (!record) {
            ZvErrors::Report(ZvErrorCode::VerbRecordGone, "ZvVRecordErase.Undo");
            continue;
        }
        (void)entry->before.Restore(*record);
        if (entry->wasCurrent)
            record->GetTable()->SetCurrent(record);
    }
    for (int i = 0; i < Entities().Count(); ++i)
        if (ZvEntity* entity = Entities().GetEntityQuiet(i))
            entity->SetErased(false);
    m_erasedBytes = 0;
    m_referrers.Restore(*Drawing(), "ZvVRecordErase.Undo");
    for (const auto& [key, state] : m_referringRecords)
        if (ZvTableRecord* record = key.Find(*Drawing()))
            (void)state.Restore(*record);
    if (Drawing()->CurrentLineType() != m_currentLineType)
        Drawing()->SetCurrentLineType(m_currentLineType);
    if (!(Drawing()->CurrentBrush() == m_currentBrush))
        Drawing()->SetCurrentBrush(m_currentBrush);
    ZvTextProperties text = Drawing()->CurrentTextProperties();
    if (std::exchange(text.style, m_currentTextStyle) != m_currentTextStyle)
        Drawing()->SetCurrentTextProperties(text);
}

/// The records keep their places; their entities, which nothing can bring back now, go.
void ZvVRecordErase::FlushDone() {
    ManageEntityDeletion(Entities().Names());
    Entities().Clear();
    m_referrers.Clear();
}

void ZvVRecordErase::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    if (m_erasedBytes)
        m_erasedBytes = MemUsageOf(Entities());
    m_referrers.Remove(leaving);
}

XStringW ZvVRecordErase::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbRecordErase);
}

size_t ZvVRecordErase::MemUsage() const {
    size_t bytes = ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) + m_erasedBytes +
                   m_entries.capacity() * sizeof(Entry) + m_referrers.MemUsage() +
                   m_referringRecords.capacity() * sizeof(m_referringRecords[0]);
    for (const Entry& entry : m_entries)
        bytes += entry.before.MemUsage();
    for (const auto& [key, state] : m_referringRecords)
        bytes += state.MemUsage();
    return bytes;
}
