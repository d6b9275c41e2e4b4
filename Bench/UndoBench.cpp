#include "Apps/zvd/SyntheticMap.h"
#include "Report.h"
#include "Zelvan/DrawingAux/ZvUndoSettings.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Verbs/ZvVEntModify.h"
#include "Zelvan/Verbs/ZvVErase.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/Progress.h"
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kVerbs = 200'000;

struct Costs {
    std::vector<std::pair<double, double>> doing, undoing, redoing;
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

    // One entity a verb, all over the drawing; the stack is full after the first round, so that each further verb
    // drops the oldest.
    void Small(Costs& costs) {
        const double n = double(m_entities.size());
        std::mt19937_64 random(5);
        const auto next = [&] { return m_entities[random() % m_entities.size()]; };
        ZvVerbStack& stack = *m_drawing->Verbs();
        const auto timed = [&](const char* what, auto work, auto setUp) {
            m_report.Time(m_name + what, work, 3, setUp);
            return m_report.Get(m_name + what) / kVerbs;
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
        costs.doing.push_back({n, timed(": change one entity", modify, [] {})});
        costs.undoing.push_back({n, timed(": undo one change", undoAll, redoAll)});
        costs.redoing.push_back({n, timed(": redo one change", redoAll, undoAll)});
        m_report.Set(m_name + ": bytes a change", double(stack.MemUsage()) / stack.StackSize());
        stack.PurgeUndo();
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
        const auto rate = [&](const char* what) { return kVerbs / m_report.Get(m_name + what) / 1000; };
        m_report.Line(
            "%10zu entities: %6.0f thousand changes/s, %6.0f undone/s, %6.0f redone/s, %.0f bytes each",
            m_entities.size(), rate(": change one entity"), rate(": undo one change"),
            rate(": redo one change"), m_report.Get(m_name + ": bytes a change"));
        m_report.Line("%10s erase all %.3f s, undo %.3f s, %.1f bytes an entity beside the entity itself", "",
                      m_report.Get(m_name + ": erase all"), m_report.Get(m_name + ": undo the erasure"),
                      m_report.Get(m_name + ": bytes an erased entity"));
    }

private:
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
    std::vector<uint64_t> sizes = {10'000, 100'000, 1'000'000};
    if (std::getenv("ZELVAN_BENCH_LARGE"))
        sizes.push_back(10'000'000);
    Costs costs;
    for (uint64_t size : sizes) {
        Case bench(report, size);
        bench.Small(costs);
        bench.EraseAll();
        bench.Print();
    }
    report.Line("Cost of a verb grows with the drawing as n^b, b = %.2f (change), %.2f (undo), %.2f (redo)",
                Report::Exponent(costs.doing), Report::Exponent(costs.undoing),
                Report::Exponent(costs.redoing));
}
