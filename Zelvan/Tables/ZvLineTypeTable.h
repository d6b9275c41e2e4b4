#pragma once
#include "Zelvan/Tables/ZvLineTypeRec.h"
#include "Zelvan/Tables/ZvTable.h"

class ZV_API ZvLineTypeTable : public ZvTableOf<ZvLineTypeRec, ZvTableCode::LineType> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
    bool IsHeldByIndex() const override { return true; }
    /// Two internal records, named by the texts 40000 and 40001, with the parameters (4, 4, 2) and (1, 3, 2).
    void CreateDefaults() override;
};
