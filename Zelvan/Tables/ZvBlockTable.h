#pragma once
#include "Zelvan/Tables/ZvBlock.h"
#include "Zelvan/Tables/ZvTable.h"

class ZV_API ZvBlockTable : public ZvTableOf<ZvBlock, ZvTableCode::Block> {
public:
    explicit ZvBlockTable(ZvDrawing* parent);
    ~ZvBlockTable() override;
    XStringW DefaultNameBase() const override;
    bool IsHeldByIndex() const override { return true; }
    /// What a reference without a block shows: a cross of size 1 around the origin. Not listed in the table,
    /// never saved.
    ZvBlock& DummyBlock();
    /// The record at the index; the dummy block for 65535 and for indices that no record has.
    ZvBlock& GetNoFail(int index);
    /// Block records that refer to themselves, directly or through others, cannot be shown.
    bool IsRecursive(const ZvBlock& block) const;

    // The entities of blocks have names: the drawing comes to them by those.
    void ExternalTableUsage(ZvUsageTable&) const override {}
    void TableUpdate(ZvNativeDesc&) override {}

private:
    std::unique_ptr<ZvBlock> m_dummy;
};
