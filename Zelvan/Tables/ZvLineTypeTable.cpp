#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/ZvStrings.h"

XStringW ZvLineTypeTable::DefaultNameBase() const {
    return u"Linetype";
}

void ZvLineTypeTable::CreateDefaults() {
    static constexpr struct {
        int text;
        double a, b, c;
    } kDefaults[] = {{ZvStr::LineTypeDashed, 4, 4, 2}, {ZvStr::LineTypeDotted, 1, 3, 2}};
    for (const auto& wanted : kDefaults) {
        const XStringW name = ZvStrings::GetW(wanted.text);
        if (GetByName(name))
            continue;
        auto record = std::make_unique<ZvLineTypeRec>();
        record->SetNameFinal(name);
        record->SetInternal(true);
        record->SetPattern(wanted.a, wanted.b, wanted.c);
        (void)Insert(std::move(record)); // the name is free and the record new: it cannot be refused
    }
}
