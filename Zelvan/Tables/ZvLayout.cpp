#include "Zelvan/Tables/ZvLayout.h"
#include "Zelvan/DrawingAux/ZvMergeHelper.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/Tables/ZvNameIntake.h"
#include "Zelvan/Tables/ZvPaperTable.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvTableTable.h"

ZvLayout::ZvLayout() : m_drawingGuid(Guid::New()) {}

ZvLayout::~ZvLayout() = default;

std::unique_ptr<ZvTableRecord> ZvLayout::NewOfKind() const {
    return std::make_unique<ZvLayout>();
}

void ZvLayout::OnInserted() {
    ZvDrawing* parent = GetParentDrawing();
    if (!parent || m_drawing)
        return;
    m_drawing = std::make_unique<ZvDrawing>(*parent, true, true, m_drawingGuid);
    m_drawing->SetParentLayoutRecord(this);
}

void ZvLayout::OnRemoving() {
    ZvDrawing* parent = GetParentDrawing();
    if (parent && m_drawing && !parent->Destroying() && GetTable()->IsRecordInTable(this))
        parent->Verbs()->PurgeUndoForLayout(*m_drawing);
    m_drawing.reset();
}

ZvPaperPage* ZvLayout::GetPage() const {
    return m_drawing && m_drawing->PaperTable() ? m_drawing->PaperTable()->Get(0) : nullptr;
}

void ZvLayout::EnsureSinglePage() {
    ZvPaperTable* pages = m_drawing ? m_drawing->PaperTable() : nullptr;
    if (!pages)
        return;
    pages->CreateDefaults();
    while (pages->Count() > 1 && pages->DeleteRecord(pages->Count() - 1)) {}
    pages->Get(0)->SetBelongsToLayout(true);
}

void ZvLayout::SetOrder(int order) {
    m_order = order;
    IncModified();
}

void ZvLayout::SetDescription(const XStringW& text) {
    m_description = text;
    IncModified();
}

void ZvLayout::Fields(ZvRecordFields& visit) {
    visit.Field("DrawingGuid", m_drawingGuid);
    visit.Field("Order", m_order);
    visit.Field("Description", m_description);
}

/// Indices into borrowed tables stay the source's here; TableUpdate translates them.
void ZvLayout::CopyContents(const ZvTableRecord& from) {
    if (from.GetFullCode() != GetFullCode() || !m_drawing || !static_cast<const ZvLayout&>(from).m_drawing)
        return;
    ZvMergeProfile takeAll;
    takeAll.general.guidConflict = takeAll.general.nameConflict = ZvMergeFate::Replace;
    m_drawing->MergeHelper()->Merge(*static_cast<const ZvLayout&>(from).m_drawing, takeAll);
}

void ZvLayout::DropContents() {
    if (m_drawing)
        m_drawing->Reset();
}

void ZvLayout::TableUsage(ZvUsageTable& usage) const {
    if (m_drawing)
        m_drawing->GatherUsageInfo(usage);
}

void ZvLayout::TableUpdate(ZvNativeDesc& desc) {
    if (!m_drawing)
        return;
    m_drawing->Verbs()->PurgeUndo(); // as in the drawing whose tables it borrows
    m_drawing->TableUpdate(desc);
}

// --- files: the tables section of the child drawing --------------------------------------------------------

bool ZvLayout::ContentsOut(ZvNativeDesc& desc) const {
    if (!m_drawing)
        return true;
    const ZvNativeFile::DrawingScope child(desc.Native(), *m_drawing);
    return !Zv::Ok(m_drawing->TableTable()->NativeOut(desc.Native().Desc()));
}

bool ZvLayout::ContentsIn(ZvNativeDesc& desc, uint64_t, ZvNameIntake&) {
    ZvDrawing* parent = GetParentDrawing();
    if (!m_drawing || !parent)
        return true;
    const ZvNativeFile::DrawingScope child(desc.Native(), *m_drawing);
    parent->TableTable()->CloneProxiedIndexMaps(desc, desc.Native().Desc());
    return !Zv::Ok(m_drawing->TableTable()->NativeIn(desc.Native().Desc()));
}
