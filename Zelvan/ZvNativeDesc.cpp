#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/Entities/ZvEntityTypes.h"

void ZvNativeDesc::SetTableIndex(uint32_t tableCode, int fileIndex, int drawingIndex) {
    m_tableIndex[tableCode][fileIndex] = drawingIndex;
}

void ZvNativeDesc::CopyTableIndex(uint32_t tableCode, const ZvNativeDesc& from) {
    const auto table = from.m_tableIndex.find(tableCode);
    if (table == from.m_tableIndex.end())
        m_tableIndex.erase(tableCode);
    else
        m_tableIndex[tableCode] = table->second;
}

int ZvNativeDesc::TranslateIndex(uint32_t tableCode, int fileIndex, bool strict) const {
    const auto table = m_tableIndex.find(tableCode);
    if (table != m_tableIndex.end()) {
        const auto index = table->second.find(fileIndex);
        if (index != table->second.end())
            return index->second;
        return strict ? -1 : fileIndex;
    }
    return fileIndex;
}

uint32_t ZvNativeDesc::TranslateName(uint32_t fileName) const {
    const auto found = nameTranslation.find(fileName);
    return found == nameTranslation.end() ? fileName : found->second;
}

bool ZvNativeDesc::MustWriteRecord(uint32_t tableCode, int index) const {
    return !usedRecords || usedRecords->Count(tableCode, index) > 0;
}
