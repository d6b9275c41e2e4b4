#include "Zelvan/Tables/ZvTableRecord.h"
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/Tables/ZvFieldIO.h"
#include "Zelvan/Tables/ZvFieldProperties.h"
#include "Zelvan/Tables/ZvPropertyLabels.h"
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"

ZvTableRecord::ZvTableRecord() : m_guid(Guid::New()) {}

ZvTableRecord::~ZvTableRecord() = default;

ZvDrawing* ZvTableRecord::GetParentDrawing() const {
    return m_table ? m_table->GetParent() : nullptr;
}

// --- identity ----------------------------------------------------------------------------------------------

namespace {

constexpr std::u16string_view kInvalid = u"/\\\"?*|";

} // namespace

bool ZvTableRecord::CheckRecordName(const XStringW& name) {
    return !name.IsEmpty() && name.View().find_first_of(kInvalid) == std::u16string_view::npos;
}

XStringW ZvTableRecord::WithoutInvalid(const XStringW& name) {
    XStringW clean = name;
    for (char16_t& c : clean.Str())
        if (kInvalid.find(c) != std::u16string_view::npos)
            c = u'_';
    return clean;
}

bool ZvTableRecord::SetName(const XStringW& name, bool viaTable) {
    if (name == m_name)
        return true;
    if (!CheckRecordName(name)) {
        ZvErrors::Report(ZvErrorCode::BadRecordName, name.ToUtf8());
        return false;
    }
    if (viaTable && m_table && IsInTable())
        return m_table->ChildChangeName(*this, name);
    SetNameFinal(name);
    return true;
}

void ZvTableRecord::SetNameFinal(const XStringW& name) {
    m_name = name;
    m_nameUpCase = name.ToUpper();
}

bool ZvTableRecord::SetGuid(const Guid& guid) {
    if (m_table && IsInTable())
        return m_table->ChildChangeGuid(*this, guid);
    m_guid = guid;
    return true;
}

// --- flags and modification --------------------------------------------------------------------------------

void ZvTableRecord::PutFlag(Flag flag, bool on) {
    const auto flags = uint16_t(on ? m_flags | flag : m_flags & ~flag);
    if (flags == m_flags)
        return;
    m_flags = flags;
    IncModified();
}

bool ZvTableRecord::ChangeXRef(bool on) {
    const bool former = IsXRef();
    PutFlag(kXRef, on);
    return former;
}

void ZvTableRecord::IncModified() {
    ++m_modified;
    if (m_table && IsInTable())
        m_table->ChildIncModStamp(*this);
}

void ZvTableRecord::NotifyVisState() {
    IncModified();
}

// --- content -----------------------------------------------------------------------------------------------

void ZvTableRecord::GetProperties(ZvPropertyGatherer& gatherer) const {
    gatherer.Add("Name", ZvPropertyLabels::Get("Name"), m_name, !IsInternal());
    ZvFieldGatherer visit(gatherer);
    const_cast<ZvTableRecord*>(this)->Fields(visit); // gathering changes nothing
}

void ZvTableRecord::SetProperties(ZvPropertySetter& setter) {
    if (const ZvProperty::Value* value = setter.Take("Name")) {
        const XStringW* name = std::get_if<XStringW>(value);
        const bool free =
            !name || name->EqualsNoCase(m_name) || !IsInTable() || m_table->IsNewNameValid(*name);
        if (!name || IsInternal() || !free || !SetName(*name))
            setter.Refuse("Name", "the name is taken or cannot be a record's");
    }
    const std::vector<uint8_t> former = OwnFields();
    ZvFieldSetter visit(setter);
    Fields(visit);
    if (!visit.Changed())
        return;
    FieldsChanged();
    if (!HoldsWhatWasAsked(setter)) {
        ZvFieldReader back(former);
        Fields(back);
        FieldsChanged();
        return;
    }
    IncModified();
}

/// Refuses the numbers that the record has put right. Texts are not looked at: a value has several.
bool ZvTableRecord::HoldsWhatWasAsked(ZvPropertySetter& setter) const {
    ZvPropertyGatherer held;
    ZvFieldGatherer visit(held);
    const_cast<ZvTableRecord*>(this)->Fields(visit); // gathering changes nothing
    bool all = true;
    for (const ZvProperty& property : held.Items()) {
        const ZvProperty::Value* asked = property.writable ? setter.Take(property.id) : nullptr;
        const double* number = asked ? std::get_if<double>(asked) : nullptr;
        const int64_t* whole = asked ? std::get_if<int64_t>(asked) : nullptr;
        const double* heldNumber = std::get_if<double>(&property.value);
        const int64_t* heldWhole = std::get_if<int64_t>(&property.value);
        const bool same = heldNumber  ? *heldNumber == (number  ? *number
                                                        : whole ? double(*whole)
                                                                : *heldNumber)
                          : heldWhole ? !whole || *heldWhole == *whole
                                      : true;
        if (same || setter.IsRefused(property.id))
            continue;
        setter.Refuse(property.id, ZvStrings::Get(ZvStr::PropertyOutOfRange));
        all = false;
    }
    return all;
}

std::vector<uint8_t> ZvTableRecord::OwnFields() const {
    std::vector<uint8_t> bytes;
    ZvFieldWriter visit(bytes);
    const_cast<ZvTableRecord*>(this)->Fields(visit); // writing changes nothing
    return bytes;
}

bool ZvTableRecord::Merge(const ZvTableRecord& from) {
    if (from.GetFullCode() != GetFullCode())
        return false;
    const std::vector<uint8_t> bytes = from.OwnFields();
    ZvFieldReader visit(bytes);
    Fields(visit);
    m_unknownTail = from.m_unknownTail;
    FieldsChanged();
    IncModified();
    return true;
}

void ZvTableRecord::TakeFieldBytes(std::span<const uint8_t> bytes) {
    ZvFieldReader visit(bytes);
    Fields(visit);
    FieldsChanged();
    IncModified();
}

void ZvTableRecord::CopyContents(const ZvTableRecord&) {}

void ZvTableRecord::DropContents() {}

std::unique_ptr<ZvTableRecord> ZvTableRecord::Clone() const {
    std::unique_ptr<ZvTableRecord> copy = NewOfKind();
    copy->SetNameFinal(m_name);
    copy->m_flags = uint16_t(m_flags & ~kErased);
    copy->Merge(*this);
    return copy;
}

void ZvTableRecord::DrawUI(IZvSurface& surface, const Rect2I& box) const {
    ZvTextRun run;
    run.text = m_name;
    run.heightPx = float(box.Height()) * 0.7f;
    run.baselineStart = {float(box.left) + 2, float(box.bottom) - float(box.Height()) * 0.3f};
    surface.PushClip(box);
    surface.Text(run);
    surface.PopClip();
}

void ZvTableRecord::TableUsage(ZvUsageTable&) const {}

void ZvTableRecord::TableUpdate(ZvNativeDesc&) {}

// --- files -------------------------------------------------------------------------------------------------

bool ZvTableRecord::NativeOut(ZvNativeDesc& desc) const {
    std::vector<uint8_t> body;
    ZvFieldWriter head(body);
    head.Value(int32_t(m_index));
    head.Value(m_id);
    head.Value(m_flags);
    head.Bytes(m_guid.bytes.data(), m_guid.bytes.size());
    head.Text(m_name);
    const std::vector<uint8_t> own = OwnFields();
    head.Bytes(own.data(), own.size());
    head.Bytes(m_unknownTail.data(), m_unknownTail.size());
    const bool ok = desc.WriteValue(uint64_t(body.size() + sizeof(uint64_t)));
    return !(ok && desc.Write(body.data(), body.size()));
}

bool ZvTableRecord::NativeIn(ZvNativeDesc& desc) {
    const uint64_t start = desc.Position();
    uint64_t length = 0;
    if (!desc.ReadValue(length) || length < sizeof(length))
        return true;
    const ZvNativeDesc::RecordScope scope(desc, start, length);
    if (!scope.Fits())
        return true;
    std::vector<uint8_t> body(size_t(length - sizeof(length)));
    if (!desc.Read(body.data(), body.size()))
        return true;

    ZvFieldReader head(body);
    XStringW name;
    Guid guid;
    uint16_t flags = 0;
    if (!head.Value(m_fileIndex) || !head.Value(m_id) || !head.Value(flags) ||
        !head.Bytes(guid.bytes.data(), guid.bytes.size()) || !head.Text(name))
        return true;
    m_flags =
        uint16_t(flags & ~kErased); // nobody could restore it, and a save would leave out all that it holds
    m_guid = guid;
    SetNameFinal(name);
    Fields(head);
    m_unknownTail.assign(head.Rest().begin(), head.Rest().end());
    FieldsChanged();
    return false;
}

bool ZvTableRecord::ContentsOut(ZvNativeDesc&) const {
    return false;
}

bool ZvTableRecord::ContentsIn(ZvNativeDesc&, uint64_t, ZvNameIntake&) {
    return false;
}

size_t ZvTableRecord::MemUsage() const {
    return sizeof(*this) + (m_name.Length() + m_nameUpCase.Length()) * 2 + m_unknownTail.size();
}
