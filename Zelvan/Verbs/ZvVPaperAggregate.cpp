#include "Zelvan/Verbs/ZvVPaperAggregate.h"
#include "Zelvan/ZvDrawing.h"
#include <set>

bool ZvVPaperAggregate::Accepts(const ZvDrawing& other) const {
    return other.ParentLayoutDrawing() == Drawing();
}

void ZvVPaperAggregate::Do() {
    ZvVAggregate::Do();
    PagesChanged();
}

void ZvVPaperAggregate::Undo() {
    ZvVAggregate::Undo();
    PagesChanged();
}

bool ZvVPaperAggregate::Redo() {
    if (!ZvVAggregate::Redo())
        return false;
    PagesChanged();
    return true;
}

void ZvVPaperAggregate::PagesChanged() const {
    std::set<ZvDrawing*> layouts;
    for (const auto& child : Children())
        if (child->Drawing() != Drawing() && child->ChangesDrawing())
            layouts.insert(child->Drawing());
    for (ZvDrawing* layout : layouts) {
        layout->SetModified();
        layout->Regenerate();
    }
}
