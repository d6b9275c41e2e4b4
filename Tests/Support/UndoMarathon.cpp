// The course: drawing, steps, oracle. The verbs are in UndoMarathonVerbs.cpp.
#include "Tests/Support/UndoMarathon.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/DrawingAux/ZvUndoSettings.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvMultiPoint.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/Tables/ZvTextStyleTable.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvServer.h"
#include <algorithm>
#include <cmath>

namespace {

constexpr uint64_t kStepsPerRound = 2000;
constexpr int kMostVerbs = 150;

ZvCore::Settings& ApplicationSettings() {
    return ZvServer::Instance().Settings();
}

} // namespace

UndoMarathon::UndoMarathon(uint64_t seed) : m_seed(seed) {
    m_formerBudget = ApplicationSettings().GetInt(ZvUndoSettings::kBudgetKey, ZvUndoSettings::kDefaultBudget);
    StartRound();
}

UndoMarathon::~UndoMarathon() {
    ApplicationSettings().Set(ZvUndoSettings::kBudgetKey, m_formerBudget);
}

uint32_t UndoMarathon::Below(uint32_t limit) {
    return limit ? uint32_t(m_random() % limit) : 0;
}

double UndoMarathon::Coordinate() {
    return double(Below(2'000'000)) / 1000.0 + double(Below(1000)) * 1e-7;
}

// --- what a round starts with ---------------------------------------------------------------------------------

void UndoMarathon::StartRound() {
    m_random.seed(m_seed * 1'000'003 + uint64_t(m_round++));
    m_drawing.reset();
    ApplicationSettings().Set(ZvUndoSettings::kBudgetKey,
                              int64_t(OneIn(2) ? 10'000'000 : 20'000 + Below(200'000)));
    m_drawing = NativeFiles::Sample();
    using Table = ZvAttributeTable;
    for (const char16_t* name : {u"Houses", u"Paths"}) {
        ZvLayer* layer = m_drawing->LayerTable()->InsertNew(XStringW(name));
        layer->SetDescription(XStringW(u"of ") + name);
        layer->Attributes().AddField({u"Id", Table::Type::Int64, 0, 0});
        layer->Attributes().AddField({u"Label", Table::Type::String, 0, 0});
    }
    // The same name with another type: values that a move to this layer cannot take along.
    ZvLayer* roads = m_drawing->LayerTable()->GetByName(u"Roads");
    roads->Attributes().AddField({u"Id", Table::Type::String, 0, 0});
    roads->Attributes().AddField({u"Width", Table::Type::Double, 0, 0});
    m_drawing->LineTypeTable()->InsertNew(u"Dots")->SetDashes({0.5, 1});
    m_drawing->TextStyleTable()->InsertNew(u"Small");
    ZvDrawing& sheet = *m_drawing->LayoutTable()->InsertNew(u"Sheet")->Drawing();
    for (int i = 0; i < 12; ++i)
        sheet.Insert(RandomEntity());
    AddEntities(40 + int(Below(80)));
    m_drawing->Verbs()->PurgeUndo();
    (void)Save(); // what a first save computes and keeps is there from now on
    m_states.assign(1, Save());
}

std::unique_ptr<ZvEntity> UndoMarathon::RandomEntity() {
    const double x = Coordinate(), y = Coordinate();
    if (OneIn(5))
        return std::make_unique<ZvPointEnt>(Vec3d{x, y, OneIn(3) ? 2.5 : 0});
    if (OneIn(8)) {
        auto points = std::make_unique<ZvMultiPoint>();
        std::vector<Vec3d> locations;
        for (uint32_t i = 0; i < 2 + Below(6); ++i)
            locations.push_back({x + i, y + Below(5), 0});
        points->SetLocations(std::span<const Vec3d>(locations));
        return points;
    }
    const bool polygon = OneIn(2), withHole = polygon && OneIn(2);
    std::vector<Vec4d> vertices;
    const uint32_t count = 4 + Below(24);
    const bool z = OneIn(3);
    const auto ring = [&](double radius) {
        for (uint32_t i = 0; i < count; ++i)
            vertices.push_back({x + radius * std::cos(i * 6.28 / count),
                                y + radius * std::sin(i * 6.28 / count), z ? double(i) / 7 : 0, 0});
    };
    ring(1 + Below(50));
    if (withHole)
        ring(0.5);
    const uint32_t closed = polygon ? ZvXLine::kClosedBit : 0u;
    const uint32_t table[] = {closed, count | closed};
    auto line = std::make_unique<ZvXLine>();
    line->Set(withHole ? 2 : 1, table, vertices, polygon, z, false, OneIn(4) ? 1 : 0);
    return line;
}

void UndoMarathon::AddEntities(int count) {
    static const char16_t* const kLayers[] = {u"0", u"Roads", u"Houses", u"Paths"};
    for (int i = 0; i < count; ++i) {
        const ZvName name = m_drawing->Insert(RandomEntity(), XStringW(kLayers[Below(4)]));
        GiveAttributes(*m_drawing->GetEntity(name));
    }
}

void UndoMarathon::GiveAttributes(ZvEntity& entity) {
    ZvLayer* layer = entity.GetLayer();
    if (!layer->AttributesOrNull() || OneIn(3))
        return;
    ZvAttributeTable& table = layer->Attributes();
    for (int field = 0; field < table.FieldCount(); ++field)
        switch (table.Fields()[size_t(field)].type) {
        case ZvAttributeTable::Type::Int64:
            table.Set(entity.Name(), field, int64_t(Below(1000)));
            break;
        case ZvAttributeTable::Type::Double:
            table.Set(entity.Name(), field, Coordinate());
            break;
        default:
            table.Set(entity.Name(), field, XStringW::Format("text %u", Below(30)));
        }
}

// --- steps ----------------------------------------------------------------------------------------------------

bool UndoMarathon::Run(uint64_t steps) {
    for (uint64_t i = 0; i < steps; ++i, ++m_step) {
        if (m_step % kStepsPerRound == kStepsPerRound - 1)
            StartRound();
        if (!Step())
            return false;
    }
    return true;
}

bool UndoMarathon::Step() {
    const uint32_t choice = Below(100);
    if (m_drawing->Verbs()->StackSize() > kMostVerbs || choice == 99)
        return PurgeAll();
    if (choice == 98)
        return OneIn(2) ? PurgeSome() : DeleteClean();
    if (choice < 45)
        return DoOne();
    if (choice < 72)
        return UndoOne();
    if (choice < 94)
        return RedoOne();
    return Section();
}

bool UndoMarathon::DoOne() {
    static const int total = [] {
        int sum = 0;
        for (const Kind& kind : AllKinds())
            sum += kind.weight;
        return sum;
    }();
    int at = int(Below(uint32_t(total)));
    const Kind* kind = AllKinds().data();
    while (at >= kind->weight)
        at -= kind++->weight;
    Verb verb = (this->*kind->make)();
    if (!verb)
        return true;
    ++m_counts[kind->name];
    ZvVerbStack& stack = *m_drawing->Verbs();
    const size_t before = size_t(stack.Position());
    m_states.resize(before + 1);
    const bool didSomething = stack.DoVerb(verb.release()) != 0;
    m_kept += didSomething;
    if (didSomething)
        m_states.push_back(Save());
    while (m_states.size() > size_t(stack.Position()) + 1) // the oldest verbs went for the budget
        m_states.pop_front();
    return (didSomething || Expect(m_states.back(), std::string("no effect of ") + kind->name)) &&
           CheckBudget();
}

/// The sum that the stack keeps is that of its verbs, and those done before the newest fit into the budget.
bool UndoMarathon::CheckBudget() {
    const ZvVerbStack& stack = *m_drawing->Verbs();
    size_t all = 0, older = 0;
    for (int i = 0; i < stack.StackSize(); ++i) {
        const size_t bytes = stack.GetVerb(i)->MemUsage();
        all += bytes;
        older += i < stack.Position() - 1 ? bytes : 0;
    }
    if (all != stack.MemUsage())
        return Fail("the stack counts " + std::to_string(stack.MemUsage()) + " bytes, its verbs " +
                    std::to_string(all));
    return older <= size_t(stack.Budget()) || Fail("older verbs hold more than the undo budget");
}

bool UndoMarathon::UndoOne() {
    ZvVerbStack& stack = *m_drawing->Verbs();
    if (!stack.CanUndo())
        return true;
    ++m_counts["- undo"];
    const std::string name = stack.GetVerb(stack.Position() - 1)->GetName().ToUtf8();
    if (!stack.Undo())
        return Fail("\"" + name + "\" was not undone");
    return Expect(m_states[size_t(stack.Position())], "undo of \"" + name + "\"") && CheckBudget();
}

bool UndoMarathon::RedoOne() {
    ZvVerbStack& stack = *m_drawing->Verbs();
    if (!stack.CanRedo())
        return true;
    ++m_counts["- redo"];
    const std::string name = stack.GetVerb(stack.Position())->GetName().ToUtf8();
    if (!stack.Redo())
        return Fail("\"" + name + "\" was not redone");
    return Expect(m_states[size_t(stack.Position())], "redo of \"" + name + "\"") && CheckBudget();
}

bool UndoMarathon::PurgeAll() {
    ++m_counts["- purge"];
    const NativeFiles::Bytes before = Save();
    m_drawing->Verbs()->PurgeUndo();
    if (OneIn(2))
        m_drawing->PurgeErased();
    m_states.assign(1, before);
    return Expect(before, "purge");
}

/// Forgets what concerns a layer or some entities: the drawing stays the same, and what is left still runs.
bool UndoMarathon::PurgeSome() {
    ZvVerbStack& stack = *m_drawing->Verbs();
    const NativeFiles::Bytes before = Save();
    if (OneIn(2)) {
        ++m_counts["- purge for entities"];
        const ZvSelection entities = Some(4);
        stack.PurgeUndoForEntities(&entities);
        for (ZvVerb* verb : stack.GetVerbStack())
            if (verb->UsesEntities({entities.Names().begin(), entities.Names().end()}))
                return Fail("\"" + verb->GetName().ToUtf8() + "\" survived the purge for its entities");
        return Expect(before, "purge for entities") && RunWithGaps();
    }
    ++m_counts["- purge for a layer"];
    ZvLayer* layer = AnyLayer();
    stack.PurgeUndoForLayer(layer);
    for (ZvVerb* verb : stack.GetVerbStack())
        if (verb->UsesLayers({layer}))
            return Fail("\"" + verb->GetName().ToUtf8() + "\" survived the purge for its layer");
    return Expect(before, "purge for a layer") && RunWithGaps();
}

/// What is left of a history runs to its start and to its end, and no step of it is refused. The places are not those of
/// before: entities that a forgotten verb had changed, too, have a gap in their history.
bool UndoMarathon::RunWithGaps() {
    ZvVerbStack& stack = *m_drawing->Verbs();
    while (stack.CanUndo())
        if (!stack.Undo())
            return Fail("a verb before a gap was not undone");
    while (stack.CanRedo())
        if (!stack.Redo())
            return Fail("a verb behind a gap was not redone");
    const NativeFiles::Bytes now = Save();
    stack.PurgeUndo();
    m_states.assign(1, now);
    return Expect(now, "purge behind gaps");
}

/// Deleting for good takes entities out of the middle of the history: what is left of it runs down and up again through the same
/// states.
bool UndoMarathon::DeleteClean() {
    ++m_counts["- deletion for good"];
    ZvVerbStack& stack = *m_drawing->Verbs();
    const ZvSelection leaving = Some(4);
    stack.DeleteEntitiesClean(&leaving);
    for (int i = 0; i < leaving.Count(); ++i)
        if (leaving.Check(i) || stack.EntitiesInUse().count(leaving.GetName(i).value))
            return Fail("an entity outlived its deletion");
    while (stack.CanRedo())
        if (!stack.Redo())
            return Fail("a verb was not redone after a deletion for good");
    std::vector<NativeFiles::Bytes> states{Save()};
    for (; stack.CanUndo(); states.push_back(Save()))
        if (!stack.Undo())
            return Fail("a verb was not undone after a deletion for good");
    for (states.pop_back(); stack.CanRedo(); states.pop_back())
        if (!stack.Redo() || !Expect(states.back(), "redo behind a deletion for good"))
            return m_failure.empty() ? Fail("a verb was not redone after a deletion for good") : false;
    const NativeFiles::Bytes now = Save();
    stack.PurgeUndo();
    m_states.assign(1, now);
    return Expect(now, "purge behind a deletion for good");
}

bool UndoMarathon::Expect(const NativeFiles::Bytes& state, const std::string& after) {
    const NativeFiles::Bytes now = Save();
    if (now == state)
        return true;
    constexpr size_t kHead = 104; // holds the digest
    const auto differ = std::mismatch(now.begin() + kHead, now.end(), state.begin() + kHead, state.end());
    return Fail("after " + after + " the drawing differs from byte " +
                std::to_string(differ.first - now.begin()) + " on (" + std::to_string(now.size()) +
                " bytes, " + std::to_string(state.size()) + " expected)");
}

bool UndoMarathon::Fail(const std::string& what) {
    m_failure = "seed " + std::to_string(m_seed) + ", step " + std::to_string(m_step) + ": " + what;
    return false;
}

NativeFiles::Bytes UndoMarathon::Save() {
    ZvNativeOptions options;
    options.compressionLevel = 0;
    options.blockDigests = false;
    options.threads = false;
    options.orderByName = true;
    return NativeFiles::Save(*m_drawing, options);
}

bool UndoMarathon::RoundTrip(const std::string& kind, bool& changed) {
    const auto found =
        std::find_if(AllKinds().begin(), AllKinds().end(), [&](const Kind& k) { return k.name == kind; });
    const NativeFiles::Bytes before = Save(); // some kinds are handed over with the change made
    Verb verb = (this->*found->make)();
    if (!verb)
        return true;
    ZvVerbStack& stack = *m_drawing->Verbs();
    if (!stack.DoVerb(verb.release()))
        return Expect(before, "no effect of " + kind);
    const NativeFiles::Bytes after = Save();
    changed = before != after;
    return stack.Undo() && Expect(before, "undo of " + kind) && stack.Redo() &&
           Expect(after, "redo of " + kind) && stack.Undo() && Expect(before, "second undo of " + kind);
}

std::vector<std::string> UndoMarathon::Kinds() {
    std::vector<std::string> names;
    for (const Kind& kind : AllKinds())
        names.push_back(kind.name);
    return names;
}

bool UndoMarathon::Section() {
    ++m_counts["- section"];
    ZvVerbStack& stack = *m_drawing->Verbs();
    const bool barrier = OneIn(3), rollBack = OneIn(2);
    const int id = stack.VerbBeginSection(barrier ? ZvVerbStack::kSectionBarrier : 0);
    m_states.resize(size_t(stack.Position()) + 1);
    if (barrier && (stack.Undo() || !Expect(m_states.back(), "an undo that a section bars")))
        return Fail("a section did not bar the undo");
    const int start = stack.Position();
    int done = -m_kept;
    for (uint32_t count = Below(4); count > 0; --count)
        if (!DoOne())
            return false;
    done += m_kept;
    const bool isWhole = stack.Position() >= done; // else the budget has cost verbs of its own
    if (stack.VerbEndSection(id, rollBack ? ZvVerbStack::kSectionRollBack : 0) != (isWhole || !rollBack))
        return Fail("a section of " + std::to_string(done) + " verbs behind " + std::to_string(start) +
                    " did not end");
    m_states.resize(size_t(stack.Position()) + 1);
    return Expect(m_states.back(), rollBack ? "a section rolled back" : "a section");
}
