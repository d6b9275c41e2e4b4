#pragma once
#include "Zelvan/Verbs/ZvVerb.h"

/// Changes the drawing's current selection. The drawing itself stays as it is and does not become dirty.
class ZV_API ZvVChangeSS : public ZvVerb {
public:
    /// `selection` becomes the current one; that of the moment of doing comes back with the undo.
    explicit ZvVChangeSS(const ZvSelection& selection);

    Kind GetKind() const override { return Kind::Selection; }
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool ChangesDrawing() const override { return false; }
    bool IsNullOp() const override;
    void Do() override;
    void Undo() override;
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    ZvSelection m_former;
    bool m_wasDone = false;
};
