#include "Zelvan/ZvTableTable.h"
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include <algorithm>
#include <set>

Zv::Status ZvTableTable::Insert(ZvTable* table) {
    if (!table || HasTable(table->GetFullCode()))
        return Zv::Status::Failure;
    m_tables.push_back(table);
    return Zv::Status::Success;
}

ZvTable* ZvTableTable::GetByFullCode(uint32_t fullCode) const {
    for (ZvTable* table : m_tables)
        if (table->GetFullCode() == fullCode)
            return table;
    return nullptr;
}

void ZvTableTable::Clear() {
    m_tables.clear();
    m_unknown.clear();
}

std::vector<ZvTable*> ZvTableTable::TablesWithUsageCount() const {
    std::vector<ZvTable*> counted;
    for (ZvTable* table : m_tables)
        if (table->HasUsageCounts())
            counted.push_back(table);
    return counted;
}

/// The table that takes records of that code: the drawing's own, or the one that it borrows.
ZvTable* ZvTableTable::TargetOf(uint32_t fullCode, bool& proxied) const {
    ZvTable* own = GetByFullCode(fullCode);
    proxied = !own && m_drawing.IsChildLayoutWithProxyTables();
    if (!proxied)
        return own;
    ZvTable* borrowed = m_drawing.ParentLayoutDrawing()->TableTable()->GetByFullCode(fullCode);
    proxied = borrowed && m_drawing.IsProxyTable(borrowed);
    return proxied ? borrowed : nullptr;
}

// --- copying from another drawing --------------------------------------------------------------------------

namespace {

/// Adds what the used records refer to, directly or through others.
ZvUsageTable WithReferences(const ZvTableTable& tables, const ZvUsageTable& used) {
    ZvUsageTable all = used;
    std::set<const ZvTableRecord*> followed;
    for (bool found = true; found;) {
        found = false;
        for (int t = 0; t < tables.Count(); ++t) {
            const ZvTable& table = *tables.Get(t);
            for (int i = 0; i < table.Count(); ++i) {
                if (all.Count(table.GetFullCode(), i) == 0 || !followed.insert(table.Get(i)).second)
                    continue;
                table.Get(i)->TableUsage(all);
                found = true;
            }
        }
    }
    return all;
}

/// Position in which a table is read or copied: what others refer to comes first. Tables of plug-ins come
/// last.
int ReadRank(uint32_t fullCode) {
    static constexpr ZvTableCode::Code kOrder[] = {
        ZvTableCode::LineType, ZvTableCode::Bitmap,          ZvTableCode::TextStyle, ZvTableCode::Texture,
        ZvTableCode::DimStyle, ZvTableCode::Program,         ZvTableCode::Block,     ZvTableCode::Ucs,
        ZvTableCode::Data,     ZvTableCode::Layer,           ZvTableCode::Paper,     ZvTableCode::XRef,
        ZvTableCode::View,     ZvTableCode::SelectionVolume, ZvTableCode::Layout};
    for (size_t i = 0; i < std::size(kOrder); ++i)
        if (ZvTableCode::Full(kOrder[i]) == fullCode)
            return int(i);
    return int(std::size(kOrder));
}

} // namespace

void ZvTableTable::ForceTableReadOrders(std::vector<Entry>& entries) {
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        return ReadRank(a.fullCode) < ReadRank(b.fullCode);
    });
}

void ZvTableTable::CloneProxiedIndexMaps(const ZvNativeDesc& from, ZvNativeDesc& to) {
    for (uint16_t code = 1; code <= ZvTableCode::kLastBorrowable; ++code)
        to.CopyTableIndex(ZvTableCode::Full(code), from);
}

Zv::Status ZvTableTable::CopyRecords(const ZvTableTable& from, const ZvUsageTable& usage,
                                     const ZvMergeProfile& profile, ZvNativeDesc& desc) {
    if (&from == this)
        return Zv::Status::Failure;
    const ZvUsageTable wanted = WithReferences(from, usage);
    std::vector<Entry> order;
    for (const ZvTable* table : from.m_tables)
        order.push_back({.fullCode = table->GetFullCode()});
    ForceTableReadOrders(order);
    std::vector<ZvTableRecord*> made;
    for (const Entry& entry : order) {
        bool proxied = false;
        ZvTable* to = TargetOf(entry.fullCode, proxied);
        const ZvTable* source = from.GetByFullCode(entry.fullCode);
        if (to && to != source && !Zv::Ok(CopyRecordsInternal(*source, *to, wanted, profile, desc, made)))
            return Zv::Status::Failure;
    }
    for (ZvTableRecord* record : made)
        record->TableUpdate(desc);
    return Zv::Status::Success;
}

Zv::Status ZvTableTable::CopyRecordsInternal(const ZvTable& from, ZvTable& to, const ZvUsageTable& usage,
                                             const ZvMergeProfile& profile, ZvNativeDesc& desc,
                                             std::vector<ZvTableRecord*>& made) const {
    for (int i = 0; i < from.Count(); ++i) {
        const ZvTableRecord& source = *from.Get(i);
        if (usage.Count(from.GetFullCode(), i) == 0 || source.IsErased())
            continue;
        std::unique_ptr<ZvTableRecord> copy = source.Clone();
        copy->SetGuidFinal(source.GetGuid());
        const ZvMergeResult result = to.Merge(std::move(copy), profile);
        desc.SetTableIndex(from.GetFullCode(), i, result.record ? result.record->GetTableIndex() : -1);
        to.NotifyMergeHandlersOfRead(i, result.record);
        if (!result.TakesContents())
            continue;
        if (result.fate == ZvMergeFate::Replace)
            result.record->DropContents();
        result.record->CopyContents(source);
        made.push_back(result.record);
    }
    return Zv::Status::Success;
}
