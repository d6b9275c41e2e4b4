#pragma once
#include "Zelvan/Verbs/ZvVEntNew.h"
#include "Zelvan/Verbs/ZvVErase.h"

/// One-to-one replacements: an inner erasure of the old entities and an inner creation of the new ones. What
/// belongs to an old entity (attributes, partners) goes to the new one, too.
class ZV_API ZvVModify : public ZvVerb {
public:
    explicit ZvVModify(ZvDrawing* drawing = nullptr);

    /// `fresh` is in the drawing; Do erases `old`. False when either was added before or is null.
    bool Add1To1(const ZvEntity* old, const ZvEntity* fresh);
    /// `fresh` enters the drawing in Do, on the layer of `old`.
    bool Add1To1(const ZvEntity* old, std::unique_ptr<ZvEntity> fresh);
    /// The command has inserted `fresh` and erased `old` by itself: only undo and redo touch them.
    bool Add1To1Manual(const ZvEntity* old, const ZvEntity* fresh);

    Kind GetKind() const override { return Kind::Replace; }
    ZvBounds3D GetBounds(const ZvScaleSetup* scale) const override;
    void FlushDone() override;
    void FlushNeverDone() override;
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override { return m_erase.IsNullOp() && m_new.IsNullOp(); }
    void Do() override;
    void Undo() override;
    bool Redo() override;
    void UpdateLayersUsed() override;
    void RemoveFromSet(const ZvSelection& leaving) override;
    void CollectEntities(std::set<uint32_t>& names) const override;
    void SetParent(ZvDrawing* drawing) override;
    void SetSequence(int sequence) override;
    void RestoreSelection() override;

private:
    bool MayPair(const ZvEntity* old, const ZvEntity* fresh) const;
    bool AddPair(const ZvEntity& old, const ZvEntity& fresh);
    void NotePair(ZvName old, ZvName fresh);

    ZvVErase m_erase;
    ZvVEntNew m_new;
    std::vector<uint32_t> m_waitingOld; ///< whose replacements are not in the drawing yet
};
