#pragma once
#include "Zelvan/Verbs/ZvVAggregate.h"

/// An aggregate for the paper pages of layouts: its children may also work on the layouts' drawings. Those then
/// become dirty and are repainted, sheet and all.
class ZV_API ZvVPaperAggregate : public ZvVAggregate {
public:
    using ZvVAggregate::ZvVAggregate;

    Kind GetKind() const override { return Kind::PaperAggregate; }
    void Do() override;
    void Undo() override;
    bool Redo() override;

protected:
    /// Those of layouts of the aggregate's drawing.
    bool Accepts(const ZvDrawing& other) const override;

private:
    void PagesChanged() const;
};
