#include "Zelvan/Tables/ZvTextureTable.h"

XStringW ZvTextureTable::DefaultNameBase() const {
    return u"Texture";
}
