#pragma once
#include "Zelvan/Tables/ZvBitmapRec.h"
#include "Zelvan/Tables/ZvTable.h"

class ZV_API ZvBitmapTable : public ZvTableOf<ZvBitmapRec, ZvTableCode::Bitmap> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
    bool IsHeldByIndex() const override { return true; }
    /// Some linked image is to be embedded by the next save.
    bool SavingChanges() const override;
    /// Embeds linked images that ask for it and can be read.
    void PrepareSave(const std::string& folder = {}) override;
    ZvBitmapRec* GetByPath(const XStringW& path) const;
};
