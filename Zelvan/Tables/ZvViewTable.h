#pragma once
#include "Zelvan/Tables/ZvNamedView.h"
#include "Zelvan/Tables/ZvTable.h"

class ZV_API ZvViewTable : public ZvTableOf<ZvNamedView, ZvTableCode::View> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
};
