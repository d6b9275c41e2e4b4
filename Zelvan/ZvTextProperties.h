#pragma once
#include "Zelvan/ZvUniSize.h"

/// What new texts start with: a record of the text style table and a size.
struct ZvTextProperties {
    int style = -1; ///< index in the text style table, -1 for none
    ZvUniSize size;
    friend bool operator==(const ZvTextProperties& a, const ZvTextProperties& b) {
        return a.style == b.style && a.size == b.size;
    }
};
