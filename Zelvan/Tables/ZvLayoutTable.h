#pragma once
#include "Zelvan/Tables/ZvLayout.h"
#include "Zelvan/Tables/ZvTable.h"

class ZV_API ZvLayoutTable : public ZvTableOf<ZvLayout, ZvTableCode::Layout> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
    /// Sorted by GetOrder, then by index.
    std::vector<ZvLayout*> GetOrdered() const;
    /// The layout whose child drawing that is, null for none.
    ZvLayout* FindByDrawing(const ZvDrawing* drawing) const;
};
