#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvNativeSalvageScan.h"
#include "ZvCore/Codec.h"
#include <algorithm>
#include <cstring>

// The pieces of a file that a search knows by themselves. What each holds stands in Docs/native-format.md.

namespace {

constexpr uint64_t kSectionHead = 16;
constexpr uint64_t kFrameHead = 24;
constexpr uint64_t kGroupHead = 12;
constexpr uint64_t kContentsHead = 12;
constexpr uint64_t kChainHead = 20;
constexpr uint64_t kAttributesHead = 13; // with the mark in front of it
constexpr uint64_t kBlockHead = ZvNativeBlockHead::kSize;
constexpr uint32_t kMostTables = 64;

bool IsKnownTable(uint32_t code) {
    return code >> 16 == ZvTableCode::Full(1) >> 16 && (code & 0xFFFF) >= 1 &&
           (code & 0xFFFF) <= ZvTableCode::SelectionVolume;
}

template <class T>
T Load(const uint8_t* from) {
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

} // namespace

uint64_t ZvNativeSalvageScan::SectionHead(uint64_t at, bool take) {
    if (!Has(at, kSectionHead) || Load<uint32_t>(m_bytes + at) != kSectionHead ||
        Load<uint32_t>(m_bytes + at + 4) > kMostTables || !TableHead(at + kSectionHead, false, false))
        return 0;
    if (take && Here().section->statedTables == 0) {
        Here().section->statedTables = Load<uint32_t>(m_bytes + at + 4);
        Here().section->stated = Load<uint64_t>(m_bytes + at + 8);
    }
    return at + kSectionHead;
}

uint64_t ZvNativeSalvageScan::TableHead(uint64_t at, bool trusted, bool take) {
    if (!Has(at, kFrameHead + kBlockHead))
        return 0;
    const auto length = Load<uint64_t>(m_bytes + at), contents = Load<uint64_t>(m_bytes + at + 16);
    const auto code = Load<uint32_t>(m_bytes + at + 8);
    ZvNativeBlockHead head;
    if (!IsKnownTable(code) || length < kFrameHead + kBlockHead || contents > length || length > m_most ||
        !HeadMayBeTrue(at + kFrameHead, head) || head.stored > length - kFrameHead - kBlockHead ||
        (contents && contents < kFrameHead + kBlockHead + head.stored))
        return 0;
    if (!take)
        return at + kFrameHead;
    const std::optional<Block> block = OpenBlock(at + kFrameHead, !trusted);
    if (!block)
        return 0;
    EnterTable(at, uint16_t(code & 0xFFFF));
    Scope& here = Here();
    here.tableEnd = Original(at) + length;
    here.table->stated = Load<uint32_t>(m_bytes + at + 12);
    here.table->ownsNothing = contents == 0;
    ++(block->sound ? m_result.blocks : m_result.damagedBlocks);
    if (block->sound) {
        here.table->fields = block->content;
        return block->end;
    }
    return Damaged(at + kFrameHead, block->end);
}

uint64_t ZvNativeSalvageScan::Group(uint64_t at, bool trusted, bool take) {
    ZvNativeBlockHead head;
    if (!Has(at, kGroupHead + kBlockHead) || !HeadMayBeTrue(at + kGroupHead, head) ||
        Load<uint64_t>(m_bytes + at) != kGroupHead + kBlockHead + head.stored)
        return 0;
    const std::optional<Block> block = OpenBlock(at + kGroupHead, !trusted || !take);
    if (!block)
        return 0;
    if (!take)
        return block->end;
    ++(block->sound ? m_result.blocks : m_result.damagedBlocks);
    const bool taken = TakeGroup(at, block->content, block->sound && block->vouched);
    if (block->sound && taken)
        return block->end;
    return Behind(at, at + kGroupHead + kBlockHead, *block);
}

bool ZvNativeSalvageScan::ChainMayBeTrue(uint64_t at) const {
    const uint64_t held = at + kContentsHead;
    if (!Has(held, kChainHead))
        return false;
    const auto length = Load<uint64_t>(m_bytes + at), chain = Load<uint64_t>(m_bytes + held),
               total = Load<uint64_t>(m_bytes + held + 8);
    const auto blocks = Load<uint32_t>(m_bytes + held + 16);
    if (length < kContentsHead + kChainHead || chain < kChainHead || chain > length - kContentsHead)
        return false;
    const uint64_t behind = length - kContentsHead - chain; // nothing, a layer's mark, or that and attributes
    if (behind > 1 && behind < kAttributesHead + 8 + kBlockHead)
        return false;
    ZvNativeBlockHead head;
    if (blocks == 0 || !HeadMayBeTrue(held + kChainHead, head))
        return blocks == 0 && chain == kChainHead && total == 0;
    const uint64_t first = kChainHead + kBlockHead + head.stored;
    return blocks == 1 ? chain == first : chain / (kBlockHead + 1) >= blocks && chain >= first;
}

uint64_t ZvNativeSalvageScan::ContentsHead(uint64_t at, bool take) {
    if (!Has(at, kContentsHead + kSectionHead))
        return 0;
    const auto length = Load<uint64_t>(m_bytes + at);
    const auto index = Load<int32_t>(m_bytes + at + 8);
    if (length < kContentsHead + kSectionHead || length > m_most || index < 0 ||
        index >= ZvSalvaged::kMostIndex)
        return 0;
    const uint64_t held = at + kContentsHead;
    if (SectionHead(held, false)) {
        if (!take)
            return held + kSectionHead;
        // Of two layouts one stands behind the other: the first one's drawing has ended.
        if (m_scopes.size() > 1 &&
            (!Here().table || Here().table->code != ZvTableCode::Full(ZvTableCode::Layout)))
            m_scopes.pop_back();
        BeginLayout(index, Original(at) + length);
        return SectionHead(held, true);
    }
    // From the byte in front of a head on the same fields are read, each 256 times as great.
    const bool maySlip = Has(held, kChainHead) && Load<uint8_t>(m_bytes + held + 16) == 0;
    if (!ChainMayBeTrue(at) || (maySlip && ChainMayBeTrue(at + 1)))
        return 0;
    if (!take)
        return held + kChainHead;
    const auto chain = Load<uint64_t>(m_bytes + held), total = Load<uint64_t>(m_bytes + held + 8);
    const auto blocks = Load<uint32_t>(m_bytes + held + 16);
    const bool isLayer = length > kContentsHead + chain; // its mark follows
    EnterContents(at, isLayer ? ZvTableCode::Layer : ZvTableCode::Block, index);
    BeginContents(index);
    Scope& here = Here();
    const bool mayBe = total <= chain * ZvCore::Codec::kMaxExpansion / m_found->header.entityHeadSize;
    here.contents->stated = mayBe ? total : 0;
    here.contents->blocks = blocks;
    here.contentsEnd = Original(at) + length;
    here.chainEnd = Original(held) + chain;
    here.blocksLeft = blocks;
    here.markAwaited = blocks == 0 && isLayer;
    return held + kChainHead;
}

uint64_t ZvNativeSalvageScan::AttributesHead(uint64_t at, bool take) {
    ZvNativeBlockHead head;
    if (!Has(at, kAttributesHead + 8 + kBlockHead) || m_bytes[at] != 1 ||
        !HeadMayBeTrue(at + kAttributesHead + 8, head) ||
        Load<uint64_t>(m_bytes + at + kAttributesHead) != 8 + kBlockHead + head.stored ||
        Load<uint64_t>(m_bytes + at + 1) < 12 + 8 + kBlockHead + head.stored)
        return 0;
    if (take) {
        if (ZvSalvaged::Contents* contents = Here().contents) {
            contents->attributesTold = true;
            contents->attributeFrames = Load<uint32_t>(m_bytes + at + 1 + 8);
        }
        Here().inAttributes = true;
        Here().blocksLeft = 0;
        Here().markAwaited = false;
    }
    return at + kAttributesHead;
}

uint64_t ZvNativeSalvageScan::AttributesFrame(uint64_t at, bool trusted, bool take) {
    ZvNativeBlockHead head;
    if (!Has(at, 8 + kBlockHead) || !HeadMayBeTrue(at + 8, head) ||
        Load<uint64_t>(m_bytes + at) != 8 + kBlockHead + head.stored)
        return 0;
    const std::optional<Block> block = OpenBlock(at + 8, !trusted || !take);
    if (!block)
        return 0;
    if (!take)
        return block->end;
    Scope& here = Here();
    ++(block->sound ? m_result.blocks : m_result.damagedBlocks);
    // Rows mean nothing without the fields, which come first; other fields are those of another layer.
    const bool owned = here.contents && Original(at) < here.contentsEnd;
    if (block->sound && owned &&
        ZvSalvaged::IsAttributeFields(block->content) == here.contents->attributes.empty()) {
        here.contents->attributes.push_back(block->content);
        return block->end;
    }
    if (!owned || here.contents->attributes.empty())
        here.inAttributes = false;
    return Behind(at, at + 8 + kBlockHead, *block);
}

bool ZvNativeSalvageScan::TakeContent(uint64_t at, const ZvSalvaged::Bytes& content, bool vouched) {
    ZvSalvaged::Records list;
    if (m_records->IsList(content.data(), content.size(), list)) {
        m_records->LearnClients(list);
        list.doubtful = !vouched;
        TakeRecords(at, std::move(list));
        CountBlock();
        return true;
    }
    if (content.size() > 4 && std::memcmp(content.data(), "ZBX1", 4) == 0) {
        if (m_found->settings.empty())
            m_found->settings = content;
        return true;
    }
    if (content.size() >= ZvNativeClientRecord::kSize &&
        Load<uint32_t>(content.data()) == ZvNativeClientRecord::kSize)
        return true; // they were read first
    return !Here().contents && !ZvSalvaged::RecordsOfGroup(content).doubtful && TakeGroup(at, content, true);
}

bool ZvNativeSalvageScan::IsContent(const ZvSalvaged::Bytes& content) const {
    ZvSalvaged::Records list;
    if (m_records->IsList(content.data(), content.size(), list) ||
        (content.size() > 4 && std::memcmp(content.data(), "ZBX1", 4) == 0) ||
        (content.size() >= ZvNativeClientRecord::kSize &&
         Load<uint32_t>(content.data()) == ZvNativeClientRecord::kSize))
        return true;
    const ZvSalvaged::Records group = ZvSalvaged::RecordsOfGroup(content);
    return group.count > 0 && !group.doubtful;
}

bool ZvNativeSalvageScan::Vouches(uint64_t at) {
    const auto block = [&](uint64_t head) {
        const std::optional<Block> opened = OpenBlock(head, true);
        return opened && (opened->vouched || IsContent(opened->content));
    };
    const uint64_t held = ContentsHead(at, false);
    return block(at) || (held && (block(held) || block(held + kFrameHead))) ||
           (TableHead(at, false, false) && block(at + kFrameHead)) ||
           (Group(at, false, false) && block(at + kGroupHead)) ||
           (AttributesHead(at, false) && block(at + kAttributesHead + 8)) ||
           (AttributesFrame(at, false, false) && block(at + 8)) || HeadlessBlock(at, false);
}

uint64_t ZvNativeSalvageScan::BareBlock(uint64_t at, bool trusted) {
    const Scope& here = Here();
    const bool expected = trusted && here.contents && here.blocksLeft > 0;
    const std::optional<Block> block = OpenBlock(at, !expected);
    if (!block)
        return 0;
    if (block->sound && TakeContent(at, block->content, block->vouched)) {
        ++m_result.blocks;
        return block->end;
    }
    if (expected)
        return DamagedBlock(at, *block);
    if (m_found->settings.empty() && at == m_start && block->sound) { // of an older version
        ++m_result.blocks;
        m_found->settings = block->content;
        return block->end;
    }
    return 0;
}

uint64_t ZvNativeSalvageScan::Behind(uint64_t at, uint64_t content, const Block& block, uint64_t records) {
    const uint64_t next = block.sound ? block.end : Next(content, block.end);
    m_damaged = true;
    // Where bytes are missing the records of what followed may lie before what the block states of its end.
    const uint64_t from = block.stored && !block.sound && m_shift != 0 ? content : block.end;
    if (next > from)
        records += TakeStretch(m_bytes + from, next - from, from);
    NoteDamage(at, next, records);
    return next;
}

uint64_t ZvNativeSalvageScan::DamagedBlock(uint64_t at, const Block& block) {
    if (const uint64_t next = HeadlessBlock(at + kBlockHead, true)) {
        NoteDamage(at, at + kBlockHead);
        return next;
    }
    ++m_result.damagedBlocks;
    if (block.stored) {
        const uint64_t next = Damaged(at + kBlockHead, block.end);
        CountBlock();
        return next;
    }
    const ZvSalvaged::Bytes& content = block.content;
    ZvSalvaged::Records records;
    records.doubtful = true;
    for (const auto& place : m_records->Search(content.data(), content.size(), [&] { return Step(at); })) {
        const auto from = content.begin() + ptrdiff_t(place.at);
        records.bytes.insert(records.bytes.end(), from, from + ptrdiff_t(place.length));
        ++records.count;
    }
    const uint64_t found = records.count;
    if (found > 0)
        TakeRecords(at, std::move(records));
    CountBlock();
    return Behind(at, at + kBlockHead, block, found);
}

uint64_t ZvNativeSalvageScan::HeadlessBlock(uint64_t at, bool take) {
    constexpr uint64_t kSmallest = 8, kMost = uint64_t(1) << 28;
    if (!Has(at, kSmallest) || (m_bytes[at] & 0x0F) != 8 || (m_bytes[at] << 8 | m_bytes[at + 1]) % 31 != 0)
        return 0;
    ZvSalvaged::Bytes content;
    const uint64_t taken = ZvCore::Codec::InflatePrefix(m_bytes + at, size_t(m_size - at),
                                                        size_t(std::min(m_effort, kMost)), content);
    m_effort -= std::min<uint64_t>(m_effort, content.size() + 1);
    if (!taken || content.size() < kSmallest || !(take ? TakeContent(at, content, true) : IsContent(content)))
        return 0;
    m_result.blocks += take;
    return at + taken;
}

/// Whether the frame that begins there is one of the engine's own tables under a code that is damaged.
bool ZvNativeSalvageScan::HoldsKnownRecords(uint64_t at, uint64_t length) {
    for (uint64_t group = at + kFrameHead; group < at + length; ++group) {
        if (!Group(group, false, false))
            continue;
        const ZvSalvaged::Records records =
            ZvSalvaged::RecordsOfGroup(OpenBlock(group + kGroupHead, true)->content);
        for (uint16_t code = 1; code <= ZvTableCode::SelectionVolume; ++code)
            if (ZvSalvaged::BelongsTo(ZvTableCode::Full(code), records))
                return true;
    }
    return false;
}

/// A table of a plug-in, which is kept as it is.
uint64_t ZvNativeSalvageScan::UnknownTable(uint64_t at) {
    if (!Has(at, kFrameHead))
        return 0;
    const auto length = Load<uint64_t>(m_bytes + at);
    const auto code = Load<uint32_t>(m_bytes + at + 8);
    Scope& here = Here();
    if (length < kFrameHead || !Has(at, length) || code >> 16 == 0 || IsKnownTable(code) ||
        (here.table && (here.tableEnd == kUnknown || InTable(at))) ||
        !(at + length == m_size || LooksLikePiece(at + length)) || !OpenBlock(at + kFrameHead, true) ||
        HoldsKnownRecords(at, length))
        return 0; // or a table of the engine's own whose head is damaged
    auto table = std::make_unique<ZvSalvaged::Table>();
    table->code = code;
    table->unknownFrame.assign(m_bytes + at, m_bytes + at + length);
    here.section->tables.push_back(std::move(table));
    here.table = nullptr;
    here.contents = nullptr;
    return at + length;
}
