#include "Zelvan/ZvEntityRecords.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvServer.h"
#include "ZvCore/MemFile.h"

ZvEntityRecords::ZvEntityRecords(ZvDrawing& drawing, ZvCore::MemFile& stream) : m_stream(stream) {
    m_file.Attach(drawing, stream);
}

bool ZvEntityRecords::Write(const ZvEntity& entity) {
    const uint64_t start = m_stream.Position();
    if (!entity.NativeOut(m_file.Desc()) && m_stream.Position() > start)
        return true;
    m_stream.Seek(start);
    return false;
}

std::unique_ptr<ZvEntity> ZvEntityRecords::Read() {
    ZvNativeDesc& desc = m_file.Desc();
    const uint64_t start = m_stream.Position();
    const uint8_t* bytes = m_stream.View(start, ZvNativeRecordHead::kSize);
    if (!bytes)
        return nullptr;
    ZvNativeRecordHead head;
    head.Parse(bytes, desc.version);
    const ZvNativeDesc::RecordScope record(desc, start, head.length);
    if (!record.Fits() || head.length < ZvNativeRecordHead::kSize)
        return nullptr;
    std::unique_ptr<ZvEntity> entity = desc.Drawing().Server()->NewEntity(head.client, head.type);
    if (!entity || entity->NativeIn(desc))
        return nullptr;
    return entity;
}
