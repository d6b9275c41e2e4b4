#pragma once
#include "Zelvan/Verbs/ZvVerb.h"

class ZvEntity;

/// Entities that became others (of another kind, as a rule): of each pair one is in the drawing and the other
/// erased. In the current selection the one stands for the other, and attributes and partners are handed on.
class ZV_API ZvVConvert : public ZvVerb {
public:
    explicit ZvVConvert(ZvDrawing* drawing = nullptr);
    ~ZvVConvert() override;

    /// `converted` enters the drawing in Do, on the layer of `entity`. False for null and for an entity that
    /// was added before.
    bool AddPair(const ZvEntity* entity, std::unique_ptr<ZvEntity> converted);
    /// Both are in the drawing.
    bool AddPair(const ZvEntity* entity, const ZvEntity* converted);
    int PairCount() const { return int(m_from.size()); }

    Kind GetKind() const override { return Kind::Convert; }
    void FlushDone() override { FlushUni(true); }
    void FlushNeverDone() override { FlushUni(false); }
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override { return m_from.empty(); }
    void Do() override;
    void Undo() override { Operate(false); }
    bool Redo() override;
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    /// Swaps the pairs: the converted entities come, or the former ones.
    void Operate(bool converted);
    /// Hands the entities that nothing can reach any more over for deletion.
    void FlushUni(bool done);
    void InsertWaiting();

    /// Parallel. 0 in m_to before Do: waits for insertion; 0 in either after it: deleted for good.
    std::vector<uint32_t> m_from, m_to;
    std::vector<std::unique_ptr<ZvEntity>> m_waiting;
    size_t m_erasedBytes = 0;
};
