#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Entities/ZvRawCompound.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "Zelvan/ZvSelection.h"
#include "Zelvan/ZvServer.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Log.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>

// An entity list is an int64 count and that many records, each a record head and the payload of its kind.

namespace {

/// Between two looks at the progress.
constexpr int64_t kProgressEvery = 16384;
/// Lists of compounds in compounds; a file that nests deeper was made to exhaust the stack.
constexpr int kDeepestList = 64;

} // namespace

bool ZvNativeFile::IsSaved(const ZvEntity& entity) const {
    if (entity.IsErased())
        return false;
    const ZvNativeOptions& options = m_impl->options;
    return !options.selectionOnly || !options.selection ||
           options.selection->ParentDrawing() != &m_impl->desc->Drawing() ||
           options.selection->Contains(&entity);
}

// --- writing ---------------------------------------------------------------------------------------------------------------

int64_t ZvNativeFile::WriteEntityList(const std::vector<ZvEntity*>& entities) {
    ZvNativeDesc& desc = *m_impl->desc;
    const uint64_t start = desc.Position();
    int64_t written = 0, failures = 0;
    desc.WriteValue(int64_t(0));
    for (const ZvEntity* entity : entities) {
        written += !entity->IsErased() && m_impl->WriteEntity(*entity, failures);
        if (desc.File().Error()) {
            ZvLog::Printf(ZvLog::Level::Error, "File error: %s\n", desc.File().ErrorText().c_str());
            break;
        }
    }
    const uint64_t end = desc.Position();
    desc.Seek(start);
    desc.WriteValue(written);
    desc.Seek(end);
    return written;
}

bool ZvNativeFile::Impl::WriteEntity(const ZvEntity& entity, int64_t& failures) {
    const uint64_t start = desc->Position();
    if (entity.NativeOut(*desc)) {
        ++failures;
        desc->Seek(start);
        if (!desc->File().Error())
            Warn(0, XStringA::Format(ZvStrings::Get(ZvStr::SaveEntityFailed), entity.Name32(),
                                     entity.VerbalName().ToUtf8().c_str())
                        .Str());
        return false;
    }
    if (desc->Position() == start)
        return false;
    NoteType(entity);
    return true;
}

void ZvNativeFile::Impl::NoteType(const ZvEntity& entity) {
    const uint32_t code = entity.GetFullCode();
    if (code == lastTypeWritten)
        return;
    const auto* compound = dynamic_cast<const ZvRawCompound*>(&entity);
    if (compound && compound->IsProxy())
        return; // told of its own when it was written
    const uint16_t client = entity.GetClientCode(), type = entity.GetEntityCode();
    if (const ZvServer::Kind* kind = drawing->Server()->FindKind(client, type)) {
        typesWritten[client].try_emplace(type, kind->typeName);
        lastTypeWritten = code;
    }
}

// --- reading ---------------------------------------------------------------------------------------------------------------

int64_t ZvNativeFile::ReadEntityList(ZvEntityList& entities) {
    Impl& impl = *m_impl;
    ZvNativeDesc& desc = *impl.desc;
    const uint64_t listAt = desc.Position();
    int64_t count = 0;
    if (!desc.ReadValue(count) || count < 0 || impl.listDepth >= kDeepestList) {
        impl.ListEndsEarly(count, listAt);
        return 0;
    }
    ++impl.listDepth;
    const int64_t read = impl.ReadRecords(count, entities);
    --impl.listDepth;
    return read;
}

int64_t ZvNativeFile::Impl::ReadRecords(int64_t count, ZvEntityList& entities) {
    int64_t failures = 0;
    const uint64_t possible = desc->RecordRemaining() / std::max<uint64_t>(desc->entityHeadSize, 1);
    const size_t wanted = entities.size() + size_t(std::min<uint64_t>(uint64_t(count), possible));
    if (entities.capacity() < wanted)
        entities.reserve(std::max(wanted, 2 * entities.capacity()));
    for (int64_t i = 0; i < count; ++i) {
        const uint64_t start = desc->Position();
        ZvNativeRecordHead head;
        if (!ReadHead(head) || head.length > desc->RecordEnd() - start) {
            ListEndsEarly(count - i, start);
            return i - failures;
        }
        if (i % kProgressEvery == kProgressEvery - 1 && !Step("Loading", start, desc->RecordEnd()))
            return i - failures;
        const ZvNativeDesc::RecordScope record(*desc, start, head.length);
        ReadOneRecord(start, head, entities, failures);
    }
    return count - failures;
}

/// The head at the position, which comes back; false for one that cannot be a record's.
bool ZvNativeFile::Impl::ReadHead(ZvNativeRecordHead& head) {
    const uint64_t start = desc->Position();
    if (desc->memory && desc->entityHeadSize == ZvNativeRecordHead::kSize) {
        if (desc->RecordRemaining() < ZvNativeRecordHead::kSize)
            return false;
        head.Parse(desc->memory->View(start, ZvNativeRecordHead::kSize), desc->version);
    } else {
        uint8_t bytes[ZvNativeRecordHead::kSize];
        if (!desc->ReadPad(bytes, sizeof bytes, desc->entityHeadSize) || !desc->Seek(start))
            return false;
        head.Parse(bytes, desc->version);
    }
    return head.length >= desc->entityHeadSize;
}

void ZvNativeFile::Impl::ReadOneRecord(uint64_t start, const ZvNativeRecordHead& head, ZvEntityList& entities,
                                       int64_t& failures) {
    const auto client = desc->clients.find(head.client);
    const uint16_t running = client == desc->clients.end() ? 0 : client->second->runningId;
    std::unique_ptr<ZvEntity> entity = drawing->Server()->NewEntity(running, head.type);
    if (!entity) {
        KeepUnknown(start, head, entities, failures);
        return;
    }
    if (entity->NativeIn(*desc)) {
        ++failures;
        Damage& damage = damaged[uint32_t(running) << 16 | head.type];
        if (damage.count++ == 0)
            damage.block = outerBlockAt, damage.offset = start;
        return;
    }
    entities.push_back(std::move(entity));
}

void ZvNativeFile::Impl::KeepUnknown(uint64_t start, const ZvNativeRecordHead& head, ZvEntityList& entities,
                                     int64_t& failures) {
    ++ClientOf(head.client).notLoaded;
    if (head.flags & ZvEntity::kPubKeepAsProxy) {
        desc->Seek(start);
        if (std::unique_ptr<ZvEntity> proxy = api.ReadProxyObject()) {
            entities.push_back(std::move(proxy));
            return;
        }
    }
    ++failures;
}

std::unique_ptr<ZvEntity> ZvNativeFile::ReadProxyObject() {
    ZvNativeDesc& desc = *m_impl->desc;
    const uint64_t start = desc.Position();
    ZvNativeRecordHead head;
    if (!m_impl->ReadHead(head) || head.length > desc.RecordRemaining())
        return nullptr;
    const uint64_t payload = head.length - desc.entityHeadSize;
    head.length = ZvNativeRecordHead::kSize + payload;
    std::vector<uint8_t> record(size_t(head.length));
    head.Store(record.data());
    if (!desc.Seek(start + desc.entityHeadSize) ||
        !desc.Read(record.data() + ZvNativeRecordHead::kSize, size_t(payload))) {
        desc.Seek(start);
        return nullptr;
    }
    auto proxy = std::make_unique<ZvRawCompound>();
    m_impl->ClientOf(head.client);
    proxy->SetProxyRecord(std::move(record), desc.clients.at(head.client));
    desc.proxies[ZvEntityCode::Full(head.client, head.type)].push_back(proxy.get());
    return proxy;
}

ZvNativeDesc::Client& ZvNativeFile::Impl::ClientOf(uint16_t fileId) {
    std::shared_ptr<ZvNativeDesc::Client>& client = desc->clients[fileId];
    if (!client) {
        client = std::make_shared<ZvNativeDesc::Client>();
        client->name = "client " + std::to_string(fileId);
        client->fileId = fileId;
    }
    return *client;
}

void ZvNativeFile::Impl::ListEndsEarly(int64_t left, uint64_t at) {
    const std::string inBlock = stack.empty() ? std::string()
                                              : XStringA::Format(ZvStrings::Get(ZvStr::LoadInBlock),
                                                                 static_cast<long long>(outerBlockAt))
                                                    .Str();
    recordsLost += uint64_t(std::max<int64_t>(left, 0));
    api.AddError(int(ZvErrorCode::BlockUnreadable),
                 XStringA::Format(ZvStrings::Get(ZvStr::LoadListEnds), static_cast<long long>(at),
                                  inBlock.c_str(), static_cast<long long>(left))
                     .Str());
}
