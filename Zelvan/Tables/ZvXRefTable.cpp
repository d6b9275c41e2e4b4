#include "Zelvan/Tables/ZvXRefTable.h"

XStringW ZvXRefTable::DefaultNameBase() const {
    return u"XRef";
}

ZvXRef* ZvXRefTable::GetByPath(const XStringW& path) const {
    for (int i = 0; i < Count(); ++i)
        if (Get(i)->GetPath().EqualsNoCase(path) && !Get(i)->IsErased())
            return Get(i);
    return nullptr;
}
