#include "Zelvan/Verbs/ZvVEntTiny.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>
#include <bit>
#include <map>

bool ZvVEntTiny::Collect(const ZvSelection& entities) {
    constexpr int kBetweenSteps = 4096;
    if (!entities.IsEmpty() && entities.ParentDrawing() != Drawing()) {
        ZvErrors::Fatal("ZvVEntTiny.Collect: entities of another drawing");
        return false;
    }
    IZvHost* host = Drawing()->Host();
    const std::unique_ptr<ZvCore::IProgress> progress =
        host ? host->StartProgress(ZvStrings::GetW(ZvStr::CollectingObjects)) : nullptr;
    const std::string what = ZvStrings::GetW(ZvStr::CollectingObjects).ToUtf8();
    std::map<ZvEntityState, uint32_t> known;
    ZvSelection taken(Drawing());
    taken.BeginUniqueInsertion();
    m_states.clear();
    m_stateOf.clear();
    for (int i = 0; i < entities.Count(); ++i) {
        if (progress && i % kBetweenSteps == 0 &&
            !progress->Step(what, uint64_t(i), uint64_t(entities.Count()))) {
            m_states.clear();
            m_stateOf.clear();
            Entities().Clear();
            return false;
        }
        const ZvEntity* entity = entities.GetEntityQuiet(i);
        if (!entity)
            continue;
        const auto [state, isNew] = known.try_emplace(ZvEntityState::Of(*entity), uint32_t(m_states.size()));
        if (isNew)
            m_states.push_back(state->first);
        taken.Insert(entity);
        m_stateOf.push_back(state->second);
    }
    taken.FinishUniqueInsertion();
    Entities() = taken;
    return true;
}

void ZvVEntTiny::SetColor(const ZvColor& color) {
    m_wanted.color = color.To64();
    m_parts |= kColor;
}

void ZvVEntTiny::SetLineWidth(ZvLineWidth width) {
    m_wanted.lineWidth = std::bit_cast<uint32_t>(width.Raw());
    m_parts |= kWidth;
}

void ZvVEntTiny::SetLineType(ZvLineType type) {
    m_wanted.lineType = type.hardGet();
    m_parts |= kType;
}

void ZvVEntTiny::SetBrush(const ZvBrush& brush) {
    m_wanted.brush = brush.ToInt64();
    m_parts |= kBrush;
}

void ZvVEntTiny::SetFlag(uint16_t flag, bool on) {
    flag &= ZvEntityState::FlagMask();
    m_flags |= flag;
    m_wanted.flags = uint16_t(on ? m_wanted.flags | flag : m_wanted.flags & ~flag);
}

ZvEntityState ZvVEntTiny::Changed(ZvEntityState state) const {
    if (m_parts & kColor)
        state.color = m_wanted.color;
    if (m_parts & kWidth)
        state.lineWidth = m_wanted.lineWidth;
    if (m_parts & kType)
        state.lineType = m_wanted.lineType;
    if (m_parts & kBrush)
        state.brush = m_wanted.brush;
    state.flags = uint16_t((state.flags & ~m_flags) | (m_wanted.flags & m_flags));
    return state;
}

bool ZvVEntTiny::IsNullOp() const {
    return Entities().IsEmpty() ||
           std::all_of(m_states.begin(), m_states.end(),
                       [this](const ZvEntityState& state) { return Changed(state) == state; });
}

void ZvVEntTiny::Apply(const std::vector<ZvEntityState>& states, const char* context) {
    for (int i = 0; i < Entities().Count(); ++i) {
        if (ZvEntity* entity = Entities().GetEntityQuiet(i))
            states[m_stateOf[size_t(i)]].ApplyTo(*entity);
        else
            ZvErrors::Report(ZvErrorCode::VerbEntityGone, context);
    }
}

void ZvVEntTiny::Do() {
    LeaveOutGone("ZvVEntTiny.Do");
    std::vector<ZvEntityState> after;
    for (const ZvEntityState& state : m_states)
        after.push_back(Changed(state));
    Apply(after, "ZvVEntTiny.Do");
}

void ZvVEntTiny::Undo() {
    Apply(m_states, "ZvVEntTiny.Undo");
}

void ZvVEntTiny::RemoveFromSet(const ZvSelection& leaving) {
    size_t kept = 0;
    for (size_t i = 0; i < m_stateOf.size(); ++i)
        if (!leaving.Contains(Entities().GetName(int(i))))
            m_stateOf[kept++] = m_stateOf[i];
    m_stateOf.resize(kept);
    ZvVerb::RemoveFromSet(leaving);
}

XStringW ZvVEntTiny::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbEntTiny);
}

size_t ZvVEntTiny::MemUsage() const {
    return ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) + m_states.capacity() * sizeof(ZvEntityState) +
           m_stateOf.capacity() * sizeof(uint32_t);
}
