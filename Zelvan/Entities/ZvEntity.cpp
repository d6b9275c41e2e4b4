// Identity, flags, owner, appearance and selection.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/DrawingAux/ZvTemporaryData.h"
#include "Zelvan/RenC/ZvRenderContext.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/SlabPool.h"
#include "ZvCore/ZvErrors.h"

namespace {

int g_selectionSilence = 0; // SuppressSelectionNotifications: calls on minus calls off

struct FlagPair {
    ZvEntity::Flag internal;
    uint32_t external;
};
constexpr FlagPair kPublicFlags[] = {
    {ZvEntity::kReactable, ZvEntity::kPubReactable},   {ZvEntity::kSelectable, ZvEntity::kPubSelectable},
    {ZvEntity::kVisible, ZvEntity::kPubVisible},       {ZvEntity::kErased, ZvEntity::kPubErased},
    {ZvEntity::kAssociated, ZvEntity::kPubAssociated}, {ZvEntity::kSubscriber, ZvEntity::kPubSubscriber},
    {ZvEntity::kLineCap1, ZvEntity::kPubLineCap1},     {ZvEntity::kLineCap2, ZvEntity::kPubLineCap2},
};

} // namespace

static_assert(sizeof(void*) != 8 || sizeof(ZvEntity) == 32, "drawings hold millions of entities");

ZvEntity::ZvEntity() = default;

ZvEntity::~ZvEntity() {
    m_name = 0;
}

void* ZvEntity::operator new(size_t bytes) {
    return SlabPool::Alloc(bytes);
}

void ZvEntity::operator delete(void* object, size_t bytes) {
    SlabPool::Free(object, bytes);
}

// --- flags -------------------------------------------------------------------------------------------------------------------

uint32_t ZvEntity::GetFlags() const {
    uint32_t flags = 0;
    for (const FlagPair& pair : kPublicFlags)
        if (Has(pair.internal))
            flags |= pair.external;
    return flags;
}

void ZvEntity::SetFlags(uint32_t publicFlags) {
    uint16_t flags = m_flags;
    for (const FlagPair& pair : kPublicFlags)
        flags = uint16_t(publicFlags & pair.external ? flags | pair.internal : flags & ~pair.internal);
    ApplyFlags(flags);
}

void ZvEntity::ApplyFlags(uint16_t flags) {
    const uint16_t changed = m_flags ^ flags;
    m_flags = flags;
    if (!m_owner)
        return;
    if (changed & kErased)
        m_owner->OwnerEntityErased(this, IsErased());
    if (changed & kVisible)
        m_owner->OwnerVisibilityChanged(this);
    if (changed & (kLineCap1 | kLineCap2))
        m_owner->OwnerLineCapChanged(this);
}

bool ZvEntity::SetErased(bool on) {
    const bool was = IsErased();
    ApplyFlags(uint16_t(on ? m_flags | kErased : m_flags & ~kErased));
    return was;
}

void ZvEntity::SetVisible(bool on) {
    ApplyFlags(uint16_t(on ? m_flags | kVisible : m_flags & ~kVisible));
}

void ZvEntity::SetLineCap(int cap) {
    const int bits = cap == 1 ? kLineCap1 : cap == 2 ? kLineCap2 : 0;
    ApplyFlags(uint16_t((m_flags & ~(kLineCap1 | kLineCap2)) | bits));
}

// --- owner -------------------------------------------------------------------------------------------------------------------

ZvBNode* ZvEntity::ParentBlockLeaf() const {
    return m_owner ? m_owner->OwnerNode() : nullptr;
}

ZvBNode* ZvEntity::ParentBlockRoot() const {
    ZvBNode* leaf = ParentBlockLeaf();
    return leaf ? leaf->RootBlock() : nullptr;
}

XStringW ZvEntity::GetLayerName() const {
    const ZvLayer* layer = GetLayer();
    return layer ? layer->GetName() : XStringW();
}

bool ZvEntity::MoveToLayer(ZvLayer* layer) {
    ZvLayer* former = GetLayer();
    if (!layer || !IsInDrawing() || layer == former || layer->GetParentDrawing() != ParentDrawing())
        return false;
    if (!m_owner->OwnerRemove(this) || !layer->Tree().Insert(this))
        return false;
    if (former)
        layer->MoveAttributes(Name(), *former);
    return true;
}

bool ZvEntity::RemoveAndDelete() {
    if (!m_owner) {
        ZvErrors::Fatal(ZvStrings::Get(ZvStr::EntityNotInDrawing));
        return false;
    }
    return m_owner->OwnerRemoveAndDelete(this);
}

void ZvEntity::Touch() {
    if (m_owner)
        m_owner->OwnerEntityChanged(this);
}

// --- appearance --------------------------------------------------------------------------------------------------------------

void ZvEntity::SetColor(const ZvColor& color) {
    m_colorValue = color.NativeRGB();
    m_colorIndex = int16_t(color.GetIndex());
    Touch();
}

ZvColor ZvEntity::ResolvedColor() const {
    const ZvColor own = GetColor();
    const ZvLayer* layer = own.IsByLayer() && IsInDrawing() ? GetLayer() : nullptr;
    return layer ? layer->GetColor() : own;
}

void ZvEntity::CloneFrom(const ZvEntity& other) {
    if (this == &other)
        return;
    m_colorValue = other.m_colorValue;
    m_colorIndex = other.m_colorIndex;
    constexpr int kOwn = kOnGCHeap | kSwappedOrphan;
    ApplyFlags(uint16_t((other.m_flags & ~kOwn) | (m_flags & kOwn)));
}

bool ZvEntity::IsAppearanceEqual(const ZvEntity& other) const {
    return GetColor() == other.GetColor();
}

void ZvEntity::CloneAppearanceFrom(const ZvEntity& other) {
    SetColor(other.GetColor());
}

// --- selection ---------------------------------------------------------------------------------------------------------------

bool ZvEntity::IsSelected() const {
    const ZvDrawing* drawing = m_name ? ParentDrawing() : nullptr;
    return drawing && drawing->NameTable().IsSelected(m_name);
}

void ZvEntity::SetSelected(bool on) {
    if (!IsSelectable() || !m_name || !IsInDrawing())
        return;
    ParentDrawing()->NameTable().SetSelected(m_name, on);
    if (g_selectionSilence <= 0)
        m_owner->OwnerSelectionChanged(this, on);
}

void ZvEntity::SuppressSelectionNotifications(bool on) {
    g_selectionSilence += on ? 1 : -1;
}

// --- drawing -----------------------------------------------------------------------------------------------------------------

ZvDrawResult ZvEntity::Draw(ZvRenderContext& context) const {
    switch (context.Mode()) {
    case ZvRenderMode::Pdf:
        DrawPdf(context);
        return ZvDrawResult::Drawn;
    case ZvRenderMode::Raster:
        context.Batch(this);
        return ZvDrawResult::Drawn;
    case ZvRenderMode::Gdi:
        DrawGDI(context);
        return ZvDrawResult::Drawn;
    default:
        return ZvDrawResult::NoMode;
    }
}

ZvDrawResult ZvEntity::DrawInteractive(ZvRenderContext& context) const {
    context.Flush();
    if (context.Mode() != ZvRenderMode::Raster)
        return Draw(context);
    DrawRast(context);
    return ZvDrawResult::Drawn;
}

ZvEntity* ZvEntity::CloneForTempDraw() const {
    ZvDrawing* drawing = IsInDrawing() ? ParentDrawing() : nullptr;
    return drawing && drawing->TemporaryData() ? drawing->TemporaryData()->Add(Clone()) : nullptr;
}

bool ZvEntity::IsGeometryEqual(const ZvEntity& other, const ZvGeometryCompare& parameters) const {
    return GetFullCode() == other.GetFullCode() && IsGeometryEqual_Internal(other, parameters);
}
