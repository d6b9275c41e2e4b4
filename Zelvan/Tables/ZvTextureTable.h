#pragma once
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/Tables/ZvTexture.h"

class ZV_API ZvTextureTable : public ZvTableOf<ZvTexture, ZvTableCode::Texture> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
    bool IsHeldByIndex() const override { return true; }
};
