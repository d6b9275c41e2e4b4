#include "Zelvan/Tables/ZvBlock.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/RenC/ZvRenderContext.h"
#include "Zelvan/Tables/ZvNameIntake.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/View/ZvViewXForm.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include <cmath>
#include <set>

ZvBlock::ZvBlock() : m_tree(std::make_unique<ZvBNode>()) {
    m_tree->SetContainer(this);
}

ZvBlock::~ZvBlock() = default;

std::unique_ptr<ZvTableRecord> ZvBlock::NewOfKind() const {
    return std::make_unique<ZvBlock>();
}

// --- entities ----------------------------------------------------------------------------------------------

ZvName ZvBlock::Adopt(std::unique_ptr<ZvEntity> entity) {
    if (!entity)
        return {};
    ZvEntity* adopted = entity.release();
    m_tree->Insert(adopted);
    ZvDrawing* drawing = GetParentDrawing();
    return drawing && IsInTable() ? drawing->NameTable().Add(adopted) : ZvName(adopted->Name32());
}

size_t ZvBlock::EntityCount() const {
    return m_tree->Count();
}

void ZvBlock::DropContents() {
    m_tree->DeleteAll();
}

ZvBounds3D ZvBlock::Bounds() const {
    return m_tree->Bounds();
}

void ZvBlock::TreeTouched(ZvEntity*) {
    IncModified();
}

void ZvBlock::OnInserted() {
    ZvDrawing* drawing = GetParentDrawing();
    if (!drawing)
        return;
    m_tree->SetHeap(&drawing->EntityHeap());
    m_tree->ForEach([drawing](ZvEntity* entity) { drawing->NameTable().Add(entity); });
}

void ZvBlock::OnRemoving() {
    DropContents();
}

bool ZvBlock::RefersTo(const ZvBlock& other) const {
    if (!GetTable())
        return false;
    std::set<int> seen;
    std::vector<const ZvBlock*> toVisit{this};
    const uint32_t code = GetFullCode();
    while (!toVisit.empty()) {
        ZvUsageTable usage;
        toVisit.back()->TableUsage(usage);
        toVisit.pop_back();
        for (int i = 0; i < GetTable()->Count(); ++i) {
            if (usage.Count(code, i) == 0 || !seen.insert(i).second)
                continue;
            if (i == other.GetTableIndex())
                return true;
            toVisit.push_back(static_cast<const ZvBlock*>(GetTable()->Get(i)));
        }
    }
    return false;
}

// --- values ------------------------------------------------------------------------------------------------

void ZvBlock::SetBasePoint(const Vec3d& point) {
    m_basePoint = point;
    FieldsChanged();
    IncModified();
}

void ZvBlock::SetDescription(const XStringW& text) {
    m_description = text;
    IncModified();
}

void ZvBlock::SetAnonymous(bool on) {
    m_anonymous = on;
    IncModified();
}

void ZvBlock::SetExplodable(bool on) {
    m_explodable = on;
    IncModified();
}

void ZvBlock::SetUnitScale(double scale) {
    m_unitScale = scale;
    FieldsChanged();
    IncModified();
}

void ZvBlock::Fields(ZvRecordFields& visit) {
    visit.Field("BasePoint", m_basePoint);
    visit.Field("Description", m_description);
    visit.Field("Anonymous", m_anonymous, ZvRecordFields::kReadOnly);
    visit.Field("Explodable", m_explodable);
    visit.Field("UnitScale", m_unitScale);
}

void ZvBlock::FieldsChanged() {
    if (!(m_unitScale > 0) || !std::isfinite(m_unitScale))
        m_unitScale = 1;
    if (!std::isfinite(m_basePoint.x) || !std::isfinite(m_basePoint.y) || !std::isfinite(m_basePoint.z))
        m_basePoint = {};
}

void ZvBlock::CopyContents(const ZvTableRecord& from) {
    if (from.GetFullCode() != GetFullCode())
        return;
    static_cast<const ZvBlock&>(from).m_tree->ForEach([this](const ZvEntity* entity) {
        if (!entity->IsErased())
            Adopt(entity->Clone());
    });
}

void ZvBlock::DrawUI(IZvSurface& surface, const Rect2I& box) const {
    constexpr double kMarginPixels = 2;
    if (m_tree->Bounds().IsNull() || box.IsEmpty()) {
        ZvTableRecord::DrawUI(surface, box);
        return;
    }
    Zelvan::ZvViewXForm view;
    view.SetWindowRect(box, false);
    view.FitPlan(m_tree->Bounds().ToBounds2D(), kMarginPixels);
    ZvRenderContext context(ZvRenderMode::Raster, surface, view, GetParentDrawing());
    context.EnterLayer(nullptr);
    surface.PushClip(box);
    m_tree->Draw(context);
    context.Flush();
    surface.PopClip();
}

// --- references --------------------------------------------------------------------------------------------

void ZvBlock::TableUsage(ZvUsageTable& usage) const {
    m_tree->ForEach([&](const ZvEntity* entity) {
        if (!entity->IsErased())
            entity->TableUsage(usage);
    });
}

void ZvBlock::TableUpdate(ZvNativeDesc& desc) {
    m_tree->ForEach([&](ZvEntity* entity) { entity->TableUpdate(desc); });
}

// --- files: the entities -----------------------------------------------------------------------------------

bool ZvBlock::ContentsOut(ZvNativeDesc& desc) const {
    dvect<ZvEntity*> inTreeOrder;
    m_tree->EnumAll(inTreeOrder, false);
    desc.Native().WriteEntityChunks({inTreeOrder.begin(), inTreeOrder.end()});
    return desc.File().Error() || desc.Native().IsAborted();
}

bool ZvBlock::ContentsIn(ZvNativeDesc& desc, uint64_t, ZvNameIntake& names) {
    std::vector<std::unique_ptr<ZvEntity>> owned;
    desc.Native().ReadEntityChunks(owned);
    std::vector<ZvEntity*> entities;
    entities.reserve(owned.size());
    for (std::unique_ptr<ZvEntity>& entity : owned)
        entities.push_back(entity.release());
    names.Take(entities);
    m_tree->InsertBulk(entities);
    m_tree->ForEach([](ZvEntity* entity) { entity->PostBlockLoadCleanup(); });
    return false;
}
