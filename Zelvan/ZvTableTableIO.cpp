#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/Tables/ZvNameIntake.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvStrings.h"
#include "Zelvan/ZvTableTable.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>

// The tables section: a head, then one frame a table. A frame holds the table (see ZvTableIO.cpp) and after
// it the contents of its records, one frame a record. Everything can be skipped by its length. Records of all
// tables are read before any contents, so that the entities in them find every record that they refer to.

namespace {

constexpr uint32_t kSectionHead = 16; // u32 size of this head, u32 tables, u64 entities
constexpr uint32_t kLargestHead = 4096;
constexpr uint64_t kFrameHead =
    24; // u64 length, u32 full code, u32 records, u64 offset of the contents (0: none)
constexpr uint64_t kContentsHead = 12; // u64 length, i32 index of the record in the file
/// No name or record takes less in a file.
constexpr uint64_t kLeastBytesPerEntity = 4;

bool HasContents(const ZvTable& table) {
    return table.Count() > 0 && table.Get(0)->HasContents();
}

void TellDamage(ZvNativeDesc& desc, int text, const XStringW& what, uint64_t at) {
    desc.Native().AddError(
        int(ZvErrorCode::BlockUnreadable),
        XStringA::Format(ZvStrings::Get(text), what.ToUtf8().c_str(), static_cast<long long>(at)).Str());
}

} // namespace

// --- writing -----------------------------------------------------------------------------------------------

bool ZvTableTable::MustWriteTable(const ZvTable& table, const ZvNativeDesc& desc) const {
    if (!desc.usedRecords)
        return table.Count() > 0 || table.HasHistory();
    const bool taken = table.HasUsageCounts() || table.GetFullCode() == ZvTableCode::Full(ZvTableCode::Ucs) ||
                       table.GetFullCode() == ZvTableCode::Full(ZvTableCode::Data);
    return taken && !table.SavedRecords(desc).empty();
}

Zv::Status ZvTableTable::NativeOut(ZvNativeDesc& desc) {
    for (ZvTable* table : m_tables)
        table->NativeOutPreFix(desc);
    if (desc.Native().IsAborted())
        return Zv::Status::Failure;
    std::vector<const ZvTable*> written;
    for (const ZvTable* table : m_tables)
        if (MustWriteTable(*table, desc))
            written.push_back(table);
    const bool keepUnknown = !desc.usedRecords;
    bool ok = WriteTableTable(desc, written.size() + (keepUnknown ? m_unknown.size() : 0));
    for (size_t i = 0; ok && i < written.size(); ++i)
        ok = WriteTable(desc, *written[i]);
    for (size_t i = 0; ok && keepUnknown && i < m_unknown.size(); ++i)
        ok = desc.Write(m_unknown[i].frame.data(), m_unknown[i].frame.size());
    return Zv::FromBool(ok);
}

namespace {

/// Readers make room for so many. While there is undo information some of the named entities may be erased.
uint64_t EntitiesToState(ZvNativeDesc& desc, const ZvDrawing& drawing) {
    const ZvEntityNameTable& names = drawing.NameTable();
    if (drawing.Verbs()->StackSize() == 0 && !desc.Native().Options().orderByName)
        return uint64_t(names.Count());
    uint64_t count = 0;
    for (const ZvEntity* entity = nullptr; (entity = names.NextNonErased(entity)) != nullptr;)
        ++count;
    return count;
}

} // namespace

bool ZvTableTable::WriteTableTable(ZvNativeDesc& desc, size_t tables) const {
    return desc.WriteValue(kSectionHead) && desc.WriteValue(uint32_t(tables)) &&
           desc.WriteValue(EntitiesToState(desc, m_drawing));
}

bool ZvTableTable::WriteTable(ZvNativeDesc& desc, const ZvTable& table) const {
    const uint64_t start = desc.Native().StoreRecordStart();
    const auto count = uint32_t(table.SavedRecords(desc).size());
    bool ok = desc.WriteValue(uint64_t(0)) && desc.WriteValue(table.GetFullCode()) &&
              desc.WriteValue(count) && desc.WriteValue(uint64_t(0)) && !table.NativeOut(desc);
    const uint64_t contents = desc.Position();
    if (ok && HasContents(table))
        ok = WriteContents(desc, table);
    const uint64_t end = desc.Position();
    return ok && desc.Seek(start) && desc.WriteValue(end - start) && desc.Seek(start + kFrameHead - 8) &&
           desc.WriteValue(HasContents(table) ? contents - start : 0) && desc.Seek(end);
}

bool ZvTableTable::WriteContents(ZvNativeDesc& desc, const ZvTable& table) const {
    for (const ZvTableRecord* record : table.SavedRecords(desc)) {
        const uint64_t start = desc.Native().StoreRecordStart();
        const bool ok = desc.WriteValue(uint64_t(0)) && desc.WriteValue(int32_t(record->GetTableIndex())) &&
                        !record->ContentsOut(desc);
        if (!ok)
            return false;
        desc.Native().WriteRecordLength64(start);
    }
    return true;
}

// --- reading -----------------------------------------------------------------------------------------------

Zv::Status ZvTableTable::NativeIn(ZvNativeDesc& desc) {
    // A layout's drawing is new whatever happens to the drawing around it.
    const ZvMergeProfile* profile = m_drawing.IsChildLayout() ? nullptr : desc.Native().Options().merge;
    uint32_t tables = 0;
    if (!ReadTableTable(desc, tables)) {
        desc.Native().AddError(int(ZvErrorCode::BlockUnreadable), ZvStrings::Get(ZvStr::TableHeadDamaged));
        return Zv::Status::Failure;
    }
    std::vector<Entry> entries;
    bool sound = true;
    for (uint32_t i = 0; i < tables; ++i) {
        Entry entry;
        if (!ReadFrame(desc, entry)) {
            TellDamage(desc, ZvStr::TableDamaged, {}, entry.start);
            sound = false;
            break;
        }
        desc.Seek(entry.end);
        entries.push_back(std::move(entry));
    }
    ForceTableReadOrders(entries);
    for (Entry& entry : entries)
        ReadRecords(desc, entry, profile);
    for (const Entry& entry : entries)
        for (const auto& [index, result] : entry.read)
            if (result.TakesContents())
                result.record->TableUpdate(desc);
    ZvNameIntake names(desc, profile != nullptr);
    for (Entry& entry : entries)
        sound = ReadContents(desc, entry, profile, names) && sound;
    names.Finish();
    FinishReading(desc, profile != nullptr);
    return Zv::FromBool(sound);
}

bool ZvTableTable::ReadTableTable(ZvNativeDesc& desc, uint32_t& tables) const {
    const uint64_t start = desc.Position();
    uint32_t size = 0;
    uint64_t entities = 0;
    if (!desc.ReadValue(size) || size < kSectionHead || size > kLargestHead || !desc.ReadValue(tables) ||
        !desc.ReadValue(entities) || size > desc.RecordEnd() - start)
        return false;
    if (m_drawing.IsChildLayout() || !desc.Native().Options().merge)
        EmptyForLoading(std::min(entities, desc.RecordRemaining() / kLeastBytesPerEntity));
    return desc.Seek(start + size);
}

void ZvTableTable::EmptyForLoading(uint64_t statedEntities) const {
    if (m_drawing.NameTable().Count() > 0)
        m_drawing.Purge();
    for (size_t i = m_tables.size(); i-- > 0;)
        m_tables[i]->Purge();
    m_drawing.NameTable().Reserve(statedEntities);
}

bool ZvTableTable::ReadFrame(ZvNativeDesc& desc, Entry& entry) const {
    entry.start = desc.Position();
    uint64_t length = 0, contents = 0;
    if (!desc.ReadValue(length) || !desc.ReadValue(entry.fullCode) || !desc.ReadValue(entry.count) ||
        !desc.ReadValue(contents) || length < kFrameHead || length > desc.RecordEnd() - entry.start)
        return false;
    entry.end = entry.start + length;
    entry.contents = contents >= kFrameHead && contents <= length ? entry.start + contents : entry.end;
    entry.table = TargetOf(entry.fullCode, entry.proxied);
    return true;
}

bool ZvTableTable::ReadRecords(ZvNativeDesc& desc, Entry& entry, const ZvMergeProfile* profile) {
    desc.Seek(entry.start);
    const ZvNativeDesc::RecordScope frame(desc, entry.start, entry.end - entry.start);
    if (!entry.table) {
        if (!profile)
            KeepUnknown(desc, entry);
        return true;
    }
    if (entry.proxied)
        return ReadProxiedTable(desc, entry);
    desc.Seek(entry.start + kFrameHead);
    std::vector<ZvTable::Read> read;
    const bool failed = entry.table->NativeIn(desc, entry.contents, profile, read);
    bool moved = profile != nullptr || failed;
    for (const ZvTable::Read& one : read) {
        entry.read[one.fileIndex] = one.result;
        moved = moved || !one.result.record || one.result.record->GetTableIndex() != one.fileIndex;
    }
    for (const ZvTable::Read& one : read)
        if (moved)
            desc.SetTableIndex(entry.fullCode, one.fileIndex,
                               one.result.record ? one.result.record->GetTableIndex() : -1);
    return !failed;
}

/// Records of a table that this drawing borrows join the lender's: what is there already stands for them.
bool ZvTableTable::ReadProxiedTable(ZvNativeDesc& desc, Entry& entry) const {
    static const ZvMergeProfile profile;
    desc.Seek(entry.start + kFrameHead);
    std::vector<ZvTable::Read> read;
    const bool failed = entry.table->NativeIn(desc, entry.contents, &profile, read);
    for (const ZvTable::Read& one : read) {
        entry.read[one.fileIndex] = one.result;
        desc.SetTableIndex(entry.fullCode, one.fileIndex,
                           one.result.record ? one.result.record->GetTableIndex() : -1);
    }
    return !failed;
}

void ZvTableTable::KeepUnknown(ZvNativeDesc& desc, const Entry& entry) {
    std::erase_if(m_unknown, [&](const Unknown& unknown) { return unknown.fullCode == entry.fullCode; });
    Unknown kept{entry.fullCode, std::vector<uint8_t>(size_t(entry.end - entry.start))};
    desc.Seek(entry.start);
    if (desc.Read(kept.frame.data(), kept.frame.size()))
        m_unknown.push_back(std::move(kept));
}

bool ZvTableTable::ReadContents(ZvNativeDesc& desc, Entry& entry, const ZvMergeProfile* profile,
                                ZvNameIntake& names) const {
    if (!entry.table || entry.contents >= entry.end)
        return true;
    if (entry.proxied) { // the entities belong to the lender
        const ZvNativeFile::DrawingScope lender(desc.Native(), *entry.table->GetParent());
        ZvNativeDesc& theirs = desc.Native().Desc();
        CloneProxiedIndexMaps(desc, theirs);
        ZvNameIntake theirNames(theirs, true);
        Entry own = std::move(entry);
        own.proxied = false;
        const bool sound = ReadContents(theirs, own, profile, theirNames);
        theirNames.Finish();
        return sound;
    }
    desc.Seek(entry.contents);
    const ZvNativeDesc::RecordScope all(desc, entry.contents, entry.end - entry.contents);
    bool sound = true;
    while (sound && desc.RecordRemaining() >= kContentsHead)
        sound = ReadOneContents(desc, entry, profile, names);
    return sound;
}

/// False when the frames cannot be followed any further.
bool ZvTableTable::ReadOneContents(ZvNativeDesc& desc, Entry& entry, const ZvMergeProfile* profile,
                                   ZvNameIntake& names) const {
    const uint64_t start = desc.Position();
    uint64_t length = 0;
    int32_t index = -1;
    const bool hasHead = desc.ReadValue(length) && desc.ReadValue(index) && length >= kContentsHead;
    const ZvNativeDesc::RecordScope one(desc, start, hasHead ? length : ~uint64_t(0));
    if (!one.Fits()) {
        TellDamage(desc, ZvStr::TableDamaged, entry.table->DefaultNameBase(), start);
        return false;
    }
    auto found = entry.read.find(index);
    if (found == entry.read.end()) { // the record itself is lost: what it held is not
        ZvTableRecord* rescue = entry.table->InsertNew(ZvStrings::GetW(ZvStr::TableRecovered));
        desc.SetTableIndex(entry.fullCode, index, rescue ? rescue->GetTableIndex() : -1);
        found = entry.read.emplace(index, ZvMergeResult{rescue, ZvMergeFate::Insert}).first;
    }
    const ZvMergeResult& result = found->second;
    const bool isLayer = entry.fullCode == ZvTableCode::Full(ZvTableCode::Layer);
    const bool wanted = profile && isLayer ? result.record && profile->takeEntities : result.TakesContents();
    if (!wanted)
        return true;
    if (result.fate == ZvMergeFate::Replace && !isLayer)
        result.record->DropContents();
    if (result.record->ContentsIn(desc, start + length, names))
        TellDamage(desc, ZvStr::TableContentsDamaged, result.record->GetName(), start);
    return true;
}

void ZvTableTable::FinishReading(ZvNativeDesc& desc, bool merging) const {
    for (ZvTable* table : m_tables) {
        table->NativeInPostFix(desc);
        if (merging)
            continue;
        if (table->Count() == 0)
            table->CreateDefaults();
        table->SetModified(false);
    }
}
