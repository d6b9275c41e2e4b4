#include "Zelvan/Verbs/ZvVAggregate.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>

ZvVAggregate::~ZvVAggregate() = default;

void ZvVAggregate::Add(std::unique_ptr<ZvVerb> verb) {
    if (verb)
        m_children.push_back(std::move(verb));
}

void ZvVAggregate::GetVerbsByOp(Kind kind, std::vector<ZvVerb*>& verbs) const {
    for (const auto& child : m_children) {
        if (child->GetKind() == kind)
            verbs.push_back(child.get());
        if (const auto* inner = dynamic_cast<const ZvVAggregate*>(child.get()))
            inner->GetVerbsByOp(kind, verbs);
    }
}

// --- do, undo, redo ---------------------------------------------------------------------------------------

bool ZvVAggregate::Accepts(const ZvDrawing&) const {
    return false;
}

void ZvVAggregate::VerifySanity() {
    std::erase_if(m_children, [this](const std::unique_ptr<ZvVerb>& child) {
        if (child->MayWorkIn(child->Drawing()) &&
            (child->Drawing() == Drawing() || (child->Drawing() && Accepts(*child->Drawing()))))
            return false;
        ZvErrors::Fatal("ZvVAggregate.VerifySanity: a verb of another drawing");
        return true;
    });
}

void ZvVAggregate::Do() {
    VerifySanity();
    SetSequence(Sequence());
    for (m_done = 0; m_done < m_children.size();)
        m_children[m_done++]->Do();
    UpdateLayersUsed();
    if (std::any_of(m_children.begin(), m_children.end(),
                    [](const auto& child) { return child->IsUndoRequested(); }))
        RequestUndo();
}

void ZvVAggregate::Undo() {
    while (m_done > 0)
        m_children[--m_done]->Undo();
}

bool ZvVAggregate::Redo() {
    for (m_done = 0; m_done < m_children.size();) {
        ZvVerb& child = *m_children[m_done++];
        if (child.IsRedoable() && child.Redo())
            continue;
        --m_done; // it has left everything as it was
        Undo();
        RestoreSelection();
        return false;
    }
    return true;
}

bool ZvVAggregate::IsUndoable(bool* quiet) const {
    return std::all_of(m_children.begin(), m_children.end(),
                       [quiet](const auto& child) { return child->IsUndoable(quiet); }) &&
           ZvVerb::IsUndoable(quiet);
}

bool ZvVAggregate::IsRedoable() const {
    return std::all_of(m_children.begin(), m_children.end(),
                       [](const auto& child) { return child->IsRedoable(); });
}

void ZvVAggregate::RestoreSelection() {
    for (auto child = m_children.rbegin(); child != m_children.rend(); ++child)
        (*child)->RestoreSelection();
}

void ZvVAggregate::FlushDone() {
    for (const auto& child : m_children)
        child->FlushDone();
}

void ZvVAggregate::FlushNeverDone() {
    for (auto child = m_children.rbegin(); child != m_children.rend(); ++child)
        (*child)->FlushNeverDone();
}

// --- what the children answer together --------------------------------------------------------------------

ZvBounds3D ZvVAggregate::GetBounds(const ZvScaleSetup* scale) const {
    ZvBounds3D bounds = ZvVerb::GetBounds(scale);
    for (const auto& child : m_children) {
        child->Entities().RecalcBounds();
        bounds.ExpandToFit(child->GetBounds(scale));
    }
    return bounds;
}

bool ZvVAggregate::MustPaint() const {
    return std::any_of(m_children.begin(), m_children.end(),
                       [](const auto& child) { return child->MustPaint(); });
}

XStringW ZvVAggregate::DefaultName() const {
    return m_children.size() == 1 ? m_children[0]->GetName() : ZvStrings::GetW(ZvStr::VerbSeveral);
}

size_t ZvVAggregate::MemUsage() const {
    size_t bytes =
        ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) + m_children.capacity() * sizeof(m_children[0]);
    for (const auto& child : m_children)
        bytes += child->MemUsage();
    return bytes;
}

bool ZvVAggregate::ChangesDrawing() const {
    return std::any_of(m_children.begin(), m_children.end(),
                       [](const auto& child) { return child->ChangesDrawing(); });
}

bool ZvVAggregate::IsNullOp() const {
    return Entities().IsEmpty() && std::all_of(m_children.begin(), m_children.end(),
                                               [](const auto& child) { return child->IsNullOp(); });
}

XStringW ZvVAggregate::Refusal() const {
    XStringW why;
    for (const auto& child : m_children)
        if (const XStringW one = child->Refusal(); !one.IsEmpty())
            why += why.IsEmpty() ? one : u" " + one;
    return why;
}

bool ZvVAggregate::IsExemptFromBudget() const {
    return !m_children.empty() && std::all_of(m_children.begin(), m_children.end(),
                                              [](const auto& child) { return child->IsExemptFromBudget(); });
}

void ZvVAggregate::UpdateLayersUsed() {
    ZvVerb::UpdateLayersUsed();
    for (const auto& child : m_children)
        child->UpdateLayersUsed();
}

bool ZvVAggregate::UsesLayers(const std::set<ZvLayer*>& layers) const {
    return ZvVerb::UsesLayers(layers) ||
           std::any_of(m_children.begin(), m_children.end(),
                       [&](const auto& child) { return child->UsesLayers(layers); });
}

bool ZvVAggregate::WorksOn(const ZvDrawing& drawing) const {
    return ZvVerb::WorksOn(drawing) ||
           std::any_of(m_children.begin(), m_children.end(),
                       [&](const auto& child) { return child->WorksOn(drawing); });
}

void ZvVAggregate::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    for (const auto& child : m_children)
        if (child->Drawing() == Drawing())
            child->RemoveFromSet(leaving);
}

bool ZvVAggregate::UsesEntities(const std::set<uint32_t>& names) const {
    return ZvVerb::UsesEntities(names) ||
           std::any_of(m_children.begin(), m_children.end(), [&](const auto& child) {
               return child->Drawing() == Drawing() && child->UsesEntities(names);
           });
}

void ZvVAggregate::CollectEntities(std::set<uint32_t>& names) const {
    ZvVerb::CollectEntities(names);
    for (const auto& child : m_children)
        if (child->Drawing() == Drawing())
            child->CollectEntities(names);
}

void ZvVAggregate::SetParent(ZvDrawing* drawing) {
    ZvVerb::SetParent(drawing);
    for (const auto& child : m_children)
        if (!child->Drawing())
            child->SetParent(drawing);
}

void ZvVAggregate::SetSequence(int sequence) {
    ZvVerb::SetSequence(sequence);
    for (const auto& child : m_children)
        child->SetSequence(sequence);
}
