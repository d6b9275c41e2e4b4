#pragma once
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/Tables/ZvXRef.h"

class ZV_API ZvXRefTable : public ZvTableOf<ZvXRef, ZvTableCode::XRef> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
    ZvXRef* GetByPath(const XStringW& path) const;
};
