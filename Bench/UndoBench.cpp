#include "Apps/zvd/SyntheticMap.h"
#include "Report.h"
#include "Zelvan/DrawingAux/ZvUndoSettings.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Verbs/ZvVEntModify.h"
#include "Zelvan/Verbs/ZvVErase.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/Progress.h"
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kVerbs = 200'000;
constexpr size_t kFew =
    5'000; ///< entities that the processor's caches hold, with what the verbs touch of them
constexpr size_t kBytesAnEntity = 400; ///< at most, with its share of the bench's own

struct Costs {
    std::vector<std::pair<double, double>> doing, undoing, redoing;

    std::string Exponents() const {
        char text[100];
        std::snprintf(text, sizeof text, "%.2f (change), %.2f (undo), %.2f (redo)", Report::Exponent(doing),
                      Report::Exponent(undoing), Report::Exponent(redoing));
        return text;
    }
};

class Case {
public:
    Case(Report& report, uint64_t lines) : m_report(report), m_name("undo " + std::to_string(lines)) {
        SyntheticMap map;
        map.lines = lines;
        map.vertices = 4;
        ZvCore::NoProgress progress;
        m_settings.Set(ZvUndoSettings::kBudgetKey, int64_t(1) << 40);
        m_settings.Set(ZvVerbStack::kMaxVerbsKey, int64_t(kVerbs));
        ZvDrawingSetup setup;
        setup.settings = &m_settings;
        m_drawing = std::make_unique<ZvDrawing>(setup);
        map.Fill(*m_drawing, progress);
        m_drawing->NameTable().GetAllNonErased(m_entities);
    }

    void All(Costs& costs) { Small(costs, "", m_entities); }

    /// The same few again and again: what a larger drawing costs beside its cache misses.
    void Few(Costs& costs) {
        std::vector<ZvEntity*> few;
        std::sample(m_entities.begin(), m_entities.end(), std::back_inserter(few), kFew, std::mt19937_64(11));
        Small(costs, " of few", few);
    }

    void EraseAll() {
        ZvSelection all(m_drawing.get());
        all.BeginUniqueInsertion();
        for (const ZvEntity* entity : m_entities)
            all.Insert(entity);
        all.FinishUniqueInsertion();
        ZvVerbStack& stack = *m_drawing->Verbs();
        const size_t before = MemoryOfEntities();
        m_report.Time(
            m_name + ": erase all", [&] { m_drawing->DoVerb(new ZvVErase(all)); }, 3,
            [&] {
                if (stack.CanUndo())
                    (void)stack.Undo();
            });
        m_report.Set(m_name + ": bytes an erased entity",
                     (double(stack.MemUsage()) - double(before)) / double(m_entities.size()));
        m_report.Time(
            m_name + ": undo the erasure", [&] { (void)stack.Undo(); }, 3,
            [&] {
                if (stack.CanRedo())
                    (void)stack.Redo();
            });
        stack.PurgeUndo();
    }

    void Print() const {
        const auto rate = [&](const char* what, const char* among = "") {
            return kVerbs / m_report.Get(m_name + what + among) / 1000;
        };
        m_report.Line(
            "%10zu entities: %6.0f thousand changes/s, %6.0f undone/s, %6.0f redone/s, %.0f bytes each",
            m_entities.size(), rate(": change one"), rate(": undo one"), rate(": redo one"),
            m_report.Get(m_name + ": bytes a change"));
        m_report.Line("%10s among %zu of them: %6.0f, %6.0f, %6.0f", "", kFew,
                      rate(": change one", " of few"), rate(": undo one", " of few"),
                      rate(": redo one", " of few"));
        m_report.Line("%10s erase all %.3f s, undo %.3f s, %.1f bytes an entity beside the entity itself", "",
                      m_report.Get(m_name + ": erase all"), m_report.Get(m_name + ": undo the erasure"),
                      m_report.Get(m_name + ": bytes an erased entity"));
    }

private:
    /// One entity a verb; the stack is full after the first round, so that each further verb drops the oldest.
    void Small(Costs& costs, const std::string& among, const std::vector<ZvEntity*>& entities) {
        const double n = double(m_entities.size());
        std::mt19937_64 random(5);
        const auto next = [&] { return entities[random() % entities.size()]; };
        ZvVerbStack& stack = *m_drawing->Verbs();
        const auto timed = [&](const std::string& what, auto work, auto setUp) {
            m_report.Time(m_name + what + among, work, 3, setUp);
            return m_report.Get(m_name + what + among) / kVerbs;
        };
        const auto modify = [&] {
            for (int i = 0; i < kVerbs; ++i) {
                ZvEntity* entity = next();
                auto* verb = new ZvVEntModify(m_drawing.get());
                verb->AddOriginal(*entity);
                entity->SetColor(ZvColor(i & 255));
                verb->StoreModified();
                m_drawing->DoVerb(verb);
            }
        };
        const auto undoAll = [&] {
            while (stack.CanUndo())
                (void)stack.Undo();
        };
        const auto redoAll = [&] {
            while (stack.CanRedo())
                (void)stack.Redo();
        };
        costs.doing.push_back({n, timed(": change one", modify, [] {})});
        costs.undoing.push_back({n, timed(": undo one", undoAll, redoAll)});
        costs.redoing.push_back({n, timed(": redo one", redoAll, undoAll)});
        m_report.Set(m_name + ": bytes a change", double(stack.MemUsage()) / stack.StackSize());
        stack.PurgeUndo();
    }

    size_t MemoryOfEntities() const {
        size_t bytes = 0;
        for (const ZvEntity* entity : m_entities)
            bytes += entity->MemUsage();
        return bytes;
    }

    Report& m_report;
    std::string m_name;
    ZvCore::Settings m_settings;
    std::unique_ptr<ZvDrawing> m_drawing;
    std::vector<ZvEntity*> m_entities;
};

} // namespace

void BenchUndo(Report& report) {
    report.Heading("Undo");
    Costs all, few;
    for (uint64_t size : {10'000, 100'000, 1'000'000, 10'000'000}) {
        if (size * kBytesAnEntity > ZvUndoSettings::PhysicalMemory()) {
            report.Line("%10llu entities: left out for want of memory", (unsigned long long)size);
            continue;
        }
        Case bench(report, size);
        bench.All(all);
        bench.Few(few);
        bench.EraseAll();
        bench.Print();
    }
    report.Line("Cost of a verb grows with the drawing as n^b, b = %s;\namong the same few entities, so "
                "without the cache misses of a larger drawing, b = %s",
                all.Exponents().c_str(), few.Exponents().c_str());
}
