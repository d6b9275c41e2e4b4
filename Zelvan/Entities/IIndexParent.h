#pragma once
#include "ZvCore/Api.h"

/// What shows the entities of a block and keeps an index over them. Told when the block's entities changed.
class ZV_API IIndexParent {
public:
    virtual ~IIndexParent() = default;
    /// Drops what was derived from the block.
    virtual void BlockTouched() = 0;
};
