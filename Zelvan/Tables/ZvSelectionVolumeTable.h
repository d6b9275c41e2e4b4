#pragma once
#include "Zelvan/Tables/ZvSelectionVolume.h"
#include "Zelvan/Tables/ZvTable.h"

class ZV_API ZvSelectionVolumeTable : public ZvTableOf<ZvSelectionVolume, ZvTableCode::SelectionVolume> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
    std::vector<ZvSelectionVolume*> GetActive() const;
};
