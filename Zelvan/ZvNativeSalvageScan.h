#pragma once
#include "Zelvan/ZvNativeSalvage.h"
#include "Zelvan/ZvNativeSalvageModel.h"
#include "Zelvan/ZvNativeSalvageRecords.h"
#include "ZvCore/Progress.h"
#include <cstdint>
#include <optional>
#include <vector>

/// Goes through the bytes of a file (or of the body of a solid one) from piece to piece, each of which must hold together by itself.
/// Where none does, it looks byte by byte for the next one. Positions and lengths that span several pieces only say to what a
/// piece belongs, for they are wrong behind bytes that were cut out or put in.
class ZvNativeSalvageScan {
public:
    ZvNativeSalvageScan(const uint8_t* bytes, uint64_t size, ZvNativeSalvage::Result& result,
                        ZvCore::IProgress* progress)
        : m_bytes(bytes), m_size(size), m_result(result), m_progress(progress) {}

    /// False after a cancel.
    bool Run(ZvSalvaged::File& found);

private:
    struct Block {
        bool sound = false;        ///< its digest fits, or it has none and opens
        bool vouched = false;      ///< by a digest
        ZvSalvaged::Bytes content; ///< of a damaged one what can be had
        uint64_t end = 0;          ///< by its head; may lie behind the end
        bool stored = false;
        bool digestLost = false; ///< the content is sound, but not what its head says of it
    };
    static constexpr uint64_t kUnknown = ~uint64_t(0);
    /// A drawing whose tables are being read: the file's own, or that of a layout. Ends are positions in the file as it was.
    struct Scope {
        ZvSalvaged::Section* section = nullptr;
        ZvSalvaged::Table* table = nullptr;
        ZvSalvaged::Contents* contents = nullptr;
        uint64_t end = kUnknown;         ///< of the drawing's section
        uint64_t tableEnd = kUnknown;    ///< of the table's frame
        uint64_t contentsEnd = kUnknown; ///< of the frame of the contents
        uint64_t chainEnd = 0; ///< of its list of objects; kUnknown: nobody knows whose the objects are
        uint32_t blocksLeft = 0;
        uint16_t latest = 0;       ///< code of the last table that began: they stand in ascending order
        bool doubt = false;        ///< bytes were lost since the table began
        bool markAwaited = false;  ///< whether a layer has attributes comes next
        bool inAttributes = false; ///< frames of attributes come next
    };

    bool ReadHeader(ZvSalvaged::File& found);
    bool OpenSolid(ZvSalvaged::File& found, bool& cancelled);
    void ReadClients(ZvSalvaged::File& found);
    /// What lies behind the end of the drawing.
    void LeaveOut(uint64_t from);
    bool IsHeader(uint64_t at) const;
    bool TakeClients(const Block& block, ZvSalvaged::File& found);
    /// A block whose head may be true. With `soundOnly` none that is damaged.
    std::optional<Block> OpenBlock(uint64_t at, bool soundOnly);
    bool HeadMayBeTrue(uint64_t at, ZvNativeBlockHead& head) const;
    template <class T>
    T Get(uint64_t at) const;
    bool Has(uint64_t at, uint64_t count) const { return at <= m_size && count <= m_size - at; }

    /// Each takes the piece that begins at the position and answers where the next one should begin, or 0. `trusted`: the piece
    /// before ended here, so that a damaged block is this place's block nevertheless.
    uint64_t Piece(uint64_t at, bool trusted);
    uint64_t SectionHead(uint64_t at, bool take);
    uint64_t TableHead(uint64_t at, bool trusted, bool take);
    uint64_t Group(uint64_t at, bool trusted, bool take);
    uint64_t ContentsHead(uint64_t at, bool take);
    /// Whether the fields of the head of a record's contents and of its chain of lists agree.
    bool ChainMayBeTrue(uint64_t at) const;
    uint64_t AttributesHead(uint64_t at, bool take);
    uint64_t AttributesFrame(uint64_t at, bool trusted, bool take);
    uint64_t BareBlock(uint64_t at, bool trusted);
    /// The content of a compressed block whose head is lost: it has a checksum of its own.
    uint64_t HeadlessBlock(uint64_t at, bool take);
    uint64_t DamagedBlock(uint64_t at, const Block& block);
    /// Where to go on behind a block that is damaged or of no use, after a search for records in what its end leaves out.
    uint64_t Behind(uint64_t at, uint64_t content, const Block& block, uint64_t records = 0);
    /// A list, a group or settings: false for anything else.
    bool TakeContent(uint64_t at, const ZvSalvaged::Bytes& content, bool vouched);
    uint64_t UnknownTable(uint64_t at);
    bool HoldsKnownRecords(uint64_t at, uint64_t length);
    bool LooksLikePiece(uint64_t at);
    /// Whether it is a list, settings, clients or a group, and nothing else.
    bool IsContent(const ZvSalvaged::Bytes& content) const;
    /// More than LooksLikePiece: that a block with a digest that fits, or a content that can be told, stands behind it.
    bool Vouches(uint64_t at);
    /// Where the next piece that holds together begins: at `hint` if one does there, and none vouches for itself before.
    uint64_t Next(uint64_t from, uint64_t hint);
    /// False when the search is to end.
    bool Step(uint64_t at);
    uint64_t Damaged(uint64_t from, uint64_t hint);
    void NoteDamage(uint64_t from, uint64_t to, uint64_t records = 0);
    /// The records that lie in a stretch, each to what owns its place. Answers how many.
    uint64_t TakeStretch(const uint8_t* bytes, uint64_t size, uint64_t at);
    void TakeRecords(uint64_t at, ZvSalvaged::Records records);
    /// The records of a group, if it can be told of what table they are.
    bool TakeGroup(uint64_t at, const ZvSalvaged::Bytes& content, bool sound);
    /// The table of the current drawing, or of one whose beginning is lost, to which the group belongs by its fields; null for none.
    ZvSalvaged::Table* TableOf(uint64_t at, const ZvSalvaged::Records& group);
    void EnterTable(uint64_t at, uint16_t code);
    void EnterContents(uint64_t at, uint16_t code, int32_t index);
    void BeginTable(uint16_t code, uint64_t end);
    void BeginContents(int32_t index);
    void BeginLayout(int32_t index, uint64_t end);
    /// Of which no more is known than that it must be there.
    void BeginLostLayout();
    bool InTable(uint64_t at) const;
    void CountBlock();
    void LeaveEndedScopes(uint64_t at);
    /// The position in the file as it was, as far as the place of the clients tells.
    uint64_t Original(uint64_t at) const {
        return !m_damaged ? at : int64_t(at) > m_shift ? uint64_t(int64_t(at) - m_shift) : 0;
    }
    Scope& Here() { return m_scopes.back(); }
    const Scope& Here() const { return m_scopes.back(); }

    const uint8_t* m_bytes;
    uint64_t m_size;
    ZvNativeSalvage::Result& m_result;
    ZvCore::IProgress* m_progress;
    ZvSalvaged::File* m_found = nullptr;
    ZvSalvaged::Bytes m_body; ///< of a solid file
    uint64_t m_start = 0;
    uint64_t m_most = 0; ///< bytes that the file can have had
    uint64_t m_effort = 0;
    int64_t m_shift = 0;
    bool m_bodySound = false; ///< of a solid file
    bool m_cancelled = false;
    bool m_damaged = false; ///< something was wrong before the place that is looked at
    std::vector<Scope> m_scopes;
    std::optional<ZvNativeSalvageRecords> m_records;
};
