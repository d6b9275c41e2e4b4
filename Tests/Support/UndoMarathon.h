#pragma once
#include "Tests/Support/NativeFiles.h"
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

class ZvDrawing;
class ZvEntity;
class ZvLayout;
class ZvLayer;
class ZvSelection;
class ZvTable;
class ZvVerb;

/// Random verbs of all kinds, undo, redo, sections and purges over a drawing of mixed content, beside an oracle that
/// keeps the whole saved drawing for every place of the undo stack: after each step the drawing, saved again, must be
/// its bytes. Everything follows from the seed.
class UndoMarathon {
public:
    explicit UndoMarathon(uint64_t seed);
    ~UndoMarathon();

    /// False at the first difference; Failure tells it.
    bool Run(uint64_t steps);
    const std::string& Failure() const { return m_failure; }
    /// Verbs done by kind, and the other operations.
    const std::map<std::string, uint64_t>& Counts() const { return m_counts; }

    /// The kinds of verbs that are drawn from.
    static std::vector<std::string> Kinds();
    /// Does one verb of the kind, undoes it, redoes it and undoes it again, comparing. False with Failure; `changed`: the
    /// verb made a difference.
    bool RoundTrip(const std::string& kind, bool& changed);
    ZvDrawing& Drawing() { return *m_drawing; }

private:
    using Verb = std::unique_ptr<ZvVerb>;
    struct Kind {
        const char* name;
        Verb (UndoMarathon::*make)();
        int weight;
    };
    static const std::vector<Kind>& AllKinds();

    // What a round starts with.
    void StartRound();
    void AddEntities(int count);
    std::unique_ptr<ZvEntity> RandomEntity();
    void GiveAttributes(ZvEntity& entity);

    // Steps.
    bool Step();
    bool DoOne();
    bool UndoOne();
    bool RedoOne();
    bool PurgeAll();
    bool PurgeSome();
    bool RunWithGaps();
    bool DeleteClean();
    bool Section();
    bool CheckBudget();
    bool Expect(const NativeFiles::Bytes& state, const std::string& after);
    bool Fail(const std::string& what);
    NativeFiles::Bytes Save();

    // Verbs.
    Verb Create();
    Verb Erase();
    Verb Modify();
    Verb Replace();
    Verb Convert();
    Verb NewDualSource();
    Verb Aggregate();
    Verb PaperAggregate();
    Verb MoveToLayer();
    Verb PropertyChange();
    Verb GeometryProperty();
    Verb AttributeChange();
    Verb TextChange();
    Verb Transform();
    Verb DrawOrder();
    Verb ChangeSelection();
    Verb MoveGrip();
    Verb Tiny();
    Verb RecordNew();
    Verb RecordErase();
    Verb RecordModify();
    Verb RecordEdited();

    uint32_t Below(uint32_t limit);
    bool OneIn(uint32_t chance) { return Below(chance) == 0; }
    double Coordinate();
    ZvEntity* AnyEntity();
    ZvSelection Some(int most);
    ZvLayer* AnyLayer();
    ZvLayout* AnyLayout();
    ZvTable* AnyTable();

    uint64_t m_seed;
    uint64_t m_step = 0;
    int m_round = 0;
    int m_kept = 0;             ///< verbs that stayed on the stack when they were done
    int64_t m_formerBudget = 0; ///< application setting
    std::mt19937_64 m_random;
    std::unique_ptr<ZvDrawing> m_drawing;
    std::deque<NativeFiles::Bytes> m_states; ///< by stack position
    std::map<std::string, uint64_t> m_counts;
    std::string m_failure;
};
