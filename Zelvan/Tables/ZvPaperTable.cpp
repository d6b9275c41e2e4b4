#include "Zelvan/Tables/ZvPaperTable.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>

XStringW ZvPaperTable::DefaultNameBase() const {
    return u"Paper";
}

void ZvPaperTable::CreateDefaults() {
    if (Count() > 0)
        return;
    auto page = std::make_unique<ZvPaperPage>();
    page->SetNameFinal(u"Paper1");
    const ZvDrawing* drawing = GetParent();
    if (drawing && drawing->LayerTable())
        if (const ZvBounds3D extents = drawing->LayerTable()->WorldExtents(); !extents.IsNull())
            page->SetCenter(extents.Center());
    page->SetBelongsToLayout(drawing && drawing->IsChildLayout());
    if (Zv::Ok(Insert(std::move(page))))
        SetAnyCurrent();
}

std::vector<ZvPaperPage*> ZvPaperTable::GetPrintOrder() const {
    std::vector<ZvPaperPage*> pages;
    for (int i = 0; i < Count(); ++i)
        if (!Get(i)->IsErased())
            pages.push_back(Get(i));
    std::stable_sort(pages.begin(), pages.end(), [](const ZvPaperPage* a, const ZvPaperPage* b) {
        return a->GetOrder() < b->GetOrder();
    });
    return pages;
}
