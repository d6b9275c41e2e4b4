#pragma once
#include "Zelvan/Verbs/ZvEntitySnapshots.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include <memory>
#include <unordered_set>

/// Changes of entities, kept as full copies before and after.
///
/// Either the command calls AddOriginal, changes the entities and calls StoreModified, all before it hands the
/// verb over; or it makes changed copies and hands them over (AddModified, AddOriginalAndModified), and Do puts
/// them in place.
class ZV_API ZvVEntModify : public ZvVerb {
public:
    explicit ZvVEntModify(ZvDrawing* drawing = nullptr) : ZvVerb(drawing) {}

    /// False, nothing stored, when the entity was added before (error 10040), and for an erased one.
    bool AddOriginal(const ZvEntity& entity);
    /// Copies all added entities as they are now. False (error 10041, nothing stored) when there are modified
    /// copies. Entities that are gone are left out and reported, which makes the verb impossible to redo.
    bool StoreModified();
    /// False for an entity that was not added or has its modified copy, and for a state of another kind.
    bool AddModified(const ZvEntity& entity, std::unique_ptr<ZvEntity> state);
    bool AddOriginalAndModified(const ZvEntity& entity, std::unique_ptr<ZvEntity> state);
    size_t OriginalCount() const { return m_originals.Count(); }
    size_t ModifiedCount() const { return m_modified.Count(); }

    Kind GetKind() const override { return Kind::Modify; }
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override { return Entities().IsEmpty(); }
    void Do() override;
    void Undo() override;
    bool Redo() override;
    void UpdateLayersUsed() override;
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    void MakeOriginal();
    void MakeModified();
    void MakeAll(const ZvEntitySnapshots& copies);

    ZvEntitySnapshots m_originals, m_modified;
    std::unique_ptr<std::unordered_set<uint32_t>>
        m_stated; ///< until Do: whose modified copies were handed over
    bool m_applyInDo = false;
};
