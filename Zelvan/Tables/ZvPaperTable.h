#pragma once
#include "Zelvan/Tables/ZvPaperPage.h"
#include "Zelvan/Tables/ZvTable.h"

class ZV_API ZvPaperTable : public ZvTableOf<ZvPaperPage, ZvTableCode::Paper> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
    /// An empty table gets the page "Paper1", centred on the layers' world extents.
    void CreateDefaults() override;
    /// Pages in print order.
    std::vector<ZvPaperPage*> GetPrintOrder() const;
};
