#include "Zelvan/ZvServer.h"
#include "Zelvan/DrawingAux/ZvUndoSettings.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvEntityKinds.h"
#include <algorithm>

ZvServer& ZvServer::Instance() {
    static ZvServer server;
    return server;
}

ZvServer::ZvServer() {
    RegisterClient(BuiltInClient());
    for (const Kind& kind : ZvBuiltInKinds())
        RegisterKind(kind);
}

ZvServer::~ZvServer() = default;

const ZvServer::Client& ZvServer::BuiltInClient() {
    // Stands in every file: programs tell by it that a kind is one of the library's.
    static const Client client{
        ZvEntityCode::kBuiltInClient,
        "Zelvan",
        {{0xEF, 0x51, 0xF6, 0x99, 0xE2, 0x56, 0x4F, 0xD1, 0xBA, 0x48, 0x62, 0xBA, 0xF1, 0x10, 0x68, 0x5C}}};
    return client;
}

// --- drawings ----------------------------------------------------------------------------------------------------------------

bool ZvServer::IsRegistered(const ZvDrawing* drawing) const {
    return std::find(m_drawings.begin(), m_drawings.end(), drawing) != m_drawings.end();
}

void ZvServer::RegisterDrawing(ZvDrawing* drawing) {
    if (!drawing || IsRegistered(drawing))
        return;
    m_drawings.push_back(drawing);
    PostEvent(kDrawingRegistered, 0, drawing);
}

void ZvServer::RegisterDrawingCreated(ZvDrawing* drawing) {
    if (IsRegistered(drawing))
        PostEvent(kDrawingCreated, 0, drawing);
}

void ZvServer::Unregister(ZvDrawing* drawing) {
    if (!IsRegistered(drawing))
        return;
    std::erase(m_drawings, drawing);
    if (m_current == drawing)
        SetCurrentDrawing(nullptr);
    PostEvent(kDrawingUnregistered, 0, drawing);
}

bool ZvServer::SetCurrentDrawing(ZvDrawing* drawing) {
    if (drawing && !IsRegistered(drawing))
        return false;
    if (m_current != drawing) {
        m_current = drawing;
        PostEvent(kCurrentDrawingChanged, 0, drawing);
    }
    return true;
}

// --- clients and kinds -------------------------------------------------------------------------------------------------------

bool ZvServer::RegisterClient(const Client& client) {
    if (client.code == 0 || client.name.empty() || client.guid.IsNull() || FindClient(client.code) ||
        FindClient(client.guid) || FindClient(client.name))
        return false;
    m_clients.emplace(client.code, client);
    return true;
}

bool ZvServer::RegisterKind(const Kind& kind) {
    if (!FindClient(kind.client) || !kind.make ||
        !m_kinds.emplace(ZvEntityCode::Full(kind.client, kind.type), kind).second)
        return false;
    if (kind.client == ZvEntityCode::kBuiltInClient) {
        if (m_builtIn.size() <= kind.type)
            m_builtIn.resize(kind.type + 1u);
        m_builtIn[kind.type] = kind.make;
    }
    return true;
}

const ZvServer::Client* ZvServer::FindClient(uint16_t code) const {
    const auto found = m_clients.find(code);
    return found == m_clients.end() ? nullptr : &found->second;
}

const ZvServer::Client* ZvServer::FindClient(const Guid& guid) const {
    for (const auto& [code, client] : m_clients)
        if (client.guid == guid)
            return &client;
    return nullptr;
}

const ZvServer::Client* ZvServer::FindClient(std::string_view name) const {
    for (const auto& [code, client] : m_clients)
        if (client.name == name)
            return &client;
    return nullptr;
}

std::vector<const ZvServer::Client*> ZvServer::Clients() const {
    std::vector<const Client*> clients;
    for (const auto& [code, client] : m_clients)
        clients.push_back(&client);
    return clients;
}

const ZvServer::Kind* ZvServer::FindKind(uint16_t client, uint16_t type) const {
    const auto found = m_kinds.find(ZvEntityCode::Full(client, type));
    return found == m_kinds.end() ? nullptr : &found->second;
}

std::vector<const ZvServer::Kind*> ZvServer::Kinds(uint16_t client) const {
    std::vector<const Kind*> kinds;
    for (const auto& [code, kind] : m_kinds)
        if (kind.client == client)
            kinds.push_back(&kind);
    return kinds;
}

std::unique_ptr<ZvEntity> ZvServer::NewEntity(uint16_t client, uint16_t type) const {
    if (client == ZvEntityCode::kBuiltInClient)
        return type < m_builtIn.size() && m_builtIn[type] ? m_builtIn[type]() : nullptr;
    const Kind* kind = FindKind(client, type);
    return kind ? kind->make() : nullptr;
}

std::unique_ptr<ZvEntity> ZvServer::NewEntity(uint32_t fullCode) const {
    return NewEntity(uint16_t(fullCode >> 16), uint16_t(fullCode));
}

// --- settings ----------------------------------------------------------------------------------------------------------------

void ZvServer::LoadSettings(const ZvCore::BinXmlNode& node, const IZvClock& clock) {
    m_settings.Load(node);
    ZvUndoSettings::Apply(m_settings, clock.Now(), ZvUndoSettings::PhysicalMemory());
}

void ZvServer::StoreSettings(ZvCore::BinXmlNode& node, const IZvClock& clock) {
    ZvUndoSettings::Apply(m_settings, clock.Now(), ZvUndoSettings::PhysicalMemory());
    m_settings.Store(node);
}
