#pragma once
#include "Zelvan/Verbs/ZvVerb.h"

/// Verbs that are done and undone as one.
class ZV_API ZvVAggregate : public ZvVerb {
public:
    explicit ZvVAggregate(ZvDrawing* drawing = nullptr) : ZvVerb(drawing) {}
    ~ZvVAggregate() override;

    /// The child is done when the aggregate is. Null is ignored.
    void Add(std::unique_ptr<ZvVerb> verb);
    int ChildCount() const { return int(m_children.size()); }
    ZvVerb* Child(int index) const { return m_children[size_t(index)].get(); }
    /// Appends the verbs of the kind, those of inner aggregates included, in the order of doing.
    void GetVerbsByOp(Kind kind, std::vector<ZvVerb*>& verbs) const;

    Kind GetKind() const override { return Kind::Aggregate; }
    ZvBounds3D GetBounds(const ZvScaleSetup* scale) const override;
    bool MustPaint() const override;
    void FlushDone() override;
    void FlushNeverDone() override;
    /// The only child's, or a general one.
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool ChangesDrawing() const override;
    bool IsNullOp() const override;
    /// A child that asks to be undone at once has all of them undone.
    void Do() override;
    void Undo() override;
    bool IsUndoable(bool* quiet = nullptr) const override;
    bool IsRedoable() const override;
    /// All children or none.
    bool Redo() override;
    bool IsExemptFromBudget() const override;
    void UpdateLayersUsed() override;
    void RemoveFromSet(const ZvSelection& leaving) override;
    bool UsesEntities(const std::set<uint32_t>& names) const override;
    void CollectEntities(std::set<uint32_t>& names) const override;
    /// Those of the children.
    XStringW Refusal() const override;
    void SetParent(ZvDrawing* drawing) override;
    void SetSequence(int sequence) override;
    bool UsesLayers(const std::set<ZvLayer*>& layers) const override;
    bool WorksOn(const ZvDrawing& drawing) const override;
    void RestoreSelection() override;

protected:
    /// Drops children that cannot work on this drawing, and reports them.
    void VerifySanity();
    /// Whether a child may work on the drawing, which is not the aggregate's own.
    virtual bool Accepts(const ZvDrawing& other) const;
    const std::vector<std::unique_ptr<ZvVerb>>& Children() const { return m_children; }

private:
    std::vector<std::unique_ptr<ZvVerb>> m_children;
    size_t m_done =
        0; ///< children that are done, from the first on; one that failed by an exception is counted
};
