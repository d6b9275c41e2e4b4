// What the virtual operations do for kinds that do not replace them, geometry and files apart.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/XString.h"
#include <cmath>

// --- storage -----------------------------------------------------------------------------------------------------------------

void ZvEntity::Repack(bool) {}
void ZvEntity::GC_Mark(ZvHeapMarks&) const {}
void ZvEntity::DeserializeHard() {}
size_t ZvEntity::MemUsage() const {
    return SizeOf();
}

// --- bounds ------------------------------------------------------------------------------------------------------------------

ZvBounds2D ZvEntity::Bounds2D(const ZvScaleSetup& scale) const {
    return Bounds3D(scale).ToBounds2D();
}
ZvBounds3D ZvEntity::Bounds3D(const ZvScaleSetup&) const {
    return Bounds3D();
}
bool ZvEntity::IsViewScaleDependent() const {
    return false;
}
Vec4d ZvEntity::ObjectPlane() const {
    return {0, 0, 1, 0};
}
void ZvEntity::RecalcBounds() {
    if (m_owner)
        m_owner->OwnerBoundsChanged(this);
}

// --- drawing -----------------------------------------------------------------------------------------------------------------

void ZvEntity::DrawGDI(ZvRenderContext&) const {}
void ZvEntity::DrawRast(ZvRenderContext&) const {}
void ZvEntity::DrawRast(ZvRenderContext& context, const ZvEntity* const* batch, size_t count) const {
    for (size_t i = 0; i < count; ++i)
        batch[i]->DrawRast(context);
}
void ZvEntity::DrawHeatmap(ZvRenderContext&) const {}
void ZvEntity::DrawPdf(ZvRenderContext&) const {}

// --- hooks -------------------------------------------------------------------------------------------------------------------

bool ZvEntity::IsUntouchable() const {
    return false;
}
void ZvEntity::PreviewAssociateModification() {}
void ZvEntity::SetUserVisibleName(const XStringW&) {}
void ZvEntity::Notify(ZvName, int) {}
void ZvEntity::AssociatesModified() {}
void ZvEntity::PostDrawingLoadCleanup() {}
void ZvEntity::NotifyDrawingCoordinateSystemChanged() {}
void ZvEntity::PostBlockLoadCleanup() {}
void ZvEntity::UntouchableDelayLoad() {}
void ZvEntity::Finalize() {}
bool ZvEntity::IsHeavyWeight() const {
    return false;
}
bool ZvEntity::UntouchableGetChecksum(uint64_t&) const {
    return false;
}
XStringW ZvEntity::GetUserVisibleName() const {
    return VerbalName();
}

// --- properties --------------------------------------------------------------------------------------------------------------

void ZvEntity::GetProperties(ZvPropertyGatherer& gatherer, bool) const {
    const bool writable = IsPropertyWritable();
    gatherer.Add("Color", ZvStrings::GetW(ZvStr::PropertyColor), GetColor().ToString(), writable);
    gatherer.Add("Layer", ZvStrings::GetW(ZvStr::PropertyLayer), GetLayerName(), writable);
}

void ZvEntity::SetProperties(ZvPropertySetter& setter) {
    if (const XStringW* text = setter.TakeText("Color")) {
        ZvColor color;
        if (color.Parse(*text))
            SetColor(color);
        else
            setter.RefuseText("Color", *text);
    }
    if (const XStringW* name = setter.TakeText("Layer")) {
        const ZvDrawing* drawing = ParentDrawing();
        ZvLayer* layer = drawing ? static_cast<ZvLayer*>(drawing->LayerTable()->GetByName(*name)) : nullptr;
        if (!drawing)
            setter.Refuse("Layer", ZvStrings::Get(ZvStr::EntityNotInDrawing));
        else if (!layer)
            setter.Refuse(
                "Layer",
                XStringA::Format(ZvStrings::Get(ZvStr::PropertyNoSuchLayer), name->ToUtf8().c_str()).Str());
        else
            MoveToLayer(layer);
    }
}

bool ZvEntity::IsPropertyWritable() const {
    const ZvLayer* layer = GetLayer();
    return layer && !layer->IsLocked();
}

ZvEntityEditor* ZvEntity::GetEditor() {
    return nullptr;
}
void ZvEntity::MakeUnique(const ZvPropertyGatherer&) {}

void ZvEntity::Query(ZvQueryResults& results) const {
    const auto add = [&](ZvStr::Id label, XStringW text) {
        results.lines.emplace_back(ZvStrings::GetW(label), std::move(text));
    };
    add(ZvStr::PropertyKind, VerbalName());
    add(ZvStr::PropertyName, Name().ToString());
    add(ZvStr::PropertyColor, GetColor().GetTextDesc());
    if (GetLayer())
        add(ZvStr::PropertyLayer, GetLayerName());
    const ZvBounds2D b = Bounds2D();
    if (!b.IsNull())
        add(ZvStr::PropertyExtent,
            XStringW::Format("%.10g, %.10g - %.10g, %.10g", b.minX, b.minY, b.maxX, b.maxY));
}

// --- kinds and tables --------------------------------------------------------------------------------------------------------

ZvEntityList ZvEntity::Explode() const {
    return {};
}
void ZvEntity::GetCloneTargets(std::vector<uint32_t>&) const {}
std::unique_ptr<ZvEntity> ZvEntity::CloneAs(uint32_t fullCode) const {
    return fullCode == GetFullCode() ? Clone() : nullptr;
}
void ZvEntity::TableUpdate(ZvNativeDesc&) {}
void ZvEntity::TableUsage(ZvUsageTable& usage) const {
    if (const int layer = GetLayerIndex(); layer >= 0)
        usage.Use(ZvTableCode::Full(ZvTableCode::Layer), layer);
}

bool ZvEntity::IsLineEntity() const {
    return false;
}
ZvLineEntity* ZvEntity::ToLineEntity() {
    return nullptr;
}
bool ZvEntity::IsFilledEntity() const {
    return false;
}
ZvFilledEntity* ZvEntity::ToFilledEntity() {
    return nullptr;
}
bool ZvEntity::IsPointEnt() const {
    return false;
}
ZvPointEnt* ZvEntity::ToPointEnt() {
    return nullptr;
}
bool ZvEntity::IsCircle() const {
    return false;
}
ZvCircle* ZvEntity::ToCircle() {
    return nullptr;
}
bool ZvEntity::IsArc() const {
    return false;
}
bool ZvEntity::IsInsert() const {
    return false;
}
ZvInsert* ZvEntity::ToInsert() {
    return nullptr;
}
bool ZvEntity::IsXLine() const {
    return false;
}
ZvXLine* ZvEntity::ToXLine() {
    return nullptr;
}
bool ZvEntity::IsMultiPoint() const {
    return false;
}
ZvMultiPoint* ZvEntity::ToMultiPoint() {
    return nullptr;
}
bool ZvEntity::IsBitmap() const {
    return false;
}
ZvBitmap* ZvEntity::ToBitmap() {
    return nullptr;
}
bool ZvEntity::IsArrow() const {
    return false;
}
ZvArrow* ZvEntity::ToArrow() {
    return nullptr;
}
bool ZvEntity::IsRectangle() const {
    return false;
}
ZvRectangle* ZvEntity::ToRectangle() {
    return nullptr;
}
bool ZvEntity::IsText() const {
    return false;
}
ZvText* ZvEntity::ToText() {
    return nullptr;
}

// --- snaps, menus, grips -----------------------------------------------------------------------------------------------------

void ZvEntity::GetSnapsVertices(const ZvBounds2D&, ZvSnaps&) const {}
void ZvEntity::GetSnapsEdge(const Vec3d&, double, ZvSnaps&) const {}
void ZvEntity::GetSnapsCenter(const ZvBounds2D&, ZvSnaps&) const {}
void ZvEntity::GetSnapsMidPoint(const ZvBounds2D&, ZvSnaps&) const {}
void ZvEntity::GetSnapsInsertPoint(const ZvBounds2D&, ZvSnaps&) const {}
void ZvEntity::GetSnapsTangent(const Vec3d&, const ZvBounds2D&, ZvSnaps&) const {}
void ZvEntity::GetSnapsPerp(const Vec3d&, const ZvBounds2D&, ZvSnaps&) const {}
void ZvEntity::GetContextMenu(ZvMenu&) const {}
bool ZvEntity::OnContextMenuClick(const Vec3d&, int, ZvSelection*) {
    return false;
}
void ZvEntity::OnDoubleClick(const Vec3d&) {}
void ZvEntity::GetGrips(ZvGrips&) const {}
std::unique_ptr<ZvEntity> ZvEntity::PreviewGripChange(int gripId, const Vec3d& to) const {
    std::unique_ptr<ZvEntity> moved = Clone();
    return moved && moved->UpdateByGrip(gripId, to) ? std::move(moved) : nullptr;
}
bool ZvEntity::UpdateByGrip(int, const Vec3d&) {
    return false;
}
bool ZvEntity::AllowSingleClickSelectInside() const {
    return false;
}
bool ZvEntity::OkForInsertion(XStringW* reason) const {
    const ZvBounds3D b = Bounds3D();
    const double sum = b.minX + b.minY + b.minZ + b.maxX + b.maxY + b.maxZ;
    if (std::isfinite(sum))
        return true;
    if (reason)
        *reason = ZvStrings::GetW(ZvStr::InvalidGeometry);
    return false;
}

// --- linear and point-like kinds ---------------------------------------------------------------------------------------------

bool ZvEntity::IsLogicalPoint() const {
    return false;
}
bool ZvEntity::GetLogicalPoint(Vec4d&) const {
    return false;
}
bool ZvEntity::SetLogicalPoint(const Vec4d&) {
    return false;
}
bool ZvEntity::IsLineVectorEntity(int*, int*, bool*) const {
    return false;
}
void ZvEntity::LineVectorGetVertices(dvect<Vec4d>& vertices) const {
    vertices.clear();
}
int ZvEntity::LineVectorGetVertexCount() const {
    return 0;
}
bool ZvEntity::LineVectorSetVertices(const dvect<Vec4d>&) {
    return false;
}
bool ZvEntity::IsMLVEntity() const {
    return false;
}
int ZvEntity::MLVGetPartCount() const {
    return 0;
}
int ZvEntity::MLVGetVertexCount() const {
    return 0;
}
bool ZvEntity::MLVGetPart(int, dvect<Vec4d>&, bool*) const {
    return false;
}
int ZvEntity::MLVGetPartInfo(int, bool*, int*) const {
    return -1;
}
int ZvEntity::MLVGetPartParent(int) const {
    return -1;
}
void ZvEntity::MLVGetLinearVertices(dvect<Vec4d>& vertices) const {
    LineVectorGetVertices(vertices);
}
bool ZvEntity::MLVSetLinearVertices(const dvect<Vec4d>& vertices) {
    return LineVectorSetVertices(vertices);
}
bool ZvEntity::MLVAddPart(const dvect<Vec4d>&, bool) {
    return false;
}
bool ZvEntity::MLVDeletePart(int) {
    return false;
}
bool ZvEntity::MLVSetPart(int, const dvect<Vec4d>&, bool) {
    return false;
}
bool ZvEntity::MLVSetParts(const std::vector<dvect<Vec4d>>&, const std::vector<bool>&) {
    return false;
}
double ZvEntity::GetArea() const {
    return 0;
}
double ZvEntity::GetCircumference() const {
    return 0;
}
