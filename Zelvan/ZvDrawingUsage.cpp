#include "Zelvan/DrawingAux/ZvEntityAssociator.h"
#include "Zelvan/DrawingAux/ZvEntityNotifier.h"
#include "Zelvan/DrawingAux/ZvPageSetTable.h"
#include "Zelvan/DrawingAux/ZvTemporaryData.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/Tables/ZvTextStyleTable.h"
#include "Zelvan/View/ZvViewOptions.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvTableTable.h"
#include <set>

// Tables as a whole: defaults, references to records, purging.

void ZvDrawing::AddTable(std::unique_ptr<ZvTable> table) {
    if (table && Zv::Ok(m_tableTable->Insert(table.get())))
        m_addedTables.push_back(std::move(table));
}

bool ZvDrawing::IsProxyTable(const ZvTable* table) const {
    return m_hasProxyTables && table && table->GetParent() == m_parent &&
           table->GetClientCode() == ZvTableCode::kBuiltInClient &&
           table->GetTableCode() <= ZvTableCode::kLastBorrowable;
}

void ZvDrawing::CreateDefaults() {
    if (!m_hasProxyTables) {
        m_lineTypeTable->CreateDefaults();
        m_textStyleTable->CreateDefaults();
    }
    m_layerTable->CreateDefaults();
    for (int i = 0; i < m_tableTable->Count(); ++i)
        m_tableTable->Get(i)->CreateDefaults();
}

void ZvDrawing::Reset() {
    Purge();
    m_viewOptions->Reset();
    SetDefaultAttributes();
    RefreshGlobalData();
    CreateDefaults();
    PostEvent(ZvDrawingEvent::Reset);
    Invalidate(ZvBounds3D::SuperBounds());
}

void ZvDrawing::Purge() {
    ClearCurrentSelection();
    m_verbs->PurgeUndo();
    m_temporaryData->Clear();
    m_entityNotifier->Clear();
    m_entityAssociator->Clear();
    m_emptying = true;
    m_nameTable.Clear();
    m_scratchLayer->Tree().DeleteAll();
    for (int i = m_tableTable->Count(); i-- > 0;)
        m_tableTable->Get(i)->Purge();
    m_entityHeap->Clear();
    m_emptying = false;
    if (m_pageSetTable)
        m_pageSetTable->Clear();
    PostEvent(ZvDrawingEvent::Purged);
}

// --- usage ------------------------------------------------------------------------------------------------

void ZvDrawing::GatherUsageInfo(ZvUsageTable& usage, const ZvSelection* selection) const {
    if (selection) {
        MemberUsage(usage, *selection);
        return;
    }
    for (ZvName name = m_nameTable.Next({}); !name.IsNull(); name = m_nameTable.Next(name))
        m_nameTable.GetQuiet(name)->TableUsage(usage);
    for (int i = 0; i < m_tableTable->Count(); ++i)
        m_tableTable->Get(i)->ExternalTableUsage(usage);
    m_currentLineType.RecordUse(usage);
    m_currentBrush.RecordUse(usage, this);
    if (m_currentText.style >= 0)
        usage.Use(m_textStyleTable->GetFullCode(), m_currentText.style);
    if (m_layerTable->GetCurrent())
        usage.Use(m_layerTable->GetFullCode(), m_layerTable->GetCurrent()->GetTableIndex());
}

/// What the selected entities use, and what those records use in turn.
void ZvDrawing::MemberUsage(ZvUsageTable& usage, const ZvSelection& selection) const {
    for (int i = 0; i < selection.Count(); ++i)
        if (const ZvEntity* entity = selection.GetEntityQuiet(i))
            entity->TableUsage(usage);
    std::set<const ZvTableRecord*> followed;
    for (bool found = true; found;) {
        found = false;
        for (const ZvDrawing* holder :
             {this, const_cast<const ZvDrawing*>(m_hasProxyTables ? m_parent : nullptr)})
            for (int t = 0; holder && t < holder->m_tableTable->Count(); ++t) {
                const ZvTable* table = holder->m_tableTable->Get(t);
                for (int i = 0; i < table->Count(); ++i) {
                    const ZvTableRecord* record = table->Get(i);
                    if (!usage.Count(table->GetFullCode(), i) || !followed.insert(record).second)
                        continue;
                    record->TableUsage(usage);
                    found = true;
                }
            }
    }
}

void ZvDrawing::PopulateRecordUsageMap(ZvUsageTable& usage) {
    usage.Clear();
    GatherUsageInfo(usage);
}

void ZvDrawing::InitUsageStructs() {
    for (ZvTable* table : m_tableTable->TablesWithUsageCount())
        for (int i = 0; i < table->Count(); ++i)
            table->Get(i)->SetUsageCount(0);
}

void ZvDrawing::RefreshRecordUsage() {
    ZvUsageTable usage;
    InitUsageStructs();
    PopulateRecordUsageMap(usage);
    for (ZvTable* table : m_tableTable->TablesWithUsageCount())
        table->TakeUsage(usage);
}

int ZvDrawing::GetRecordUsage(uint32_t tableCode, int index) {
    RefreshRecordUsage();
    const ZvTable* table = m_tableTable->GetByFullCode(tableCode);
    const ZvTableRecord* record = table ? table->Get(index) : nullptr;
    return record ? record->GetUsageCount() : 0;
}

int ZvDrawing::PurgeUnusedTableRecords(uint32_t tableCode) {
    m_verbs->PurgeUndo(); // verbs hold layers and values that refer to records
    PurgeErased();
    int purged = 0;
    for (bool again = true; again;) { // what only a purged record used is unused now
        again = false;
        RefreshRecordUsage();
        for (ZvTable* table : m_tableTable->TablesWithUsageCount())
            if (tableCode == 0 || table->GetFullCode() == tableCode)
                if (const int gone = table->EraseUnused()) {
                    purged += gone;
                    again = true;
                    break; // indices have moved: count anew
                }
    }
    return purged;
}

void ZvDrawing::TableUpdate(ZvNativeDesc& desc) {
    m_verbs->PurgeUndo(); // copies of entities there hold the former numbers
    for (ZvName name = m_nameTable.Next({}); !name.IsNull(); name = m_nameTable.Next(name))
        m_nameTable.GetQuiet(name)->TableUpdate(desc);
    for (const auto& entity : m_temporaryData->Entities())
        entity->TableUpdate(desc);
    for (int i = 0; i < m_tableTable->Count(); ++i)
        m_tableTable->Get(i)->TableUpdate(desc);
    if (m_currentLineType.IsIndexed())
        m_currentLineType = ZvLineType(
            desc.TranslateIndex(m_lineTypeTable->GetFullCode(), m_currentLineType.GetIndex(), true));
    if (m_currentBrush.IsTexture()) {
        const int texture =
            desc.TranslateIndex(ZvTableCode::Full(ZvTableCode::Texture), m_currentBrush.GetTexture(), true);
        if (texture < 0)
            m_currentBrush.SetEmpty();
        else
            m_currentBrush.SetTexture(texture);
    }
    if (m_currentText.style >= 0)
        m_currentText.style = desc.TranslateIndex(m_textStyleTable->GetFullCode(), m_currentText.style, true);
    CurrentPropertiesChanged();
}
