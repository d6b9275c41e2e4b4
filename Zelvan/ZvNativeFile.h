#pragma once
#include "Zelvan/ZvNativeDesc.h"
#include "ZvCore/Api.h"
#include "ZvCore/BinXml.h"
#include "ZvCore/Guid.h"
#include "ZvCore/IFile.h"
#include "ZvCore/IOErrorSet.h"
#include "ZvCore/Progress.h"
#include "ZvCore/Status.h"
#include "ZvCore/XString.h"
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class IZvHost;
class ZvDrawing;
class ZvEntity;
class ZvMergeProfile;
class ZvSelection;
struct ZvPreviewBitmap;

/// Options of one load or save; see the members for defaults.
struct ZvNativeOptions {
    int compressionLevel = 3;   ///< 0 stored, 1..5 blocks, 6..9 one solid block
    bool blockDigests = true;   ///< write digests of outermost blocks; verify them when reading
    bool verifyChecksum = true; ///< reading: the whole-file digest
    bool optionBit1 = false;    ///< header flag bit 1: readers never ask the "newer version" question
    bool askNewerVersion = true;
    bool purgeUnused = false;         ///< writing: purge unused table records first
    bool selectionOnly = false;       ///< writing: only `selection` and the records that it uses
    ZvSelection* selection = nullptr; ///< reading: entities that the load removes are taken out of it
    bool preview = false;             ///< writing: store a thumbnail record
    /// Draws the thumbnail into the bitmap (its size is set). Empty: the engine's own raster surface.
    std::function<bool(ZvDrawing&, ZvPreviewBitmap&)> previewRenderer;
    ZvMergeProfile* merge = nullptr; ///< reading into a drawing that has content
    IZvHost* host = nullptr;         ///< set: interactive load, questions are asked there
    std::string fileName;            ///< for messages
    ZvCore::IProgress* progress = nullptr;
    /// Writing: entities of a layer or block in ascending order of their names instead of drawing. Trees do not
    /// remember in which order entities came (an insertion that is undone leaves nodes split, for
    /// instance), so that equal drawings may give files that differ in the order of records. With this, equal
    /// drawings, clocks and GUIDs give equal bytes; what is lost is the order of drawing. For comparing.
    bool orderByName = false;
    bool threads =
        true; ///< a worker thread prepares blocks ahead; what is read and written is the same without it
};

/// The ".zvd" format: writes a whole drawing to a byte stream and reads it back. One object a load or save; not reused.
/// The format itself is described in Docs/native-format.md.
class ZV_API ZvNativeFile {
public:
    static constexpr int kVersion = 1075;
    static constexpr int kOldestKnownVersion = 1013;
    static constexpr uint64_t kHeaderSize = 104;
    static constexpr uint32_t kEntityHeadSize = 30;

    explicit ZvNativeFile(ZvNativeOptions options = {});
    ~ZvNativeFile();

    /// Neither changes the drawing on refusal at the header. Errors are gathered for GetErrors.
    Zv::Status WriteFile(ZvDrawing* drawing, ZvCore::IFile* file);
    Zv::Status ReadFile(ZvDrawing* drawing, ZvCore::IFile* file);
    /// Leaves the stream position where it found it.
    static bool IsValidFile(ZvCore::IFile* file, bool checkChecksum, XStringW& reason);
    /// Reads the file into a scratch drawing and takes its thumbnail. False when the file does not load or holds none; `text` (may be
    /// null) is filled with author, dates and version whenever the file loads.
    static bool GetPreviewBitmap(ZvCore::IFile* file, XStringW* text, ZvPreviewBitmap& bitmap);
    /// The identity of the drawing that the file holds, from its settings alone; null when they cannot be read.
    static Guid ReadGuid(ZvCore::IFile* file);
    void GetErrors(IOErrorSet& errors) const;
    /// Writing: entities of layers and blocks that were to be saved and are not in the file.
    uint64_t UnwrittenEntities() const;

    /// Puts the primitives to work on a stream of the caller's in the current version, without header and sections (swapping,
    /// clipboard). Client ids are those of the running program, index and name translations empty. Instead of a load or save.
    void Attach(ZvDrawing& drawing, ZvCore::IFile& stream);

    /// Until it goes, the file reads or writes for another drawing (a layout's): Desc() is that drawing's own descriptor,
    /// with the same stream, version and clients. They nest.
    class ZV_API DrawingScope {
    public:
        DrawingScope(ZvNativeFile& file, ZvDrawing& drawing);
        ~DrawingScope();
        DrawingScope(const DrawingScope&) = delete;
        DrawingScope& operator=(const DrawingScope&) = delete;
        ZvNativeDesc& Desc();

    private:
        ZvNativeFile& m_file;
        ZvNativeDesc* m_former;
    };

    // --- primitives for tables and entities; positions are those of the current target ------------------------------------
    ZvCore::IFile& File();
    ZvNativeDesc& Desc();
    uint64_t StoreRecordStart();
    void WriteRecordLength32(uint64_t start);
    void WriteRecordLength64(uint64_t start);
    void StartCompressBlock();
    bool EndCompressBlock(bool forceDigest = false);
    bool StartDecompressBlock();
    bool SkipCompressedBlock();
    void EndDecompressBlock();

    /// length -1 measures up to the terminating zero; a null string is written as length 0.
    bool WriteString(const char* text, int32_t length = -1);
    bool WriteString(const char16_t* text, int32_t length = -1);
    bool WriteString(const XStringW& text);
    bool WriteStringHead(uint8_t encoding, int32_t length);
    bool ReadStringHead(uint8_t& encoding, int32_t& length);
    bool PeekString(uint8_t& encoding, int32_t& length);
    /// `capacity` in characters, terminator included; the rest of a longer string is skipped.
    bool ReadStringRaw(char* buffer, size_t capacity);
    bool ReadStringRaw(char16_t* buffer, size_t capacity);
    bool ReadStringA(XStringA& text);
    bool ReadStringW(XStringW& text);
    bool ReadString(XStringA& text) { return ReadStringA(text); }
    bool ReadString(XStringW& text) { return ReadStringW(text); }
    static void WriteCharString(const XStringW& text, char* field, size_t size);
    static XStringW ReadCharString(const char* field, size_t size);
    bool WriteBinXml(const ZvCore::BinXmlDocument& document);
    bool WriteBinXml(const ZvCore::BinXmlNode& node);
    bool ReadBinXml(ZvCore::BinXmlDocument& document);
    bool ReadBinXml(ZvCore::BinXmlNode& node);

    /// Writes the count of records really stored, then the records; returns the number written.
    int64_t WriteEntityList(const std::vector<ZvEntity*>& entities);
    /// Appends what was read; returns the number read (count minus failures). The caller owns the entities.
    int64_t ReadEntityList(std::vector<std::unique_ptr<ZvEntity>>& entities);
    /// The long form for what a layer or a block owns: a head (u64 length of the whole chain, u64 entities, u32 blocks), then
    /// blocks of a few MiB, each an entity list. Written at depth 0 the blocks are the outermost ones: they are
    /// compressed and digested singly, and prepared by a worker thread. A save of a selection leaves out what is not
    /// selected here. Both return what the list forms return.
    int64_t WriteEntityChunks(const std::vector<ZvEntity*>& entities);
    int64_t ReadEntityChunks(std::vector<std::unique_ptr<ZvEntity>>& entities);
    bool SkipEntityChunks();
    /// The record at the position as an entity that keeps its bytes; null (nothing moved) when it cannot be read.
    std::unique_ptr<ZvEntity> ReadProxyObject();
    /// Writing: the id under which a client of another file is written, be it one that the program has or not.
    uint16_t ClientIdFor(const std::shared_ptr<const ZvNativeDesc::Client>& client);
    /// Writing: a proxy's record of that type was written; `client` knows the type's name.
    void NoteProxyType(uint16_t clientId, uint16_t type, const ZvNativeDesc::Client& client);
    /// False for what this save leaves out: erased entities, and in a save of a selection what is not selected.
    bool IsSaved(const ZvEntity& entity) const;

    /// Adds an error to this operation's set and reports it under its number.
    void AddError(int code, std::string text);
    /// Stops the remaining sections; clean-up still runs.
    void Abort();
    bool IsAborted() const;
    const ZvNativeOptions& Options() const;

    /// Always answers method 1 with the level passed.
    static void GetCompressionFormat(int level, uint32_t& method, int& formatLevel);
    static bool Compress(uint32_t method, int level, const std::vector<uint8_t>& source,
                         std::vector<uint8_t>& target);
    static bool Decompress(uint32_t method, const std::vector<uint8_t>& source, std::vector<uint8_t>& target,
                           size_t expected);
    /// Lowest format version that may read a file of this version.
    static int MinimumReaderVersion(int version);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
