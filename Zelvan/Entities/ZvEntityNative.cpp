// The head of file records, and the flat copy in memory, which is a file record too.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvEntityRecords.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeHeader.h"
#include "ZvCore/MemFile.h"
#include <cstring>

bool ZvEntity::NativeOutBase(ZvNativeDesc& desc, uint32_t extraFlags) const {
    ZvNativeRecordHead head;
    head.client = GetClientCode();
    head.type = GetEntityCode();
    head.name = m_name;
    head.colorValue = m_colorValue;
    head.colorIndex = m_colorIndex;
    head.flags = GetFlags() | extraFlags | kPubKeepAsProxy;
    uint8_t bytes[ZvNativeRecordHead::kSize];
    head.Store(bytes);
    desc.CountRecord(head.client);
    return !desc.Write(bytes, sizeof bytes);
}

bool ZvEntity::NativeInBase(ZvNativeDesc& desc) {
    uint8_t bytes[ZvNativeRecordHead::kSize];
    const bool usual = desc.entityHeadSize == ZvNativeRecordHead::kSize;
    if (!(usual ? desc.Read(bytes, sizeof bytes) : desc.ReadPad(bytes, sizeof bytes, desc.entityHeadSize)))
        return true;
    ZvNativeRecordHead head;
    head.Parse(bytes, desc.version);
    uint32_t name = 0;
    if (!head.Name32(name))
        return true;
    m_name = name;
    m_colorValue = head.colorValue;
    m_colorIndex = head.colorIndex;
    m_owner = nullptr;
    SetFlags(head.flags);
    return false;
}

bool ZvEntity::SerializeHard(uint8_t* buffer, size_t size) const {
    ZvDrawing* drawing = ParentDrawing();
    ZvCore::MemFile record;
    if (!drawing || !ZvEntityRecords(*drawing, record).Write(*this) || record.Length() > size)
        return false;
    std::memcpy(buffer, record.Data(), size_t(record.Length()));
    return true;
}

size_t ZvEntity::SerializeHardSize() const {
    ZvDrawing* drawing = ParentDrawing();
    ZvCore::MemFile record;
    return drawing && ZvEntityRecords(*drawing, record).Write(*this) ? size_t(record.Length()) : 0;
}
