#pragma once
#include "ZvCore/Api.h"
#include "Zelvan/ZvName.h"
#include "ZvCore/Guid.h"
#include "ZvCore/IFile.h"
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class ZvDrawing;
class ZvEntity;
class ZvNativeFile;
class ZvRawCompound;

/// The per-file descriptor handed to every reader and writer of entities and tables. It gives the current stream, the
/// version, and the translations from the file's numbers to the drawing's.
class ZV_API ZvNativeDesc {
public:
    ZvNativeDesc(ZvNativeFile& owner, ZvDrawing& drawing) : m_owner(owner), m_drawing(drawing) {}

    ZvNativeFile& Native() { return m_owner; }
    ZvDrawing& Drawing() { return m_drawing; }
    /// The current target or source: the innermost open block, else the file. Changes when blocks open and close.
    ZvCore::IFile& File() { return *file; }

    /// Format version of the file being read or written (1013..1075).
    int version = 1075;
    uint64_t flags = 0;
    /// Size of the entity record head in the file being read (header field 28).
    uint32_t entityHeadSize = 30;
    ZvCore::IFile* file = nullptr;

    // Reading: file numbers -> drawing numbers. ----------------------------------------------------------------------------
    struct Client {
        std::string name;
        Guid guid;
        uint16_t runningId = 0; ///< client code of the running program, 0 when it has none
        std::map<uint16_t, std::string> typeNames;
        int notLoaded = 0; ///< records of this client that could not be made into entities
    };
    /// By the client id used in this file's record heads.
    std::map<uint16_t, Client> clients;

    /// Table index translation: table full code -> (file index -> drawing index). Filled by tables as they are read, empty for
    /// a load into a fresh drawing (identity).
    void SetTableIndex(uint32_t tableCode, int fileIndex, int drawingIndex);
    /// The drawing's index of the file's index. An index that the map does not know: -1 when `strict`, else itself.
    int TranslateIndex(uint32_t tableCode, int fileIndex, bool strict) const;
    /// Old name -> new name of entities that did not keep theirs; names not in the map kept theirs.
    std::unordered_map<uint32_t, uint32_t> nameTranslation;
    uint32_t TranslateName(uint32_t fileName) const;
    /// Proxies read, by (client id << 16 | type id).
    std::map<uint32_t, std::vector<ZvRawCompound*>> proxies;

    // Writing: records written by client id in this save. -------------------------------------------------------------------
    std::map<uint16_t, uint32_t> recordsWritten;
    void CountRecord(uint16_t client) { ++recordsWritten[client]; }

private:
    ZvNativeFile& m_owner;
    ZvDrawing& m_drawing;
    std::map<uint32_t, std::map<int, int>> m_tableIndex;
};
