#include "Zelvan/Tables/ZvSelectionVolumeTable.h"

XStringW ZvSelectionVolumeTable::DefaultNameBase() const {
    return u"Selection Volume ";
}

std::vector<ZvSelectionVolume*> ZvSelectionVolumeTable::GetActive() const {
    std::vector<ZvSelectionVolume*> active;
    for (int i = 0; i < Count(); ++i)
        if (Get(i)->IsActive() && !Get(i)->IsErased())
            active.push_back(Get(i));
    return active;
}
