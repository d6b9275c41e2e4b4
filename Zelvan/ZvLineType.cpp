#include "Zelvan/ZvLineType.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvStrings.h"
#include "Zelvan/ZvSwatch.h"
#include "Zelvan/ZvTextScan.h"
#include "ZvCore/IFile.h"
#include "ZvCore/ZvErrors.h"

namespace {

constexpr uint32_t kLineTypeTable = ZvTableCode::Full(ZvTableCode::LineType);

ZvLineTypeRec* RecordOf(const ZvDrawing* drawing, int index) {
    const ZvLineTypeTable* table = drawing ? drawing->LineTypeTable() : nullptr;
    return table ? table->Get(index) : nullptr;
}

} // namespace

bool ZvLineType::Resolve(const ZvEntity* entity, ZvLineType& out) const {
    if (IsByLayer()) {
        const ZvLayer* layer = entity ? entity->GetLayer() : nullptr;
        if (!layer)
            return false;
        out = layer->GetLineType();
    } else {
        out = IsByBlock() ? Continuous() : *this;
    }
    return true;
}

XStringW ZvLineType::ToString() const {
    if (IsIndexed())
        return XStringW::Format("I:%d", int(m_code));
    return IsByLayer() ? u"ByLayer" : IsByBlock() ? u"ByBlock" : IsNull() ? u"Null" : u"Continuous";
}

bool ZvLineType::Parse(const XStringW& text) {
    auto scan = ZvTextScan::Upper(text);
    int index = 0;
    if (scan.Whole("BYBLOCK"))
        SetByBlock();
    else if (scan.Whole("BYLAYER"))
        SetByLayer();
    else if (scan.Whole("CONTINUOUS"))
        SetContinuous();
    else if (scan.Whole("NULL"))
        SetNull();
    else if (scan.Literal("I:") && scan.Int(index) && scan.AtEnd() && index >= 0 && index <= INT16_MAX)
        SetIndex(index);
    else
        return false;
    return true;
}

ZvLineType ZvLineType::FromString(const XStringW& text) {
    ZvLineType type;
    (void)type.Parse(text); // continuous stays when it fails
    return type;
}

XStringW ZvLineType::ToStringPortable(const ZvDrawing* drawing) const {
    if (!drawing)
        return u"Null";
    if (!IsIndexed())
        return ToString();
    if (const ZvLineTypeRec* record = RecordOf(drawing, m_code))
        return record->GetName();
    ZvErrors::Report(ZvErrorCode::None, "ZvLineType.ToStringPortable rec not found");
    return u"Null";
}

ZvLineType ZvLineType::FromStringPortable(const XStringW& text, const ZvDrawing* drawing) {
    ZvLineType type;
    if (type.Parse(text) && !type.IsIndexed())
        return type;
    const ZvLineTypeTable* table = drawing ? drawing->LineTypeTable() : nullptr;
    const ZvLineTypeRec* record = table ? table->GetByName(text.Trimmed()) : nullptr;
    return record ? ZvLineType(record->GetTableIndex()) : Null();
}

XStringW ZvLineType::GetTextDesc(const ZvDrawing* drawing) const {
    if (IsIndexed()) {
        const ZvLineTypeRec* record = RecordOf(drawing, m_code);
        return record ? record->GetName() : ZvStrings::GetW(ZvStr::Unknown);
    }
    return ZvStrings::GetW(IsByLayer()      ? ZvStr::ByLayer
                           : IsByBlock()    ? ZvStr::ByBlock
                           : IsContinuous() ? ZvStr::Continuous
                                            : ZvStr::Unknown);
}

bool ZvLineType::NativeOut(ZvNativeDesc& desc) const {
    return desc.File().WriteValue(m_code);
}

bool ZvLineType::NativeIn(ZvNativeDesc& desc, bool strict) {
    int16_t code = 0;
    if (!desc.File().ReadValue(code))
        return false;
    // -1, the answer for an unknown index, is continuous.
    m_code = code >= 0 ? int16_t(desc.TranslateIndex(kLineTypeTable, code, strict)) : code;
    return true;
}

void ZvLineType::RecordUse(ZvUsageTable& usage) const {
    if (IsIndexed())
        usage.Use(kLineTypeTable, m_code);
}

void ZvLineType::DrawUI(IZvSurface& surface, const Rect2I& area, const ZvDrawing* drawing) const {
    ZvSwatch swatch(surface, area);
    swatch.Box({});
    const ZvLineTypeRec* record = RecordOf(drawing, m_code);
    if (record)
        record->DrawUI(surface, swatch.Inside());
    else if (IsContinuous() || IsByBlock())
        swatch.Line({});
    else if (!IsByLayer())
        swatch.CrossOut();
    swatch.Label(GetTextDesc(drawing));
}
