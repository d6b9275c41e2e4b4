#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvNativeSalvageScan.h"
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
constexpr int32_t kMostIndex = 1 << 24;
constexpr size_t kDeepestSection = 4;

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
    (void)take; // it says nothing that the frames do not
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
    if (m_damaged && m_scopes.size() < kDeepestSection && Here().section->Find(code))
        BeginLayout(-1, ~uint64_t(0)); // of a layout whose beginning is lost, for a table comes once
    Scope& here = Here();
    here.table = &here.section->Get(code);
    here.contents = nullptr;
    here.markAwaited = here.inAttributes = false;
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
    Scope& here = Here();
    const std::optional<Block> block = OpenBlock(at + kGroupHead, !trusted || !take);
    if (!block)
        return 0;
    if (!take)
        return block->end;
    uint64_t found = 0;
    // Of a damaged block the records up to where they no longer chain.
    ZvSalvaged::Bytes bytes = block->content;
    if (!ZvNativeSalvageRecords::IsTableGroup(bytes.data(), bytes.size(), found)) {
        ZvSalvaged::Table all;
        all.groups.push_back({0, bytes, true});
        size_t used = 0;
        bool good = true;
        found = 0;
        ForEachRecord(all, [&](const uint8_t* record, size_t length) {
            int32_t index = 0;
            uint32_t id = 0;
            std::string name;
            good = good && ZvSalvaged::ParseRecord(record, length, index, id, name) && index >= 0 &&
                   index < kMostIndex;
            if (good)
                used += length, ++found;
        });
        bytes.resize(used);
    }
    ++(block->sound ? m_result.blocks : m_result.damagedBlocks);
    if (here.table && found)
        here.table->groups.push_back({found, std::move(bytes), !block->sound});
    if (!block->sound || !here.table)
        NoteDamage(at, std::min(block->end, m_size));
    return block->sound ? block->end : Next(at + kGroupHead + kBlockHead, block->end);
}

/// The tables that follow are those of a layout's drawing.
void ZvNativeSalvageScan::BeginLayout(int32_t index, uint64_t end) {
    Scope& owner = Here();
    owner.table = &owner.section->Get(ZvTableCode::Full(ZvTableCode::Layout));
    owner.table->contents.push_back(std::make_unique<ZvSalvaged::Contents>());
    owner.contents = owner.table->contents.back().get();
    owner.contents->index = index;
    owner.contents->section = std::make_unique<ZvSalvaged::Section>();
    owner.contentsEnd = end;
    owner.chainEnd = owner.blocksLeft = 0;
    owner.markAwaited = owner.inAttributes = false;
    m_scopes.push_back({owner.contents->section.get()});
}

uint64_t ZvNativeSalvageScan::ContentsHead(uint64_t at, bool take) {
    if (!Has(at, kContentsHead + kSectionHead))
        return 0;
    const auto length = Load<uint64_t>(m_bytes + at);
    const auto index = Load<int32_t>(m_bytes + at + 8);
    if (length < kContentsHead + kSectionHead || length > m_most || index < 0 || index >= kMostIndex)
        return 0;
    Scope& here = Here();
    const uint64_t held = at + kContentsHead;
    if (SectionHead(held, false)) {
        if (!take)
            return held;
        while (m_scopes.size() >= kDeepestSection)
            m_scopes.pop_back();
        // Of two layouts one stands behind the other: the first one's drawing has ended.
        if (m_scopes.size() > 1 &&
            (!Here().table || Here().table->code != ZvTableCode::Full(ZvTableCode::Layout)))
            m_scopes.pop_back();
        BeginLayout(index, Original(at) + length);
        return held + kSectionHead;
    }
    if (!Has(held, kChainHead) || length < kContentsHead + kChainHead)
        return 0;
    const auto chain = Load<uint64_t>(m_bytes + held), total = Load<uint64_t>(m_bytes + held + 8);
    const auto blocks = Load<uint32_t>(m_bytes + held + 16);
    ZvNativeBlockHead head;
    const uint64_t behind = length - kContentsHead - chain; // nothing, a layer's mark, or that and attributes
    if (chain < kChainHead || chain > length - kContentsHead || length > m_most ||
        (behind > 1 && behind < kAttributesHead + 8 + kBlockHead) ||
        (blocks == 0 ? chain != kChainHead || total != 0 : !HeadMayBeTrue(held + kChainHead, head)))
        return 0;
    const uint64_t first = kChainHead + kBlockHead + head.stored;
    if (blocks > 0 && (blocks == 1 ? chain != first : chain / (kBlockHead + 1) < blocks || chain < first))
        return 0;
    if (!take)
        return held + kChainHead;
    if (here.table && here.table->code != ZvTableCode::Full(ZvTableCode::Layer) &&
        here.table->code != ZvTableCode::Full(ZvTableCode::Block))
        here.table = nullptr;
    if (!here.table) // the frame that should be around it is lost
        here.table = &here.section->Get(ZvTableCode::Full(ZvTableCode::Layer));
    here.table->contents.push_back(std::make_unique<ZvSalvaged::Contents>());
    here.contents = here.table->contents.back().get();
    here.contents->index = index;
    here.inAttributes = false;
    here.contents->stated = total;
    here.chainEnd = Original(held) + chain;
    here.blocksLeft = blocks;
    here.markAwaited = blocks == 0 && here.table->code == ZvTableCode::Full(ZvTableCode::Layer);
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
    if (block->sound && here.contents) {
        // Rows mean nothing without the fields, which come first.
        here.contents->attributes.push_back(block->content);
        return block->end;
    }
    if (here.contents && here.contents->attributes.empty())
        here.inAttributes = false;
    NoteDamage(at, std::min(block->end, m_size));
    return Next(at + 8 + kBlockHead, block->end);
}

/// A block of the current chain was met.
void ZvNativeSalvageScan::CountBlock() {
    Scope& here = Here();
    if (here.blocksLeft > 0 && --here.blocksLeft == 0)
        here.markAwaited = here.table && here.table->code == ZvTableCode::Full(ZvTableCode::Layer);
}

uint64_t ZvNativeSalvageScan::BareBlock(uint64_t at, bool trusted) {
    Scope& here = Here();
    const bool expected = trusted && here.contents && here.blocksLeft > 0;
    const std::optional<Block> block = OpenBlock(at, !expected);
    if (!block)
        return 0;
    const ZvSalvaged::Bytes& content = block->content;
    ZvSalvaged::Records list;
    const bool isList = m_records->IsList(content.data(), content.size(), list);
    if (block->sound && isList) {
        ++m_result.blocks;
        TakeRecords(at, std::move(list));
    } else if (block->sound && content.size() > 4 && std::memcmp(content.data(), "ZBX1", 4) == 0) {
        ++m_result.blocks;
        if (m_found->settings.empty())
            m_found->settings = content;
    } else if (block->sound && content.size() >= ZvNativeClientRecord::kSize &&
               Load<uint32_t>(content.data()) == ZvNativeClientRecord::kSize) {
        ++m_result.blocks; // they were read first
    } else if (uint64_t count = 0;
               block->sound && here.table && !here.contents &&
               ZvNativeSalvageRecords::IsTableGroup(content.data(), content.size(), count)) {
        ++m_result.blocks;
        here.table->groups.push_back({count, content, false});
    } else if (expected) {
        ++m_result.damagedBlocks;
        if (block->stored) {
            const uint64_t behind = Damaged(at + kBlockHead, block->end);
            CountBlock();
            return behind;
        }
        CountBlock();
        ZvSalvaged::Records records = m_records->Search(content.data(), content.size());
        const uint64_t next = Next(at + kBlockHead, block->end);
        NoteDamage(at, next, records.count);
        if (records.count > 0)
            here.contents->lists.push_back(std::move(records));
        return next;
    } else if (m_found->settings.empty() && at == m_start && block->sound) { // of an older version
        ++m_result.blocks;
        m_found->settings = content;
    } else {
        return 0;
    }
    if (isList)
        CountBlock();
    return block->end;
}

/// A table of a plug-in, which is kept as it is.
uint64_t ZvNativeSalvageScan::UnknownTable(uint64_t at) {
    if (!Has(at, kFrameHead))
        return 0;
    const auto length = Load<uint64_t>(m_bytes + at);
    const auto code = Load<uint32_t>(m_bytes + at + 8);
    if (length < kFrameHead || !Has(at, length) || code >> 16 == 0 || IsKnownTable(code) ||
        !(at + length == m_size || LooksLikePiece(at + length)))
        return 0;
    Scope& here = Here();
    auto table = std::make_unique<ZvSalvaged::Table>();
    table->code = code;
    table->unknownFrame.assign(m_bytes + at, m_bytes + at + length);
    here.section->tables.push_back(std::move(table));
    here.table = nullptr;
    here.contents = nullptr;
    return at + length;
}
