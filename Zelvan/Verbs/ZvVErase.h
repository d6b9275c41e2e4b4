#pragma once
#include "Zelvan/Verbs/ZvVerb.h"

class ZvEntity;

/// Entities that are erased.
class ZV_API ZvVErase : public ZvVerb {
public:
    explicit ZvVErase(ZvDrawing* drawing = nullptr) : ZvVerb(drawing) {}
    explicit ZvVErase(const ZvSelection& entities);

    /// False when it was added before.
    bool Add(const ZvEntity* entity);
    /// An entity that the caller has erased; Do would leave out what is erased already.
    bool AddErased(const ZvEntity* entity);
    /// Adds up the entities' memory, which the verb holds while it is done; answers it.
    size_t CalcEntityMemUsage();

    Kind GetKind() const override { return Kind::Erase; }
    void FlushDone() override;
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override { return Entities().IsEmpty(); }
    void Do() override;
    void Undo() override;
    bool Redo() override;
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    void LeaveOutErased();
    void Erase(bool note);

    std::vector<uint32_t> m_erasedByCaller;
    size_t m_erasedBytes = 0;
};
