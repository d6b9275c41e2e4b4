#pragma once
#include "Zelvan/ZvName.h"
#include "ZvCore/Api.h"
#include "ZvCore/Guid.h"
#include "ZvCore/IFile.h"
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

class ZvDrawing;
class ZvEntity;
class ZvNativeFile;
class ZvRawCompound;
class ZvUsageTable;
class ZvcDumbHeap;

/// The per-file descriptor handed to every reader and writer of entities and tables. It gives the current stream, the
/// version, and the translations from the file's numbers to the drawing's.
class ZV_API ZvNativeDesc {
public:
    ZvNativeDesc(ZvNativeFile& owner, ZvDrawing& drawing) : m_owner(owner), m_drawing(drawing) {}
    ZvNativeDesc(const ZvNativeDesc&) = delete;
    ZvNativeDesc& operator=(const ZvNativeDesc&) = delete;

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
    /// The same stream where it lies in memory, else null.
    ZvCore::MemFile* memory = nullptr;
    /// Reading: where the variable-size blocks of entities go; null: to the general heap.
    ZvcDumbHeap* heap = nullptr;

    // --- bytes of the current stream; preferred to File() where many small pieces are moved --------------------------------
    bool Write(const void* bytes, size_t count) {
        return (memory ? memory->Write(bytes, count) : file->Write(bytes, count)) == count;
    }
    template <class T>
    bool WriteValue(const T& value) {
        return Write(&value, sizeof(T));
    }
    uint64_t Position() const { return memory ? memory->Position() : file->Position(); }
    bool Seek(uint64_t position) { return memory ? memory->Seek(position) : file->Seek(position); }
    /// Bytes left of the record being read (of the stream, outside of records). A reader compares stored counts with it
    /// before it allocates for them.
    uint64_t RecordRemaining() const {
        const uint64_t at = Position(), end = RecordEnd();
        return end > at ? end - at : 0;
    }
    /// Reads, but not past the end of the record: false then, nothing moved.
    bool Read(void* bytes, size_t count) {
        if (count > RecordRemaining())
            return false;
        return (memory ? memory->Read(bytes, count) : file->Read(bytes, count)) == count;
    }
    template <class T>
    bool ReadValue(T& value) {
        return Read(&value, sizeof(T));
    }
    /// As IFile::ReadPad, within the record.
    bool ReadPad(void* buffer, size_t wanted, uint64_t stored) {
        return stored <= RecordRemaining() && file->ReadPad(buffer, wanted, stored);
    }
    /// Position of the end of the record being read.
    uint64_t RecordEnd() const {
        const uint64_t length = memory ? memory->Length() : file->Length();
        return recordEnd < length ? recordEnd : length;
    }
    uint64_t recordEnd = ~uint64_t(0);

    /// Bounds the reading of one record: from `start`, `length` bytes, cut to what contains it. On leaving, the stream
    /// stands behind the record and the former bound holds again.
    class RecordScope {
    public:
        RecordScope(ZvNativeDesc& desc, uint64_t start, uint64_t length)
            : m_desc(desc), m_former(desc.recordEnd) {
            const uint64_t outer = desc.RecordEnd();
            m_fits = start <= outer && length <= outer - start;
            m_end = m_fits ? start + length : outer;
            desc.recordEnd = m_end;
        }
        ~RecordScope() {
            m_desc.recordEnd = m_former;
            m_desc.Seek(m_end);
        }
        RecordScope(const RecordScope&) = delete;
        RecordScope& operator=(const RecordScope&) = delete;
        /// False when the stated length goes past what contains the record.
        bool Fits() const { return m_fits; }

    private:
        ZvNativeDesc& m_desc;
        uint64_t m_former;
        uint64_t m_end;
        bool m_fits;
    };

    // --- reading: file numbers -> drawing numbers ----------------------------------------------------------------------------
    struct Client {
        std::string name;
        Guid guid;
        uint16_t fileId = 0;    ///< client id in the record heads of this file
        uint16_t runningId = 0; ///< client code of the running program, 0 when it has none
        std::map<uint16_t, std::string> typeNames;
        int notLoaded = 0; ///< records of this client that could not be made into entities
    };
    /// By the client id used in this file's record heads. Proxies share them.
    std::map<uint16_t, std::shared_ptr<Client>> clients;

    /// Table index translation: table full code -> (file index -> drawing index). Filled by tables as they are read, empty
    /// for a load into a fresh drawing (identity). Entities keep the indices that they read until TableUpdate is called
    /// on them, once, when all records are there.
    void SetTableIndex(uint32_t tableCode, int fileIndex, int drawingIndex);
    /// The drawing's index of the file's index. An index that the map does not know: -1 when `strict`, else itself.
    int TranslateIndex(uint32_t tableCode, int fileIndex, bool strict) const;
    /// Takes over the map of another descriptor's table; without one there, this one has none either.
    void CopyTableIndex(uint32_t tableCode, const ZvNativeDesc& from);
    bool HasTableIndex(uint32_t tableCode) const { return m_tableIndex.count(tableCode) != 0; }
    /// Old name -> new name of entities that did not keep theirs; names not in the map kept theirs.
    std::unordered_map<uint32_t, uint32_t> nameTranslation;
    uint32_t TranslateName(uint32_t fileName) const;
    /// Proxies read, by (client id << 16 | type id) of the file.
    std::map<uint32_t, std::vector<ZvRawCompound*>> proxies;
    /// Entities that refer to another by name and must be told when all is read (PostDrawingLoadCleanup): the name that
    /// the object has in the file, and the object.
    std::vector<std::pair<uint32_t, ZvEntity*>> associations;

    // --- writing -------------------------------------------------------------------------------------------------------------
    /// Records written by client id in this save, and the types of each client that occurred.
    std::map<uint16_t, uint32_t> recordsWritten;
    void CountRecord(uint16_t client) { ++recordsWritten[client]; }
    /// Set: only table records that it counts at least once are written.
    const ZvUsageTable* usedRecords = nullptr;
    bool MustWriteRecord(uint32_t tableCode, int index) const;

private:
    ZvNativeFile& m_owner;
    ZvDrawing& m_drawing;
    std::map<uint32_t, std::map<int, int>> m_tableIndex;
};
