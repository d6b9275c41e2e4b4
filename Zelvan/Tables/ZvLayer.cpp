#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvNameIntake.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/Tables/ZvTextStyleTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include <algorithm>
#include <cmath>

ZvLayer::ZvLayer() : m_tree(std::make_unique<ZvBNode>()) {
    m_tree->SetContainer(this);
}

ZvLayer::~ZvLayer() = default;

std::unique_ptr<ZvTableRecord> ZvLayer::NewOfKind() const {
    return std::make_unique<ZvLayer>();
}

// --- entities ----------------------------------------------------------------------------------------------

ZvName ZvLayer::Adopt(std::unique_ptr<ZvEntity> entity) {
    ZvDrawing* drawing = GetParentDrawing();
    if (!drawing || !entity)
        return {};
    ZvEntity* adopted = entity.release();
    m_tree->Insert(adopted);
    return drawing->NameTable().Add(adopted);
}

ZvName ZvLayer::AdoptNamed(std::unique_ptr<ZvEntity> entity) {
    ZvDrawing* drawing = GetParentDrawing();
    if (!drawing || !entity)
        return {};
    ZvEntity* adopted = entity.release();
    m_tree->Insert(adopted);
    return drawing->NameTable().Update(adopted);
}

size_t ZvLayer::EntityCount() const {
    return m_tree->Count();
}

void ZvLayer::DeleteEntities() {
    m_loader = nullptr;
    m_tree->DeleteAll();
    m_attributes.reset();
}

void ZvLayer::SetDelayLoaded(Loader loader) {
    m_loader = std::move(loader);
    IncModified();
}

bool ZvLayer::EnsureEntireLayerLoaded() {
    if (!m_loader)
        return true;
    const Loader loader =
        std::exchange(m_loader, nullptr); // a loader that asks for the layer must not come back here
    if (loader(*this)) {
        IncModified();
        return true;
    }
    m_loader = loader;
    return false;
}

ZvAttributeTable& ZvLayer::Attributes() {
    if (!m_attributes)
        m_attributes = std::make_unique<ZvAttributeTable>();
    return *m_attributes;
}

void ZvLayer::CopyAttributes(ZvName name, const ZvLayer& from, ZvName fromName) {
    if (from.m_attributes && from.m_attributes->HasRow(fromName))
        Attributes().CopyRow(name, *from.m_attributes, fromName);
}

void ZvLayer::MoveAttributes(ZvName name, ZvLayer& from) {
    if (&from == this || !from.m_attributes)
        return;
    CopyAttributes(name, from, name);
    from.m_attributes->RemoveRow(name);
}

void ZvLayer::KeepAttributes(const std::function<bool(ZvName)>& wanted) {
    if (m_attributes)
        m_attributes->KeepRows(wanted);
}

void ZvLayer::CopyContents(const ZvTableRecord& from) {
    if (from.GetFullCode() != GetFullCode())
        return;
    if (const ZvAttributeTable* theirs = static_cast<const ZvLayer&>(from).AttributesOrNull())
        for (const ZvAttributeTable::Field& field : theirs->Fields())
            Attributes().AddField(field); // one that is there already stays as it is
}

void ZvLayer::TreeTouched(ZvEntity*) {
    ++m_entityModStamp;
}

void ZvLayer::OnInserted() {
    if (ZvDrawing* drawing = GetParentDrawing())
        m_tree->SetHeap(&drawing->EntityHeap());
}

void ZvLayer::OnRemoving() {
    DeleteEntities();
}

// --- values and switches -----------------------------------------------------------------------------------

namespace {

// A layer's own values cannot be by layer, by block or unset: they are where such values end.

ZvColor Concrete(const ZvColor& color) {
    return color.IsIndexed() || color.IsRGB() || color.IsRGBA() ? color : ZvColor::DefaultValue();
}

ZvLineType Concrete(ZvLineType type) {
    return type.IsIndexed() ? type : ZvLineType::Continuous();
}

ZvLineWidth Concrete(ZvLineWidth width) {
    return width.IsByLayer() || width.IsByBlock() || width.IsNull() ? ZvLineWidth::Thin() : width;
}

ZvBrush Concrete(const ZvBrush& brush) {
    if (brush.IsByLayer() || brush.IsByBlock() || brush.IsNull())
        return ZvBrush::Empty();
    return ZvBrush(Concrete(brush.GetColor()), brush.GetStyle());
}

} // namespace

template <class T>
void ZvLayer::Change(T& member, const T& value, bool visible) {
    if (member == value)
        return;
    member = value;
    if (visible)
        NotifyVisState();
    else
        IncModified();
}

void ZvLayer::SetColor(const ZvColor& color) {
    Change(m_color, Concrete(color), true);
}

void ZvLayer::SetLineType(ZvLineType type) {
    Change(m_lineType, Concrete(type), true);
}

void ZvLayer::SetLineWidth(ZvLineWidth width) {
    Change(m_lineWidth, Concrete(width), true);
}

void ZvLayer::SetBrush(const ZvBrush& brush) {
    Change(m_brush, Concrete(brush), true);
}

void ZvLayer::SetTextStyle(int index) {
    Change(m_textStyle, int32_t(index), true);
}

void ZvLayer::SetBlock(uint16_t index) {
    Change(m_block, int32_t(index), true);
}

ZvTextStyle* ZvLayer::GetTextStyleRecord() const {
    const ZvDrawing* drawing = GetParentDrawing();
    ZvTextStyleTable* styles = drawing ? drawing->TextStyleTable() : nullptr;
    if (!styles)
        return nullptr;
    ZvTextStyle* style = styles->Get(m_textStyle);
    return style ? style : styles->GetDefaultStyle();
}

ZvBlock* ZvLayer::GetBlockRecord() const {
    const ZvDrawing* drawing = GetParentDrawing();
    return drawing && drawing->BlockTable() ? drawing->BlockTable()->Get(m_block) : nullptr;
}

void ZvLayer::SetVisible(bool on) {
    Change(m_visible, on, true);
}

void ZvLayer::SetLocked(bool on) {
    Change(m_locked, on, false);
}

void ZvLayer::SetPrintable(bool on) {
    Change(m_printable, on, false);
}

void ZvLayer::SetPrintingForcedOff(bool on) {
    Change(m_printingForcedOff, on, false);
}

void ZvLayer::SetSnappable(bool on) {
    Change(m_snappable, on, false);
}

void ZvLayer::SetEditable(bool on) {
    Change(m_editable, on, false);
}

void ZvLayer::SetGroup(const XStringW& group) {
    Change(m_group, group, false);
}

void ZvLayer::SetStrata(int strata) {
    Change(m_strata, int32_t(strata), true);
}

void ZvLayer::SetVisFlags(uint32_t flags) {
    Change(m_visFlags, flags, true);
}

void ZvLayer::SetSysFlags(uint32_t flags) {
    Change(m_sysFlags, flags, false);
}

void ZvLayer::SetScaleRange(double minimum, double maximum) {
    m_minScale = minimum;
    m_maxScale = maximum;
    FieldsChanged();
    NotifyVisState();
}

void ZvLayer::SetTransparency(double value) {
    m_transparency = value;
    FieldsChanged();
    NotifyVisState();
}

void ZvLayer::SetDescription(const XStringW& text) {
    Change(m_description, text, false);
}

void ZvLayer::NotifyVisState() {
    IncModified();
    ZvDrawing* drawing = GetParentDrawing();
    if (drawing && !drawing->Destroying() && drawing->GetViewCount() > 0)
        drawing->Invalidate(m_tree->Bounds());
}

void ZvLayer::Fields(ZvRecordFields& visit) {
    visit.Field("Color", m_color);
    visit.Field("Brush", m_brush);
    visit.Field("LineType", m_lineType);
    visit.Field("LineWidth", m_lineWidth);
    visit.Field("TextStyle", m_textStyle);
    visit.Field("Block", m_block);
    visit.Field("Strata", m_strata);
    visit.Field("VisFlags", m_visFlags, ZvRecordFields::kHidden);
    visit.Field("SysFlags", m_sysFlags, ZvRecordFields::kHidden);
    visit.Field("Visible", m_visible);
    visit.Field("Locked", m_locked);
    visit.Field("Printable", m_printable);
    visit.Field("PrintingForcedOff", m_printingForcedOff);
    visit.Field("Snappable", m_snappable);
    visit.Field("Editable", m_editable);
    visit.Field("MinScale", m_minScale);
    visit.Field("MaxScale", m_maxScale);
    visit.Field("Transparency", m_transparency);
    visit.Field("Group", m_group, ZvRecordFields::kReadOnly);
    visit.Field("Description", m_description);
}

void ZvLayer::FieldsChanged() {
    const auto limit = [](double& value, double highest) {
        value = std::isfinite(value) ? std::clamp(value, 0.0, highest) : 0.0;
    };
    m_color = Concrete(m_color);
    m_brush = Concrete(m_brush);
    m_lineType = Concrete(m_lineType);
    m_lineWidth = Concrete(m_lineWidth);
    limit(m_minScale, kZvBoundsLimit);
    limit(m_maxScale, kZvBoundsLimit);
    limit(m_transparency, 1);
    if (m_block < 0 || m_block > kBlockNone)
        m_block = kBlockNone;
}

// --- references --------------------------------------------------------------------------------------------

void ZvLayer::TableUsage(ZvUsageTable& usage) const {
    m_lineType.RecordUse(usage);
    if (m_brush.IsTexture())
        usage.Use(ZvTableCode::Full(ZvTableCode::Texture), m_brush.GetTexture());
    if (m_textStyle >= 0)
        usage.Use(ZvTableCode::Full(ZvTableCode::TextStyle), m_textStyle);
    if (m_block != kBlockNone)
        usage.Use(ZvTableCode::Full(ZvTableCode::Block), m_block);
}

void ZvLayer::TableUpdate(ZvNativeDesc& desc) {
    if (m_lineType.IsIndexed())
        m_lineType = ZvLineType(
            desc.TranslateIndex(ZvTableCode::Full(ZvTableCode::LineType), m_lineType.GetIndex(), true));
    if (m_brush.IsTexture())
        m_brush.SetTexture(
            desc.TranslateIndex(ZvTableCode::Full(ZvTableCode::Texture), m_brush.GetTexture(), true));
    if (m_textStyle >= 0)
        m_textStyle = desc.TranslateIndex(ZvTableCode::Full(ZvTableCode::TextStyle), m_textStyle, true);
    if (m_block != kBlockNone) {
        const int block = desc.TranslateIndex(ZvTableCode::Full(ZvTableCode::Block), m_block, true);
        m_block = block < 0 ? kBlockNone : block;
    }
}

// --- files: the entities, then the attribute rows ----------------------------------------------------------

bool ZvLayer::ContentsOut(ZvNativeDesc& desc) const {
    dvect<ZvEntity*> inTreeOrder;
    m_tree->EnumAll(inTreeOrder, false);
    const std::vector<ZvEntity*> entities(inTreeOrder.begin(), inTreeOrder.end());
    desc.Native().WriteEntityChunks(entities);
    if (desc.File().Error() || desc.Native().IsAborted())
        return true;
    if (!m_attributes || m_attributes->IsEmpty())
        return !desc.WriteValue(uint8_t(0));
    const ZvEntityNameTable& names = desc.Drawing().NameTable();
    const auto saved = [&](ZvName name) {
        const ZvEntity* entity = names.GetQuiet(name);
        return entity && entity->GetLayer() == this && desc.Native().IsSaved(*entity);
    };
    return !desc.WriteValue(uint8_t(1)) || m_attributes->NativeOut(desc, saved);
}

bool ZvLayer::ContentsIn(ZvNativeDesc& desc, uint64_t end, ZvNameIntake& names) {
    std::vector<std::unique_ptr<ZvEntity>> owned;
    desc.Native().ReadEntityChunks(owned);
    std::vector<ZvEntity*> entities;
    entities.reserve(owned.size());
    for (std::unique_ptr<ZvEntity>& entity : owned)
        entities.push_back(entity.release());
    names.Take(entities);
    m_tree->InsertBulk(entities);

    uint8_t hasAttributes = 0;
    if (desc.Position() >= end || !desc.ReadValue(hasAttributes))
        return true;
    if (!hasAttributes)
        return false;
    const auto rows = std::make_shared<ZvAttributeTable>();
    const bool failed = rows->NativeIn(desc);
    names.WhenNamed([this, rows](const std::unordered_map<uint32_t, uint32_t>& newNames) {
        rows->RenameRows(newNames);
        if (m_attributes)
            m_attributes->Merge(*rows);
        else
            Attributes() = std::move(*rows);
    });
    return failed;
}

size_t ZvLayer::MemUsage() const {
    return ZvTableRecord::MemUsage() + m_tree->MemUsage() + (m_attributes ? m_attributes->MemUsage() : 0);
}

// --- swatch ------------------------------------------------------------------------------------------------

void ZvLayer::DrawUI(IZvSurface& surface, const Rect2I& box) const {
    const int side = std::min(box.Height(), box.Width());
    Rect2I swatch = box;
    swatch.right = swatch.left + side;
    m_color.DrawUI(surface, swatch);
    Rect2I text = box;
    text.left = swatch.right;
    ZvTableRecord::DrawUI(surface, text);
}
