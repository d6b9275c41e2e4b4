#include "Zelvan/Tables/ZvDimStyleTable.h"

namespace {

const char16_t kDefaultStyle[] = u"Default";

} // namespace

XStringW ZvDimStyleTable::DefaultNameBase() const {
    return u"Dimension Style";
}

void ZvDimStyleTable::CreateDefaults() {
    if (!GetByName(kDefaultStyle))
        InsertNew(kDefaultStyle);
    SetAnyCurrent();
}

ZvDimStyle* ZvDimStyleTable::GetDefaultStyle() const {
    if (GetCurrent())
        return GetCurrent();
    ZvDimStyle* style = GetByName(kDefaultStyle);
    return style ? style : Get(0);
}
