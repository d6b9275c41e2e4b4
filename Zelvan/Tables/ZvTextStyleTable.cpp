#include "Zelvan/Tables/ZvTextStyleTable.h"

XStringW ZvTextStyleTable::DefaultNameBase() const {
    return u"Style";
}

void ZvTextStyleTable::CreateDefaults() {
    if (Count() == 0)
        InsertNew(u"Standard");
    SetAnyCurrent();
}

ZvTextStyle* ZvTextStyleTable::GetDefaultStyle() const {
    return GetCurrent() ? GetCurrent() : Get(0);
}

XStringW ZvTextStyleTable::GetDefaultFont() const {
    const ZvTextStyle* style = GetDefaultStyle();
    return style ? style->GetFont() : ZvTextStyle().GetFont();
}
