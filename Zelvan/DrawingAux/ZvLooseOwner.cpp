#include "Zelvan/DrawingAux/ZvLooseOwner.h"
#include "Zelvan/Entities/ZvEntity.h"

bool ZvLooseOwner::OwnerRemove(ZvEntity* entity) {
    if (!entity || entity->Owner() != this)
        return false;
    entity->SetParentBlock(nullptr);
    return true;
}
