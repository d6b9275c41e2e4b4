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
    };
    /// A drawing whose tables are being read: the file's own, or that of a layout.
    struct Scope {
        ZvSalvaged::Section* section = nullptr;
        ZvSalvaged::Table* table = nullptr;
        ZvSalvaged::Contents* contents = nullptr;
        uint64_t contentsEnd = 0, chainEnd = 0;
        uint32_t blocksLeft = 0;
        bool markAwaited = false;  ///< whether a layer has attributes comes next
        bool inAttributes = false; ///< frames of attributes come next
    };

    bool ReadHeader(ZvSalvaged::File& found);
    bool OpenSolid(ZvSalvaged::File& found, bool& cancelled);
    void ReadClients(ZvSalvaged::File& found);
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
    uint64_t AttributesHead(uint64_t at, bool take);
    uint64_t AttributesFrame(uint64_t at, bool trusted, bool take);
    uint64_t BareBlock(uint64_t at, bool trusted);
    uint64_t UnknownTable(uint64_t at);
    bool LooksLikePiece(uint64_t at);
    /// Where the next piece that holds together begins, at `hint` if one does there.
    uint64_t Next(uint64_t from, uint64_t hint);
    uint64_t Damaged(uint64_t from, uint64_t hint);
    void NoteDamage(uint64_t from, uint64_t to, uint64_t records = 0);
    void TakeRecords(uint64_t at, ZvSalvaged::Records records);
    void BeginLayout(int32_t index, uint64_t end);
    void CountBlock();
    void LeaveEndedScopes(uint64_t at);
    /// The position in the file as it was, as far as its stated length tells.
    uint64_t Original(uint64_t at) const { return m_damaged ? uint64_t(int64_t(at) - m_shift) : at; }
    Scope& Here() { return m_scopes.back(); }

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
    bool m_damaged = false;
    std::vector<Scope> m_scopes;
    std::optional<ZvNativeSalvageRecords> m_records;
};
