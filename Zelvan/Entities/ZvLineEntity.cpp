#include "Zelvan/Entities/ZvLineEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvStrings.h"

void ZvLineEntity::SetLineWidth(ZvLineWidth width) {
    m_lineWidth = width;
    Touch();
}

void ZvLineEntity::SetLineType(ZvLineType type) {
    m_lineType = type;
    Touch();
}

ZvLineWidth ZvLineEntity::ResolvedLineWidth() const {
    const ZvLayer* layer = m_lineWidth.IsByLayer() && IsInDrawing() ? GetLayer() : nullptr;
    return layer ? layer->GetLineWidth() : m_lineWidth;
}

ZvLineType ZvLineEntity::ResolvedLineType() const {
    const ZvLayer* layer = m_lineType.IsByLayer() && IsInDrawing() ? GetLayer() : nullptr;
    return layer ? layer->GetLineType() : m_lineType;
}

void ZvLineEntity::CloneFrom(const ZvEntity& other) {
    ZvEntity::CloneFrom(other);
    if (!other.IsLineEntity())
        return;
    const auto& line = static_cast<const ZvLineEntity&>(other);
    m_lineWidth = line.m_lineWidth;
    m_lineType = line.m_lineType;
}

bool ZvLineEntity::IsAppearanceEqual(const ZvEntity& other) const {
    if (!ZvEntity::IsAppearanceEqual(other) || !other.IsLineEntity())
        return false;
    const auto& line = static_cast<const ZvLineEntity&>(other);
    return m_lineWidth == line.m_lineWidth && m_lineType == line.m_lineType;
}

void ZvLineEntity::CloneAppearanceFrom(const ZvEntity& other) {
    if (other.IsLineEntity()) {
        const auto& line = static_cast<const ZvLineEntity&>(other);
        m_lineWidth = line.m_lineWidth;
        m_lineType = line.m_lineType;
    }
    ZvEntity::CloneAppearanceFrom(other);
}

void ZvLineEntity::GetProperties(ZvPropertyGatherer& gatherer, bool all) const {
    ZvEntity::GetProperties(gatherer, all);
    const bool writable = IsPropertyWritable();
    gatherer.Add("LineWidth", ZvStrings::GetW(ZvStr::PropertyLineWidth), m_lineWidth.ToString(), writable);
    gatherer.Add("LineType", ZvStrings::GetW(ZvStr::PropertyLineType),
                 m_lineType.ToStringPortable(ParentDrawing()), writable);
}

void ZvLineEntity::SetProperties(ZvPropertySetter& setter) {
    ZvEntity::SetProperties(setter);
    if (const XStringW* text = setter.TakeText("LineWidth")) {
        ZvLineWidth width;
        if (width.Parse(*text))
            SetLineWidth(width);
        else
            setter.RefuseText("LineWidth", *text);
    }
    if (const XStringW* text = setter.TakeText("LineType")) {
        ZvLineType type;
        if (!type.Parse(*text))
            type = ZvLineType::FromStringPortable(*text, ParentDrawing());
        if (type.IsNull())
            setter.RefuseText("LineType", *text);
        else
            SetLineType(type);
    }
}

void ZvLineEntity::TableUsage(ZvUsageTable& usage) const {
    ZvEntity::TableUsage(usage);
    m_lineType.RecordUse(usage);
}

void ZvLineEntity::TableUpdate(ZvNativeDesc& desc) {
    ZvEntity::TableUpdate(desc);
    if (m_lineType.IsIndexed())
        m_lineType.SetIndex(
            desc.TranslateIndex(ZvTableCode::Full(ZvTableCode::LineType), m_lineType.GetIndex(), true));
}
