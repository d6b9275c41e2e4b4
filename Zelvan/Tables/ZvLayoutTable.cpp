#include "Zelvan/Tables/ZvLayoutTable.h"
#include <algorithm>

XStringW ZvLayoutTable::DefaultNameBase() const {
    return u"Layout";
}

std::vector<ZvLayout*> ZvLayoutTable::GetOrdered() const {
    std::vector<ZvLayout*> layouts;
    for (int i = 0; i < Count(); ++i)
        if (!Get(i)->IsErased())
            layouts.push_back(Get(i));
    std::stable_sort(layouts.begin(), layouts.end(),
                     [](const ZvLayout* a, const ZvLayout* b) { return a->GetOrder() < b->GetOrder(); });
    return layouts;
}

ZvLayout* ZvLayoutTable::FindByDrawing(const ZvDrawing* drawing) const {
    for (int i = 0; i < Count(); ++i)
        if (drawing && Get(i)->Drawing() == drawing)
            return Get(i);
    return nullptr;
}
