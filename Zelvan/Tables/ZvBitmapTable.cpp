#include "Zelvan/Tables/ZvBitmapTable.h"

namespace {

bool WantsEmbedding(const ZvBitmapRec& record) {
    return record.IsLinked() && record.IsEmbedOnSave() && record.GetBytes().empty() && !record.IsErased();
}

} // namespace

XStringW ZvBitmapTable::DefaultNameBase() const {
    return u"Bitmap";
}

bool ZvBitmapTable::SavingChanges() const {
    for (int i = 0; i < Count(); ++i)
        if (WantsEmbedding(*Get(i)))
            return true;
    return false;
}

void ZvBitmapTable::PrepareSave(const std::string& folder) {
    for (int i = 0; i < Count(); ++i)
        if (WantsEmbedding(*Get(i)))
            Get(i)->LoadLinked(folder);
}

ZvBitmapRec* ZvBitmapTable::GetByPath(const XStringW& path) const {
    for (int i = 0; i < Count(); ++i)
        if (Get(i)->GetPath().EqualsNoCase(path) && !Get(i)->IsErased())
            return Get(i);
    return nullptr;
}
