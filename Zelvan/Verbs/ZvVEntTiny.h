#pragma once
#include "Zelvan/Verbs/ZvEntityState.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include <vector>

/// Changes flags and base attributes of very many entities. Keeps four bytes an entity beside its name: entities that
/// looked alike share their record. Call Collect, then the setters, then hand it to the stack.
class ZV_API ZvVEntTiny : public ZvVerb {
public:
    explicit ZvVEntTiny(ZvDrawing& drawing) : ZvVerb(&drawing) {}

    /// Takes the entities with their present state, under a progress display of the host. False, and the verb without
    /// entities, when the user stops it and for entities of another drawing.
    bool Collect(const ZvSelection& entities);
    void SetColor(const ZvColor& color);
    void SetLineWidth(ZvLineWidth width);
    void SetLineType(ZvLineType type);
    void SetBrush(const ZvBrush& brush);
    /// A bit of the internal flag word (ZvEntity::Flag) that states hold; others are ignored.
    void SetFlag(uint16_t flag, bool on);
    /// Distinct states among the entities.
    size_t StateCount() const { return m_states.size(); }

    Kind GetKind() const override { return Kind::Tiny; }
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override;
    void Do() override;
    void Undo() override;
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    enum Part : unsigned { kColor = 1, kWidth = 2, kType = 4, kBrush = 8 };
    ZvEntityState Changed(ZvEntityState state) const;
    void Apply(const std::vector<ZvEntityState>& states, const char* context);

    std::vector<ZvEntityState> m_states; ///< distinct ones, before the change
    std::vector<uint32_t> m_stateOf;     ///< by member of Entities()
    ZvEntityState m_wanted;
    unsigned m_parts = 0;
    uint16_t m_flags = 0; ///< which of the wanted flags count
};
