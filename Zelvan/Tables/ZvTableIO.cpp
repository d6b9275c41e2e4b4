#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/Tables/ZvFieldIO.h"
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>

// A table in the file: a block with the table's own fields, then groups of records. A group is its length
// (u64), the number of its records (u32) and a block with the records. Each record begins with its length.

namespace {

/// Content of a group at which the next one is begun.
constexpr uint64_t kGroupBytes = uint64_t(2) << 20;
constexpr size_t kGroupHead = 12;

void Tell(ZvNativeDesc& desc, int text, const XStringW& table, uint64_t at) {
    desc.Native().AddError(
        int(ZvErrorCode::BlockUnreadable),
        XStringA::Format(ZvStrings::Get(text), table.ToUtf8().c_str(), static_cast<long long>(at)).Str());
}

} // namespace

// --- the table's own fields --------------------------------------------------------------------------------

std::vector<uint8_t> ZvTable::HeadBytes() const {
    std::vector<uint8_t> bytes;
    ZvFieldWriter head(bytes);
    head.Value(m_nextId);
    head.Value(m_lastAutoNumber);
    head.Value(m_current && !m_current->IsErased() ? m_current->GetId() : 0u);
    const_cast<ZvTable*>(this)->TableFields(head); // writing changes nothing
    head.Bytes(m_unknownTail.data(), m_unknownTail.size());
    return bytes;
}

void ZvTable::TakeHead(std::span<const uint8_t> bytes, bool merging) {
    ZvFieldReader head(bytes);
    uint32_t nextId = 0, current = 0;
    int64_t lastAutoNumber = 0;
    if (merging || !head.Value(nextId) || !head.Value(lastAutoNumber) || !head.Value(current))
        return;
    m_nextId = nextId;
    m_lastAutoNumber = std::max<int64_t>(0, lastAutoNumber);
    m_currentId = current;
    TableFields(head);
    m_unknownTail.assign(head.Rest().begin(), head.Rest().end());
}

// --- writing -----------------------------------------------------------------------------------------------

bool ZvTable::MustWriteRecord(const ZvTableRecord& record, const ZvNativeDesc& desc) const {
    if (record.IsErased())
        return false;
    return !desc.usedRecords || !HasUsageCounts() || record.IsInternal() ||
           desc.MustWriteRecord(GetFullCode(), record.GetTableIndex());
}

std::vector<const ZvTableRecord*> ZvTable::SavedRecords(const ZvNativeDesc& desc) const {
    std::vector<const ZvTableRecord*> saved;
    for (const auto& record : m_records)
        if (MustWriteRecord(*record, desc))
            saved.push_back(record.get());
    return saved;
}

bool ZvTable::NativeOut(ZvNativeDesc& desc) const {
    ZvNativeFile& file = desc.Native();
    const std::vector<uint8_t> head = HeadBytes();
    file.StartCompressBlock();
    desc.Write(head.data(), head.size());
    bool ok = file.EndCompressBlock();

    const std::vector<const ZvTableRecord*> saved = SavedRecords(desc);
    for (size_t next = 0; ok && next < saved.size();) {
        const uint64_t start = file.StoreRecordStart();
        const uint8_t placeholder[kGroupHead] = {};
        desc.Write(placeholder, sizeof placeholder);
        file.StartCompressBlock();
        uint32_t count = 0;
        for (; ok && next < saved.size() && desc.Position() < kGroupBytes; ++next, ++count)
            ok = !saved[next]->NativeOut(desc);
        ok = file.EndCompressBlock() && ok;
        const uint64_t end = desc.Position();
        ok = ok && desc.Seek(start) && desc.WriteValue(end - start) && desc.WriteValue(count) &&
             desc.Seek(end);
    }
    return !ok;
}

void ZvTable::NativeOutPreFix(ZvNativeDesc&) {}

// --- reading -----------------------------------------------------------------------------------------------

bool ZvTable::NativeIn(ZvNativeDesc& desc, uint64_t end, const ZvMergeProfile* profile,
                       std::vector<Read>& read) {
    ZvNativeFile& file = desc.Native();
    m_currentId = 0;
    const uint64_t at = desc.Position();
    if (!file.StartDecompressBlock()) {
        Tell(desc, ZvStr::TableDamaged, DefaultNameBase(), at);
        return true;
    }
    std::vector<uint8_t> head(size_t(desc.RecordRemaining()));
    desc.Read(head.data(), head.size());
    file.EndDecompressBlock();
    TakeHead(head, profile != nullptr);

    bool failed = false;
    for (uint64_t before = 0, here; (here = desc.Position()) < end && here < desc.RecordEnd();
         before = here) {
        if (here == before) // a stream that no longer moves
            return true;
        failed = ReadGroup(desc, profile, read) || failed;
    }
    if (ZvTableRecord* current = profile ? nullptr : GetById(m_currentId))
        m_current = current;
    return failed;
}

bool ZvTable::ReadGroup(ZvNativeDesc& desc, const ZvMergeProfile* profile, std::vector<Read>& read) {
    const uint64_t start = desc.Position();
    uint64_t length = 0;
    uint32_t count = 0;
    const bool hasHead = desc.ReadValue(length) && desc.ReadValue(count) && length >= kGroupHead;
    const ZvNativeDesc::RecordScope group(desc, start, hasHead ? length : ~uint64_t(0));
    if (!group.Fits() || !desc.Native().StartDecompressBlock()) {
        Tell(desc, ZvStr::TableDamaged, DefaultNameBase(), start);
        return true;
    }
    bool failed = false;
    for (uint32_t i = 0; i < count && desc.RecordRemaining() > 0; ++i) {
        const uint64_t at = desc.Position();
        std::unique_ptr<ZvTableRecord> record = NewRecord();
        if (record->NativeIn(desc)) {
            Tell(desc, ZvStr::TableRecordDamaged, DefaultNameBase(), at);
            failed = true;
            if (desc.Position() == at)
                break;
            continue;
        }
        const int fileIndex = record->FileIndex();
        Read one{fileIndex, {}};
        one.result = profile ? Merge(std::move(record), *profile) : TakeStored(std::move(record));
        NotifyMergeHandlersOfRead(fileIndex, one.result.record);
        read.push_back(one);
    }
    desc.Native().EndDecompressBlock();
    return failed;
}

/// A record of the drawing that is being loaded: it keeps id, name and guid unless the file gives them twice.
ZvMergeResult ZvTable::TakeStored(std::unique_ptr<ZvTableRecord> record) {
    uint32_t id = record->GetId();
    if (id == 0 || m_byId.count(id))
        id = m_nextId == UINT32_MAX ? 0 : ++m_nextId;
    if (id == 0 || m_byId.count(id)) // a file with the highest id of all: take any that is free
        for (id = 1; m_byId.count(id);)
            ++id;
    m_nextId = std::max(m_nextId, id);
    if (record->GetGuid().IsNull() || m_byGuid.count(record->GetGuid()))
        record->SetGuidFinal(Guid::New());
    if ((record->GetName().IsEmpty() || !IsFreeName(record->GetName())) &&
        !AssignDefaultName(*record, record->GetName()))
        return {};
    ZvTableRecord* taken = Register(std::move(record), id);
    m_lastInserted = taken;
    IncModified();
    taken->OnInserted();
    TellWatchers(ZvTableEvent::Inserted, taken->GetTableIndex());
    OnRecordInserted(*taken);
    return {taken, ZvMergeFate::Insert};
}

void ZvTable::NativeInPostFix(ZvNativeDesc&) {}
