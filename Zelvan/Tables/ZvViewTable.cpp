#include "Zelvan/Tables/ZvViewTable.h"

XStringW ZvViewTable::DefaultNameBase() const {
    return u"View";
}
