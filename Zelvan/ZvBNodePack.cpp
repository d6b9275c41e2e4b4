// The packed form: u32 'ZBNP', u32 count of entities, then for each its internal flag word (u16) and its record.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvEntityRecords.h"
#include "ZvCore/MemFile.h"
#include <tuple>
#include <unordered_set>

namespace {

constexpr uint32_t kMagic = 0x504E425A;

} // namespace

bool ZvBNode::Pack(std::vector<uint8_t>& target) const {
    ZvDrawing* drawing = Drawing();
    if (!drawing)
        return false;
    ZvCore::MemFile stream;
    ZvEntityRecords records(*drawing, stream);
    stream.WriteValue(kMagic);
    stream.WriteValue(uint32_t(Count()));
    bool ok = true;
    const Predicate write = [](void* context, ZvEntity* entity) {
        auto& [file, writer, fine] =
            *static_cast<std::tuple<ZvCore::MemFile&, ZvEntityRecords&, bool&>*>(context);
        fine = file.WriteValue(entity->GetFlagsMask()) && writer.Write(*entity);
        return fine;
    };
    std::tuple<ZvCore::MemFile&, ZvEntityRecords&, bool&> context(stream, records, ok);
    VisitAll(write, &context);
    if (!ok || stream.Error())
        return false;
    target = stream.Take();
    return true;
}

size_t ZvBNode::ComputePackedSize() const {
    std::vector<uint8_t> packed;
    return Pack(packed) ? packed.size() : 0;
}

bool ZvBNode::UnpackEntities(std::span<const uint8_t> packed,
                             std::vector<std::unique_ptr<ZvEntity>>& entities) const {
    ZvDrawing* drawing = Drawing();
    if (!drawing)
        return false;
    const std::unique_ptr<ZvCore::MemFile> stream = ZvCore::MemFile::OverView(packed.data(), packed.size());
    ZvEntityRecords records(*drawing, *stream);
    uint32_t magic = 0, count = 0;
    if (!stream->ReadValue(magic) || !stream->ReadValue(count) || magic != kMagic)
        return false;
    std::vector<std::unique_ptr<ZvEntity>> read;
    for (uint32_t i = 0; i < count; ++i) {
        uint16_t flags = 0;
        std::unique_ptr<ZvEntity> entity = stream->ReadValue(flags) ? records.Read() : nullptr;
        if (!entity)
            return false;
        entity->SetFlagsMask(flags);
        read.push_back(std::move(entity));
    }
    if (stream->Remaining() > 0)
        return false;
    for (std::unique_ptr<ZvEntity>& entity : read)
        entities.push_back(std::move(entity));
    return true;
}

bool ZvBNode::Unpack(std::span<const uint8_t> packed) {
    std::vector<std::unique_ptr<ZvEntity>> entities;
    if (!IsRoot() || !UnpackEntities(packed, entities))
        return false;
    dvect<ZvEntity*> old, fresh;
    EnumAll(old);
    ClearAll();
    fresh.reserve(entities.size());
    std::unordered_set<uint32_t> names;
    for (std::unique_ptr<ZvEntity>& entity : entities) {
        names.insert(entity->Name32());
        fresh.push_back(entity.release());
    }
    for (ZvEntity* entity : old)
        if (!names.contains(entity->Name32()))
            ForgetName(entity);
    InsertBulk({fresh.data(), fresh.size()});
    TakeOverNames(fresh);
    for (ZvEntity* entity : old)
        delete entity;
    return true;
}

void ZvBNode::TakeOverNames(const dvect<ZvEntity*>& entities) const {
    ZvEntityNameTable& table = Drawing()->NameTable();
    for (ZvEntity* entity : entities) {
        if (table.Exists(entity->Name()))
            table.Update(entity->Name(), entity);
        else if (!entity->Name().IsNull())
            table.Update(entity);
    }
}
