#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Guid.h"
#include "ZvCore/Settings.h"
#include "ZvCore/ZvcEvent.h"
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class IZvClock;
class ZvDrawing;
class ZvEntity;

/// The application-wide server: the open drawings, the current one, and the entity kinds that can be made from a client code and an
/// entity code. Kinds of the library are registered when it is first used (ZvEntityKinds.cpp); plug-ins add clients and kinds of
/// their own. Window thread.
class ZV_API ZvServer : public ZvcIEventSender {
public:
    /// Events; the subject is the drawing.
    enum Event {
        kDrawingRegistered = 1,
        kDrawingCreated = 2,
        kDrawingUnregistered = 3,
        kCurrentDrawingChanged = 4
    };

    /// A provider of entity kinds.
    struct Client {
        uint16_t code = 0;
        std::string name;
        Guid guid;
    };
    using Factory = std::unique_ptr<ZvEntity> (*)();
    struct Kind {
        uint16_t client = 0;
        uint16_t type = 0;
        std::string typeName; ///< the class's name
        Factory make = nullptr;
    };

    static ZvServer& Instance();
    ~ZvServer() override;

    // --- drawings (observed) -------------------------------------------------------------------------------------------------
    void RegisterDrawing(ZvDrawing* drawing);
    /// The drawing's construction is complete.
    void RegisterDrawingCreated(ZvDrawing* drawing);
    void Unregister(ZvDrawing* drawing);
    const std::vector<ZvDrawing*>& Drawings() const { return m_drawings; }
    bool IsRegistered(const ZvDrawing* drawing) const;
    /// The application's current drawing, null when there is none.
    ZvDrawing* CurrentDrawing() const { return m_current; }
    /// False for a drawing that is not registered. Null is allowed.
    bool SetCurrentDrawing(ZvDrawing* drawing);

    // --- clients and kinds ----------------------------------------------------------------------------------------------------
    /// The library's own client: code 1, name "Zelvan".
    static const Client& BuiltInClient();
    /// False when the code, the name or the GUID is taken by another client, or one of them is null.
    bool RegisterClient(const Client& client);
    /// False when the client is unknown, the code is taken, or there is no factory.
    bool RegisterKind(const Kind& kind);
    const Client* FindClient(uint16_t code) const;
    const Client* FindClient(const Guid& guid) const;
    const Client* FindClient(std::string_view name) const;
    std::vector<const Client*> Clients() const;
    const Kind* FindKind(uint16_t client, uint16_t type) const;
    /// Kinds of a client by ascending code.
    std::vector<const Kind*> Kinds(uint16_t client) const;
    /// A new entity of the kind, null when no such kind is registered.
    std::unique_ptr<ZvEntity> NewEntity(uint16_t client, uint16_t type) const;
    std::unique_ptr<ZvEntity> NewEntity(uint32_t fullCode) const;

    // --- settings of the application ------------------------------------------------------------------------------------------
    ZvCore::Settings& Settings() { return m_settings; }
    /// Reading and writing bring the settings within their bounds (ZvUndoSettings).
    void LoadSettings(const ZvCore::BinXmlNode& node, const IZvClock& clock);
    void StoreSettings(ZvCore::BinXmlNode& node, const IZvClock& clock);

private:
    ZvServer();

    std::vector<ZvDrawing*> m_drawings;
    ZvDrawing* m_current = nullptr;
    ZvCore::Settings m_settings;
    std::map<uint16_t, Client> m_clients;
    std::map<uint32_t, Kind> m_kinds;
    /// Factories of the library's own kinds by type code: reading asks for millions.
    std::vector<Factory> m_builtIn;
};
