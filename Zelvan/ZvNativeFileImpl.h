#pragma once
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/ZvNativeBlockPipe.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeDigester.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeHeader.h"
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class ZvServer;
struct ZvNativeRecordHead;

/// The inside of one load or save. Its operations stand in the sources that are named after their concern
/// (ZvNativeFileWrite.cpp, ZvNativeFileRead.cpp, ...).
struct ZvNativeFile::Impl {
    /// An open block: its content is the target while it is on top of the stack.
    struct Block {
        std::unique_ptr<ZvCore::MemFile> content;
        uint64_t formerRecordEnd = 0;
    };
    /// Records of one kind that could not be read.
    struct Damage {
        int count = 0;
        uint64_t block =
            0; ///< where in the file the outermost block begins that holds the first, 0 outside of blocks
        uint64_t offset = 0; ///< of the first, in its stream
    };

    Impl(ZvNativeFile& owner, ZvNativeOptions given)
        : api(owner), options(std::move(given)), pipe(options.threads) {}

    ZvNativeFile& api;
    ZvNativeOptions options;
    ZvDrawing* drawing = nullptr;
    ZvCore::IFile* caller = nullptr;             ///< the stream that was given
    std::unique_ptr<ZvCore::MemFile> callerView; ///< reading: the same where it lies in memory
    ZvNativeHeader header;
    ZvNativeDesc* desc = nullptr; ///< the current one
    std::vector<std::unique_ptr<ZvNativeDesc>>
        descs; ///< the file's own first, then those of layouts' drawings
    std::vector<Block> stack;
    ZvNativeBlockPipe pipe;
    std::unique_ptr<ZvNativeDigester> digester; ///< while a file is read before it is known to be sound
    uint64_t budget = 0;                        ///< of a block; 0 until asked for
    uint64_t outerBlockAt = 0;                  ///< reading: where the outermost open block begins
    IOErrorSet errors;
    bool aborted = false;
    bool cancelled = false;
    uint64_t unwritten = 0;             ///< entities of chains that were to be written and could not be
    bool touched = false;               ///< reading: the drawing has been changed
    bool solidOpen = false;             ///< reading: the first block is the body of a solid file
    int listDepth = 0;                  ///< reading: lists within lists
    std::map<uint32_t, Damage> damaged; ///< by the running full code
    uint64_t recordsLost = 0;           ///< behind the place where a list ended early
    /// Writing: kinds written, by client id; ids given to clients that the running program does not have.
    std::map<uint16_t, std::map<uint16_t, std::string>> typesWritten;
    std::vector<std::pair<uint16_t, std::shared_ptr<const ZvNativeDesc::Client>>> foreignClients;
    uint32_t lastTypeWritten = 0;

    // --- target, errors, progress (ZvNativeFile.cpp) -------------------------------------------------------------------------
    /// Makes the top of the stack (or the file) the descriptor's stream.
    void Retarget();
    ZvCore::IFile& Target() { return *desc->file; }
    void Begin(ZvDrawing& into, ZvCore::IFile& file);
    void Warn(int code, std::string text);
    /// Error 2007 for `what` ("block") at a position of the current stream, and the abort flag. Answers false.
    bool Unreadable(const char* what, uint64_t at, const std::string& why);
    /// Tells the progress; false after a cancel, which it remembers.
    bool Step(const char* what, uint64_t done, uint64_t total);
    Zv::Status Outcome(bool ok) const;

    // --- digest of a stream (ZvNativeFileChecksum.cpp) -------------------------------------------------------------------------
    static bool IsValid(ZvCore::IFile& file, bool checkChecksum, ZvCore::IProgress* progress,
                        XStringW& reason, bool& cancelled);
    bool CalculateChecksum();

    // --- blocks (ZvNativeFileBlocks.cpp) ------------------------------------------------------------------------------------
    uint64_t BlockBudget();
    void Push(std::unique_ptr<ZvCore::MemFile> content);
    Block Pop();
    /// Tells why a block's content could not be kept, and aborts. Answers false.
    bool BlockOverflow(const ZvCore::MemFile& content);
    bool WritePacked(const ZvNativeBlock::Packed& packed);
    /// Reads a block head at the position and its bytes, or finds where they lie; the stream then stands behind the block. Why
    /// it cannot be done, or empty.
    std::string FetchBlock(ZvNativeBlockHead& head, const uint8_t*& stored, std::vector<uint8_t>& hold);
    /// Whether the block must be verified here and now: not when it is left to the digester.
    bool MustVerify(const ZvNativeBlockHead& head, const uint8_t* stored);
    /// Pushes the content; `at`: where the block begins, for messages.
    bool Accept(ZvNativeBlock::Opened opened, uint64_t at);

    // --- entity lists (ZvNativeFileEntities.cpp, ZvNativeFileChunks.cpp) -----------------------------------------------------
    int64_t WriteOneChunk(const std::vector<ZvEntity*>& entities, size_t& next);
    int64_t ReadChain(uint32_t blocks, uint64_t total, ZvEntityList& entities);
    /// One entity; false when it wrote nothing or failed, the position is then that from before.
    bool WriteEntity(const ZvEntity& entity, int64_t& failures);
    void NoteType(const ZvEntity& entity);
    int64_t ReadRecords(int64_t count, ZvEntityList& entities);
    bool ReadHead(ZvNativeRecordHead& head);
    void ReadOneRecord(uint64_t start, const ZvNativeRecordHead& head, ZvEntityList& entities,
                       int64_t& failures);
    void KeepUnknown(uint64_t start, const ZvNativeRecordHead& head, ZvEntityList& entities,
                     int64_t& failures);
    void ListEndsEarly(int64_t left, uint64_t at);
    ZvNativeDesc::Client& ClientOf(uint16_t fileId);

    // --- saving (ZvNativeFileWrite.cpp) --------------------------------------------------------------------------------------
    bool Write();
    bool WriteSolidHeadBegin();
    bool WriteSolidHeadEnd();
    bool WriteHeader();
    bool WriteBody();
    void FillHeader();
    bool WriteSettings();
    bool WriteTables();
    bool WriteClients();
    void WriteOneClient(ZvNativeClientRecord record);
    bool PreparePreviewBitmap();

    // --- loading (ZvNativeFileRead.cpp) --------------------------------------------------------------------------------------
    bool Read();
    bool ReadInOrder();
    bool ReadSections();
    bool MayReadAhead();
    bool ReadAhead(bool& good);
    void ForgetRead();
    bool Refuse(const std::string& reason);
    bool CheckValid();
    bool ReadHeader();
    bool CheckSections();
    bool CheckVersion();
    bool ReadSolidHeadBegin();
    bool ReadBody();
    template <size_t size>
    bool ReadSized(uint8_t (&bytes)[size]);
    bool ReadOneClient();
    bool ReadClients();
    bool ReadSettings(bool afterTables);
    bool ReadTables();
    void FinishRead();
    void PostLoadEntityCleanup(ZvNativeDesc& of);
    void GenErrors();
};
