#include "Zelvan/ZvNativeSalvageScan.h"
#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvServer.h"
#include "ZvCore/Codec.h"
#include "ZvCore/Guid.h"
#include "ZvCore/MD5.h"
#include <algorithm>
#include <cstring>

namespace {

constexpr uint64_t kBlockHead = ZvNativeBlockHead::kSize;
/// Content of one block that is inflated of a damaged file.
constexpr uint64_t kMostContent = uint64_t(1) << 32;
/// Bytes digested or inflated in vain for one byte of the file: contrived bytes could hold the search up for long.
constexpr uint64_t kEffortPerByte = 64;
constexpr uint64_t kLeastEffort = uint64_t(1) << 22;
/// A search asks so often whether it is to go on.
constexpr uint64_t kStepMask = (uint64_t(1) << 16) - 1;
constexpr uint32_t kClientRecord = ZvNativeClientRecord::kSize;
constexpr int kTypesFirstVersion = 1055;
constexpr int kGuidFirstVersion = 1014;

} // namespace

template <class T>
T ZvNativeSalvageScan::Get(uint64_t at) const {
    T value;
    std::memcpy(&value, m_bytes + at, sizeof value);
    return value;
}

// --- blocks ------------------------------------------------------------------------------------------------------------------

bool ZvNativeSalvageScan::HeadMayBeTrue(uint64_t at, ZvNativeBlockHead& head) const {
    if (!Has(at, kBlockHead) || Get<uint32_t>(at) > ZvNativeBlockHead::Zlib)
        return false;
    head.Parse(m_bytes + at);
    if (head.length > kMostContent || head.stored > m_most || head.stored == 0)
        return false;
    if (head.method == ZvNativeBlockHead::Stored)
        return head.length == head.stored;
    return head.length <= head.stored * ZvCore::Codec::kMaxExpansion;
}

std::optional<ZvNativeSalvageScan::Block> ZvNativeSalvageScan::OpenBlock(uint64_t at, bool soundOnly) {
    ZvNativeBlockHead head;
    if (!HeadMayBeTrue(at, head))
        return std::nullopt;
    Block block;
    block.end = at + kBlockHead + head.stored;
    block.stored = head.method == ZvNativeBlockHead::Stored;
    const bool whole = Has(at + kBlockHead, head.stored);
    if (soundOnly && !whole)
        return std::nullopt;
    const uint64_t here = std::min(head.stored, m_size - at - kBlockHead);
    const uint8_t* stored = m_bytes + at + kBlockHead;
    const uint64_t cost = here + (block.stored ? 0 : head.length);
    if (cost > m_effort)
        return std::nullopt;
    block.vouched = head.HasDigest() || m_bodySound;
    block.sound = whole && (!head.HasDigest() || ZvCore::MD5::Of(stored, size_t(here)) == head.digest);
    if (block.stored) {
        if (block.sound || !soundOnly)
            block.content.assign(stored, stored + here);
    } else {
        const size_t taken =
            ZvCore::Codec::InflatePrefix(stored, size_t(here), size_t(head.length), block.content);
        const bool whollyThere = taken == head.stored && block.content.size() == head.length;
        block.digestLost = whollyThere && !block.sound;
        block.sound = block.vouched = whollyThere;
    }
    if (soundOnly || !block.sound)
        m_effort -= std::min(m_effort, cost);
    if (block.digestLost && !soundOnly)
        NoteDamage(at, at + kBlockHead);
    if (soundOnly && !block.sound)
        return std::nullopt;
    return block;
}

// --- header, solid body, clients ---------------------------------------------------------------------------------------------

bool ZvNativeSalvageScan::ReadHeader(ZvSalvaged::File& found) {
    ZvNativeHeader& header = found.header;
    uint8_t bytes[ZvNativeHeader::kSize] = {};
    std::copy_n(m_bytes, size_t(std::min<uint64_t>(m_size, sizeof bytes)), bytes);
    header.Parse(bytes);
    const bool good =
        m_size >= sizeof bytes && header.HasMagic() && header.size >= ZvNativeHeader::kSize &&
        header.size <= ZvNativeHeader::kLargestSize && header.version >= 1 &&
        (header.version <= ZvNativeFile::kVersion || header.minimumReader <= ZvNativeFile::kVersion) &&
        header.entityHeadSize == ZvNativeRecordHead::kSize;
    if (good) {
        const uint64_t first = std::min({header.settingsOffset, header.tablesOffset, header.clientsOffset});
        m_start = header.IsSolid() || header.size <= first ? header.size : ZvNativeHeader::kSize;
        if (header.version < header.minimumReader && header.minimumReader <= ZvNativeFile::kVersion)
            header.version = ZvNativeFile::kVersion; // no file asks for a newer reader than itself
        m_most = std::max(m_size, std::min(header.length, m_size * 8));
        m_shift = header.length >= ZvNativeHeader::kSize ? int64_t(m_size - header.length) : 0;
        if (m_shift > int64_t(m_size) || m_shift < -int64_t(m_size) * 4)
            m_shift = 0;
        return true;
    }
    header = {};
    std::memcpy(header.magic, ZvNativeHeader::kMagic, sizeof header.magic);
    header.version = ZvNativeFile::kVersion;
    header.minimumReader = ZvNativeFile::MinimumReaderVersion(header.version);
    header.entityHeadSize = ZvNativeRecordHead::kSize;
    m_start = 0;
    m_shift = 0;
    m_most = m_size * 2;
    return false;
}

/// The body of a solid file, as far as it inflates, takes the place of the bytes.
bool ZvNativeSalvageScan::OpenSolid(ZvSalvaged::File& found, bool& cancelled) {
    cancelled = m_progress && !m_progress->Step("Searching", 0, m_size);
    constexpr uint64_t kAt = ZvNativeHeader::kSize;
    if (cancelled || !Has(kAt, kBlockHead + 2))
        return false;
    // Its block has no second chance: even when the head of it is damaged, what follows may inflate.
    const uint8_t* stored = m_bytes + kAt + kBlockHead;
    if ((stored[0] & 0x0F) != 8 || (stored[0] << 8 | stored[1]) % 31 != 0)
        return false;
    ZvSalvaged::Bytes body;
    const size_t taken =
        ZvCore::Codec::InflatePrefix(stored, size_t(m_size - kAt - kBlockHead), size_t(kMostContent), body);
    if (body.size() < ZvNativeHeader::kSize || std::memcmp(body.data() + 8, ZvNativeHeader::kMagic, 7) != 0)
        return false;
    m_bodySound = taken > 0;
    ZvNativeBlockHead head;
    if (HeadMayBeTrue(kAt, head) && head.method == ZvNativeBlockHead::Zlib && head.length >= body.size())
        m_result.statedBody = head.length;
    m_result.bodyLength = body.size();
    ++(m_bodySound ? m_result.blocks : m_result.damagedBlocks);
    m_body = std::move(body);
    m_bytes = m_body.data();
    m_size = m_body.size();
    m_result.solid = true;
    const bool headerGood = ReadHeader(found);
    m_shift = 0;
    return headerGood;
}

bool ZvNativeSalvageScan::TakeClients(const Block& block, ZvSalvaged::File& found) {
    std::map<uint16_t, bool> clients;
    const ZvSalvaged::Bytes& bytes = block.content;
    uint32_t count = 0;
    uint64_t records = 0;
    const auto size = [&](size_t at) {
        uint32_t value = 0;
        if (at + 4 <= bytes.size())
            std::memcpy(&value, bytes.data() + at, 4);
        return value;
    };
    for (size_t at = 0; at < bytes.size(); ++count) {
        if (size(at) != kClientRecord || bytes.size() - at < kClientRecord)
            return false;
        ZvNativeClientRecord record;
        record.Parse(bytes.data() + at);
        records += record.records;
        Guid guid;
        std::memcpy(guid.bytes.data(), record.guid, sizeof record.guid);
        const auto& builtIn = ZvServer::BuiltInClient();
        clients[uint16_t(record.id)] = found.header.version >= kGuidFirstVersion && !guid.IsNull()
                                           ? guid == builtIn.guid
                                           : record.name == builtIn.name;
        at += kClientRecord;
        if (found.header.version < kTypesFirstVersion)
            continue;
        for (uint32_t i = 0; i < record.types; ++i) {
            if (size(at) < 4 || size(at) > bytes.size() - at)
                return false;
            at += size(at);
        }
    }
    if (clients.empty())
        return false;
    found.clients = bytes;
    found.records = records;
    found.header.clientCount = count;
    m_records.emplace(found.header, std::move(clients), true);
    return true;
}

/// They stand last, and say what the objects are.
void ZvNativeSalvageScan::ReadClients(ZvSalvaged::File& found) {
    const uint64_t stated = found.header.clientsOffset;
    // Where they are tells whether bytes were cut out of what is before them or put in, or only off the end.
    for (const int64_t shift : {int64_t(0), m_shift})
        if (std::optional<Block> block = OpenBlock(stated + uint64_t(shift), true))
            if (TakeClients(*block, found)) {
                m_shift = shift;
                // They end the file: what comes then is not the drawing's.
                if (block->end == found.header.length && block->end < m_size)
                    LeaveOut(block->end);
                return;
            }
    m_shift = 0;
    constexpr uint64_t kSmallest = kBlockHead + 31;
    constexpr uint64_t kFar = uint64_t(1) << 22;
    for (uint64_t back = kSmallest; back <= std::min(m_size, kFar); ++back) {
        ZvNativeBlockHead head;
        const uint64_t at = m_size - back;
        if (!HeadMayBeTrue(at, head) || head.length < kClientRecord)
            continue;
        if (std::optional<Block> block = OpenBlock(at, true))
            if (TakeClients(*block, found))
                return;
    }
    m_result.clientsLost = true;
    m_records.emplace(found.header, std::map<uint16_t, bool>{{ZvServer::BuiltInClient().code, true}}, false);
}

bool ZvNativeSalvageScan::IsHeader(uint64_t at) const {
    return at >= m_start && Has(at, ZvNativeHeader::kSize) && Get<uint64_t>(at) == ZvNativeHeader::kSize &&
           std::memcmp(m_bytes + at + 8, ZvNativeHeader::kMagic, 7) == 0;
}

void ZvNativeSalvageScan::LeaveOut(uint64_t from) {
    m_result.behind = {from, m_size - from, 0};
    m_result.anotherBehind = IsHeader(from);
    m_size = from;
}

// --- from piece to piece -----------------------------------------------------------------------------------------------------

bool ZvNativeSalvageScan::Run(ZvSalvaged::File& found) {
    m_found = &found;
    m_effort = kLeastEffort + m_size * kEffortPerByte;
    bool cancelled = false;
    const bool headerGood = ReadHeader(found);
    m_result.statedLength = headerGood ? found.header.length : 0;
    m_result.headerLost = !(OpenSolid(found, cancelled) || headerGood);
    if (cancelled)
        return false;
    if (headerGood && !m_result.solid && IsHeader(found.header.length))
        LeaveOut(found.header.length);
    if (m_result.solid)
        m_effort = kLeastEffort + m_size * kEffortPerByte;
    m_damaged = m_result.headerLost;
    ReadClients(found);
    m_scopes.push_back({&found.section});
    bool trusted = !m_result.headerLost;
    for (uint64_t at = m_start; at < m_size;) {
        if (!Step(at))
            return false;
        LeaveEndedScopes(at);
        if (const uint64_t next = Piece(at, trusted)) {
            at = next;
            trusted = true;
            continue;
        }
        const uint64_t next = Damaged(at, at);
        trusted = true;
        at = next;
    }
    m_result.settingsLost = found.settings.empty();
    return !m_cancelled;
}

uint64_t ZvNativeSalvageScan::Piece(uint64_t at, bool trusted) {
    Scope& here = Here();
    const bool chainEnds = here.contents && here.table->code == ZvTableCode::Full(ZvTableCode::Layer) &&
                           Original(at) == here.chainEnd;
    if (here.contents && ((trusted && here.markAwaited) || chainEnds)) {
        here.markAwaited = false;
        const bool isLost = m_damaged && (ContentsHead(at, false) || TableHead(at, false, false));
        if (m_bytes[at] == 0 && !isLost) {
            here.contents->attributesTold = true;
            return at + 1;
        }
        if (const uint64_t next = AttributesHead(at, true))
            return next;
    }
    if (const uint64_t next = ContentsHead(at, true))
        return next;
    if (const uint64_t next = SectionHead(at, true))
        return next;
    if (const uint64_t next = TableHead(at, trusted, true))
        return next;
    if (const uint64_t next = Group(at, trusted, true))
        return next;
    if (here.inAttributes)
        if (const uint64_t next = AttributesFrame(at, trusted, true))
            return next;
    if (const uint64_t next = AttributesHead(at, true))
        return next;
    if (const uint64_t next = BareBlock(at, trusted))
        return next;
    if (const uint64_t next = HeadlessBlock(at, true))
        return next;
    return trusted ? UnknownTable(at) : 0;
}

bool ZvNativeSalvageScan::Step(uint64_t at) {
    m_cancelled = m_cancelled || (m_progress && !m_progress->Step("Searching", at, m_size));
    return !m_cancelled;
}

bool ZvNativeSalvageScan::LooksLikePiece(uint64_t at) {
    if (ContentsHead(at, false) || SectionHead(at, false) || TableHead(at, false, false) ||
        Group(at, false, false) || AttributesHead(at, false) || AttributesFrame(at, false, false))
        return true;
    const std::optional<Block> block = OpenBlock(at, true);
    if (!block)
        return HeadlessBlock(at, false) != 0;
    if (block->vouched)
        return true;
    ZvSalvaged::Records list;
    return m_records->IsList(block->content.data(), block->content.size(), list) ||
           (block->content.size() >= kClientRecord &&
            std::memcmp(block->content.data(), &kClientRecord, sizeof kClientRecord) == 0);
}

uint64_t ZvNativeSalvageScan::Next(uint64_t from, uint64_t hint) {
    const Scope& here = Here();
    const bool markComes =
        here.contents && here.blocksLeft == 1 && here.table->code == ZvTableCode::Full(ZvTableCode::Layer);
    // An end that is stated says nothing when as many bytes were cut out as the pieces behind have.
    const bool stated = hint > from && hint <= m_size &&
                        (hint == m_size || LooksLikePiece(hint) ||
                         (markComes && m_bytes[hint] == 0 && LooksLikePiece(hint + 1)));
    const uint64_t end = stated ? hint : m_size;
    for (uint64_t at = from; at < end; ++at) {
        if ((at & kStepMask) == 0 && !Step(at))
            return m_size;
        if (stated ? Vouches(at) : LooksLikePiece(at))
            return at;
    }
    return end;
}

/// A stretch that begins behind `from`: its records are taken, and what follows is found.
uint64_t ZvNativeSalvageScan::Damaged(uint64_t from, uint64_t hint) {
    const uint64_t next = Next(from + 1, hint);
    NoteDamage(from, next, TakeStretch(m_bytes + from, next - from, from));
    return next;
}

void ZvNativeSalvageScan::NoteDamage(uint64_t from, uint64_t to, uint64_t records) {
    m_damaged = true;
    for (Scope& scope : m_scopes)
        scope.doubt = true;
    auto& damage = m_result.damage;
    if (!damage.empty() && damage.back().offset + damage.back().length == from)
        damage.back().length += to - from, damage.back().records += records;
    else
        damage.push_back({from, to - from, records});
}
