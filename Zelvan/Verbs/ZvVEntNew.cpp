#include "Zelvan/Verbs/ZvVEntNew.h"
#include "Zelvan/Entities/ZvFilledEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"

namespace {

bool IsFullyTransparent(const ZvColor& color) {
    return color.IsRGBA() && (color.GetRGBA() >> 24) == 0;
}

bool CannotBeSeen(ZvEntity& entity) {
    if (!IsFullyTransparent(entity.ResolvedColor()))
        return false;
    const ZvFilledEntity* filled = entity.IsFilledEntity() ? entity.ToFilledEntity() : nullptr;
    const ZvBrush brush = filled ? filled->ResolvedBrush() : ZvBrush::Empty();
    return brush == ZvBrush::Empty() || IsFullyTransparent(brush.GetColor());
}

} // namespace

ZvVEntNew::ZvVEntNew(ZvDrawing* drawing) : ZvVerb(drawing) {}

ZvVEntNew::~ZvVEntNew() = default;

bool ZvVEntNew::Add(const ZvEntity* entity) {
    return AcceptsEntity(entity) && Entities().Insert(entity);
}

void ZvVEntNew::Add(std::unique_ptr<ZvEntity> entity, const XStringW& layerName) {
    if (entity)
        m_waiting.push_back({std::move(entity), layerName});
}

void ZvVEntNew::DropWaiting(size_t index) {
    m_waiting.erase(m_waiting.begin() + ptrdiff_t(index));
}

XStringW ZvVEntNew::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbCreate);
}

size_t ZvVEntNew::MemUsage() const {
    return ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) + m_waiting.capacity() * sizeof(Waiting) +
           m_erasedBytes;
}

bool ZvVEntNew::IsNullOp() const {
    return m_waiting.empty() && Entities().IsEmpty();
}

/// False when one found no layer.
bool ZvVEntNew::InsertWaiting() {
    bool all = true;
    for (Waiting& waiting : m_waiting)
        all = Entities().Insert(Drawing()->Insert(std::move(waiting.entity), waiting.layerName)) && all;
    m_waiting.clear();
    return all;
}

void ZvVEntNew::Do() {
    if (!InsertWaiting())
        Refuse(ZvStrings::GetW(ZvStr::RefusedNoLayer), Entities().IsEmpty());
    LeaveOutGone("ZvVEntNew.Do");
    GiveMeta();
    if (Drawing()->Host())
        ShowNotes();
}

void ZvVEntNew::ShowNotes() const {
    int hidden = 0;
    for (int i = 0; i < Entities().Count(); ++i)
        if (const ZvEntity* entity = Entities().GetEntityQuietNoCheck(i))
            hidden += entity->GetLayer() && !entity->GetLayer()->IsVisible();
    if (hidden)
        Drawing()->Prompt(XStringW::Format(ZvStrings::Get(ZvStr::CreatedOnHiddenLayers), hidden));
    ZvEntity* created = Entities().Count() == 1 ? Entities().GetEntityQuietNoCheck(0) : nullptr;
    if (created && CannotBeSeen(*created))
        Drawing()->Prompt(ZvStrings::GetW(ZvStr::CreatedTransparent));
}

void ZvVEntNew::Undo() {
    TakeBackMeta();
    LeaveSelection(Entities(), false);
    m_erasedBytes = SetErased(Entities().Names(), true, "ZvVEntNew.Undo");
}

bool ZvVEntNew::Redo() {
    if (!AllExist(Entities().Names(), "ZvVEntNew.Redo"))
        return false;
    SetErased(Entities().Names(), false, "ZvVEntNew.Redo");
    m_erasedBytes = 0;
    GiveMeta();
    return true;
}

void ZvVEntNew::FlushNeverDone() {
    ManageEntityDeletion(Entities().Names());
}

void ZvVEntNew::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    if (m_erasedBytes)
        m_erasedBytes = MemUsageOf(Entities());
}
