#include "Zelvan/Verbs/ZvVRecordModify.h"
#include "Zelvan/Tables/ZvTableRecord.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>

ZvVRecordModify::ZvVRecordModify(const ZvTableRecord& record) : ZvVerb(record.GetParentDrawing()) {
    AddOriginal(record);
}

void ZvVRecordModify::AddOriginal(const ZvTableRecord& record) {
    const ZvRecordKey key = ZvRecordKey::Of(record);
    for (const Entry& entry : m_entries)
        if (entry.key.tableCode == key.tableCode && entry.key.id == key.id)
            return;
    m_entries.push_back({key, ZvRecordState(record), {}});
}

void ZvVRecordModify::StoreModified() {
    for (Entry& entry : m_entries)
        if (const ZvTableRecord* record = entry.key.Find(*Drawing()))
            entry.after = ZvRecordState(*record);
    m_stored = true;
}

void ZvVRecordModify::Set(const std::string& id, ZvProperty::Value value) {
    m_values.emplace_back(id, std::move(value));
}

bool ZvVRecordModify::IsNullOp() const {
    return m_stored ? std::all_of(m_entries.begin(), m_entries.end(),
                                  [](const Entry& entry) { return entry.before == entry.after; })
                    : m_entries.empty() || m_values.empty();
}

void ZvVRecordModify::Do() {
    if (m_stored) // the command has made the change
        return;
    m_refusals.clear();
    bool found = false;
    for (const Entry& entry : m_entries)
        if (ZvTableRecord* record = entry.key.Find(*Drawing())) {
            SetValues(*record);
            found = true;
        }
    StoreModified();
    if (!found && !m_entries.empty())
        return Refuse(ZvStrings::GetW(ZvStr::RefusedNoRecord));
    if (!m_refusals.empty())
        Refuse(XStringW::FromUtf8(m_refusals.front()), IsNullOp());
}

void ZvVRecordModify::SetValues(ZvTableRecord& record) {
    ZvPropertySetter setter;
    for (const auto& [id, value] : m_values)
        setter.Set(id, value);
    record.SetProperties(setter);
    record.NotifyVisState();
    m_refusals.insert(m_refusals.end(), setter.Refusals().begin(), setter.Refusals().end());
    for (const std::string& id : setter.Unused())
        m_refusals.push_back("there is no property \"" + id + "\"");
}

void ZvVRecordModify::Undo() {
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry) {
        if (ZvTableRecord* record = entry->key.Find(*Drawing()))
            (void)entry->before.Restore(*record);
        else
            ZvErrors::Report(ZvErrorCode::VerbRecordGone, "ZvVRecordModify.Undo");
    }
}

bool ZvVRecordModify::Redo() {
    for (const Entry& entry : m_entries)
        if (!entry.key.Find(*Drawing()))
            return false;
    for (const Entry& entry : m_entries)
        (void)entry.after.Restore(*entry.key.Find(*Drawing()));
    return true;
}

void ZvVRecordModify::UpdateLayersUsed() {
    ZvVerb::UpdateLayersUsed();
    for (const Entry& entry : m_entries)
        AddLayerUsed(entry.key.FindLayer(*Drawing()));
}

XStringW ZvVRecordModify::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbRecordModify);
}

size_t ZvVRecordModify::MemUsage() const {
    size_t bytes = ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) + m_entries.capacity() * sizeof(Entry);
    for (const Entry& entry : m_entries)
        bytes += entry.before.MemUsage() + entry.after.MemUsage();
    return bytes;
}
