#pragma once
#include "Zelvan/Tables/ZvDimStyle.h"
#include "Zelvan/Tables/ZvTable.h"

class ZV_API ZvDimStyleTable : public ZvTableOf<ZvDimStyle, ZvTableCode::DimStyle> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
    bool IsHeldByIndex() const override { return true; }
    /// A record named "Default".
    void CreateDefaults() override;
    ZvDimStyle* GetDefaultStyle() const;
};
