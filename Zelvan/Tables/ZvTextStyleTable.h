#pragma once
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/Tables/ZvTextStyle.h"

class ZV_API ZvTextStyleTable : public ZvTableOf<ZvTextStyle, ZvTableCode::TextStyle> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
    bool IsHeldByIndex() const override { return true; }
    /// A style named "Standard" when the table is empty.
    void CreateDefaults() override;
    /// The current style, else the first; null in an empty table.
    ZvTextStyle* GetDefaultStyle() const;
    /// Family of the default style, else that of a new style.
    XStringW GetDefaultFont() const;
};
