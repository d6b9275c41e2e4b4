#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "Zelvan/ZvServer.h"
#include "ZvCore/Log.h"
#include <algorithm>
#include <cstring>
#include <set>

// The clients section names the modules whose entities the file holds: for each a client record and its object type records.

namespace {

constexpr int kGuidFirstVersion = 1014;
constexpr int kBlockFirstVersion = 1028;
constexpr int kTypesFirstVersion = 1055;

} // namespace

// --- writing ---------------------------------------------------------------------------------------------------------------

uint16_t ZvNativeFile::ClientIdFor(const std::shared_ptr<const ZvNativeDesc::Client>& client) {
    Impl& impl = *m_impl;
    const ZvServer& server = *impl.drawing->Server();
    const ZvServer::Client* known =
        client->guid.IsNull() ? server.FindClient(client->name) : server.FindClient(client->guid);
    if (known)
        return known->code;
    std::set<uint16_t> taken;
    for (const auto& [id, other] : impl.foreignClients) {
        if (other == client || (!client->guid.IsNull() && other->guid == client->guid) ||
            (client->guid.IsNull() && other->guid.IsNull() && other->name == client->name))
            return id;
        taken.insert(id);
    }
    const auto isFree = [&](uint16_t id) { return id && !server.FindClient(id) && !taken.count(id); };
    uint16_t id = client->fileId;
    while (!isFree(id))
        ++id;
    impl.foreignClients.emplace_back(id, client);
    return id;
}

void ZvNativeFile::NoteProxyType(uint16_t clientId, uint16_t type, const ZvNativeDesc::Client& client) {
    const auto name = client.typeNames.find(type);
    m_impl->typesWritten[clientId].try_emplace(type,
                                               name == client.typeNames.end() ? std::string() : name->second);
}

void ZvNativeFile::Impl::WriteOneClient(ZvNativeClientRecord record) {
    const auto types = typesWritten.find(uint16_t(record.id));
    const auto count = desc->recordsWritten.find(uint16_t(record.id));
    record.records = count == desc->recordsWritten.end() ? 0 : count->second;
    record.types = types == typesWritten.end() ? 0 : uint32_t(types->second.size());
    uint8_t bytes[ZvNativeClientRecord::kSize];
    record.Store(bytes);
    desc->Write(bytes, sizeof bytes);
    if (types == typesWritten.end())
        return;
    for (const auto& [type, name] : types->second) {
        const ZvNativeTypeRecord typeRecord{type, 1, name};
        uint8_t typeBytes[ZvNativeTypeRecord::kSize];
        typeRecord.Store(typeBytes);
        desc->Write(typeBytes, sizeof typeBytes);
    }
}

bool ZvNativeFile::Impl::WriteClients() {
    header.clientsOffset = desc->Position();
    header.clientCount = 0;
    api.StartCompressBlock();
    const auto write = [&](const std::string& name, uint16_t id, const Guid& guid) {
        ZvNativeClientRecord record;
        record.name = name;
        record.id = id;
        std::memcpy(record.guid, guid.bytes.data(), sizeof record.guid);
        WriteOneClient(record);
        ++header.clientCount;
    };
    for (const ZvServer::Client* client : drawing->Server()->Clients())
        write(client->name, client->code, client->guid);
    std::sort(foreignClients.begin(), foreignClients.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [id, client] : foreignClients)
        write(client->name, id, client->guid);
    return api.EndCompressBlock() && !Target().Error();
}

// --- reading ---------------------------------------------------------------------------------------------------------------

/// A record that states its own size: the fixed form of it. False when the section ends before it does.
template <size_t size>
bool ZvNativeFile::Impl::ReadSized(uint8_t (&bytes)[size]) {
    const uint64_t start = desc->Position();
    uint32_t stored = 0;
    return desc->ReadValue(stored) && stored >= sizeof stored && desc->Seek(start) &&
           desc->ReadPad(bytes, size, stored);
}

bool ZvNativeFile::Impl::ReadOneClient() {
    uint8_t bytes[ZvNativeClientRecord::kSize];
    if (!ReadSized(bytes))
        return false;
    ZvNativeClientRecord record;
    record.Parse(bytes);
    auto client = std::make_shared<ZvNativeDesc::Client>();
    client->name = record.name;
    client->fileId = uint16_t(record.id);
    if (desc->version >= kGuidFirstVersion)
        std::memcpy(client->guid.bytes.data(), record.guid, sizeof record.guid);
    const ZvServer& server = *drawing->Server();
    const ZvServer::Client* running =
        client->guid.IsNull() ? server.FindClient(client->name) : server.FindClient(client->guid);
    client->runningId = running ? running->code : 0;
    if (desc->version >= kTypesFirstVersion)
        for (uint32_t i = 0; i < record.types; ++i) {
            uint8_t typeBytes[ZvNativeTypeRecord::kSize];
            if (!ReadSized(typeBytes))
                return false;
            ZvNativeTypeRecord type;
            type.Parse(typeBytes);
            if (type.hasName == 1)
                client->typeNames[type.type] = type.name;
        }
    if (record.id <= 0xFFFF)
        desc->clients.try_emplace(client->fileId, std::move(client));
    return true;
}

bool ZvNativeFile::Impl::ReadClients() {
    ZvLog::Write(ZvLog::Level::Info, "Reading clients\n");
    const bool inBlock = desc->version >= kBlockFirstVersion;
    if (!desc->Seek(header.clientsOffset) || (inBlock && !api.StartDecompressBlock()))
        return false;
    bool good = true;
    for (uint32_t i = 0; good && i < header.clientCount; ++i)
        good = ReadOneClient();
    if (inBlock)
        api.EndDecompressBlock();
    return good || Unreadable("clients section", header.clientsOffset, "it ends before its last record does");
}
