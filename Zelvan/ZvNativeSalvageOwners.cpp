#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvNativeSalvageScan.h"
#include <algorithm>

// To what the pieces of a damaged file belong. Where the head of a table or of a record's contents is lost, these tell: positions,
// as far as frames that are sound give them; the order of tables by their codes, and of contents by the index of their record,
// which only the next drawing breaks; and the fields of records, of which each kind has its own.

namespace {

constexpr size_t kDeepestSection = 4;

/// Whether the table came already; objects without an owner may have made it before.
bool HasCome(const ZvSalvaged::Section& section, uint32_t fullCode) {
    const ZvSalvaged::Table* table = section.Find(fullCode);
    return table &&
           (!table->groups.empty() || std::any_of(table->contents.begin(), table->contents.end(),
                                                  [](const auto& contents) { return contents->index >= 0; }));
}

int32_t LastIndex(const ZvSalvaged::Table& table) {
    int32_t last = -1;
    for (const auto& contents : table.contents)
        last = std::max(last, contents->index);
    return last;
}

} // namespace

void ZvNativeSalvageScan::LeaveEndedScopes(uint64_t at) {
    while (m_scopes.size() > 1 && Here().end != kUnknown && Original(at) >= Here().end)
        m_scopes.pop_back();
}

bool ZvNativeSalvageScan::InTable(uint64_t at) const {
    // Whether the bytes that are missing lie before or behind is not known within a damaged stretch.
    return Here().table && (Here().tableEnd == kUnknown || std::min(at, Original(at)) < Here().tableEnd);
}

// --- tables ------------------------------------------------------------------------------------------------------------------

void ZvNativeSalvageScan::BeginTable(uint16_t code, uint64_t end) {
    Scope& here = Here();
    here.table = &here.section->Get(ZvTableCode::Full(code));
    here.contents = nullptr;
    here.tableEnd = end;
    here.contentsEnd = kUnknown;
    here.chainEnd = here.blocksLeft = 0;
    here.latest = code;
    here.doubt = here.markAwaited = here.inAttributes = false;
}

void ZvNativeSalvageScan::EnterTable(uint64_t at, uint16_t code) {
    const uint32_t full = ZvTableCode::Full(code);
    if (m_damaged) {
        while (m_scopes.size() > 1 && Here().end == kUnknown &&
               (HasCome(*Here().section, full) || code <= ZvTableCode::kLastBorrowable ||
                (code >= ZvTableCode::Layout && !HasCome(*m_scopes[m_scopes.size() - 2].section, full))))
            m_scopes.pop_back();
        const Scope& here = Here();
        const bool amongLayouts =
            here.latest == ZvTableCode::Layout && here.tableEnd != kUnknown && Original(at) < here.tableEnd;
        if (here.end == kUnknown && (HasCome(*here.section, full) || amongLayouts))
            BeginLostLayout();
    }
    BeginTable(code, kUnknown);
}

/// The tables that follow are those of a layout's drawing.
void ZvNativeSalvageScan::BeginLayout(int32_t index, uint64_t end) {
    Scope& owner = Here();
    if (!owner.table || owner.table->code != ZvTableCode::Full(ZvTableCode::Layout))
        BeginTable(ZvTableCode::Layout, kUnknown);
    BeginContents(index);
    owner.contents->section = std::make_unique<ZvSalvaged::Section>();
    owner.contentsEnd = end;
    Scope inner;
    inner.section = owner.contents->section.get();
    inner.end = end;
    m_scopes.push_back(inner);
}

void ZvNativeSalvageScan::BeginLostLayout() {
    while (m_scopes.size() > 1 && Here().end == kUnknown)
        m_scopes.pop_back();
    const Scope& here = Here();
    if (m_scopes.size() < kDeepestSection && here.end == kUnknown)
        BeginLayout(-1, here.latest == ZvTableCode::Layout ? here.tableEnd : kUnknown);
}

ZvSalvaged::Table* ZvNativeSalvageScan::TableOf(uint64_t at, const ZvSalvaged::Records& group) {
    const bool here = InTable(at) && !Here().contents;
    if (here && ZvSalvaged::BelongsTo(Here().table->code, group))
        return Here().table;
    const uint16_t first = m_scopes.size() > 1 ? ZvTableCode::Layer : ZvTableCode::Bitmap;
    const uint16_t latest = Here().latest;
    for (const bool later : {true, false})
        for (uint16_t code = first; code <= ZvTableCode::SelectionVolume; ++code)
            if ((code > latest) == later && ZvSalvaged::BelongsTo(ZvTableCode::Full(code), group)) {
                EnterTable(at, code);
                return Here().table;
            }
    return here ? Here().table : nullptr; // records of another version of the format
}

bool ZvNativeSalvageScan::TakeGroup(uint64_t at, const ZvSalvaged::Bytes& content, bool sound) {
    ZvSalvaged::Records group = ZvSalvaged::RecordsOfGroup(content);
    ZvSalvaged::Table* table = TableOf(at, group);
    if (!table)
        return false;
    if (group.doubtful)
        ZvSalvaged::AddFurtherRecords(group, content, table->code);
    group.doubtful = group.doubtful || !sound;
    if (group.count > 0)
        table->groups.push_back(std::move(group));
    return true;
}

// --- contents ----------------------------------------------------------------------------------------------------------------

void ZvNativeSalvageScan::EnterContents(uint64_t at, uint16_t code, int32_t index) {
    const uint32_t full = ZvTableCode::Full(code);
    if (code == ZvTableCode::Block && m_damaged) // layouts have none
        m_scopes.erase(m_scopes.begin() + 1, m_scopes.end());
    const auto isThis = [&] { return Here().table && Here().table->code == full; };
    if (isThis() && (!m_damaged || (InTable(at) && (Here().tableEnd != kUnknown || index < 0 ||
                                                    LastIndex(*Here().table) < index))))
        return;
    if (code == ZvTableCode::Layer && m_damaged && Here().latest >= code && Here().end == kUnknown)
        BeginLostLayout();
    const uint16_t latest = Here().latest;
    if (!isThis())
        BeginTable(code, kUnknown);
    if (index < 0) // which tells nothing of where the search is
        Here().latest = latest;
}

void ZvNativeSalvageScan::BeginContents(int32_t index) {
    Scope& here = Here();
    here.table->contents.push_back(std::make_unique<ZvSalvaged::Contents>());
    here.contents = here.table->contents.back().get();
    here.contents->index = index;
    here.contentsEnd = kUnknown;
    here.chainEnd = here.blocksLeft = 0;
    here.markAwaited = here.inAttributes = false;
}

/// A block of the current chain was met.
void ZvNativeSalvageScan::CountBlock() {
    Scope& here = Here();
    if (here.blocksLeft > 0 && --here.blocksLeft == 0)
        here.markAwaited = here.table && here.table->code == ZvTableCode::Full(ZvTableCode::Layer);
}

void ZvNativeSalvageScan::TakeRecords(uint64_t at, ZvSalvaged::Records records) {
    LeaveEndedScopes(at);
    const auto inChain = [&] {
        const Scope& here = Here();
        if (!here.contents || here.contents->section)
            return false;
        if (here.chainEnd == kUnknown)
            return InTable(at);
        // Behind bytes that were cut out or put in positions do not suffice.
        return Original(at) < here.chainEnd && (m_shift == 0 || here.blocksLeft > 0);
    };
    if (!inChain()) { // nobody knows whose they are
        const bool inBlocks = InTable(at) && Here().table->code == ZvTableCode::Full(ZvTableCode::Block);
        EnterContents(at, inBlocks ? ZvTableCode::Block : ZvTableCode::Layer, -1);
        BeginContents(-1);
        Here().chainEnd = kUnknown;
    }
    Here().contents->lists.push_back(std::move(records));
}

uint64_t ZvNativeSalvageScan::TakeStretch(const uint8_t* bytes, uint64_t size, uint64_t at) {
    const std::vector<ZvNativeSalvageRecords::Place> places =
        m_records->Search(bytes, size, [&] { return Step(at); });
    // What was cut out or put in lies behind the records that chain from the start.
    uint64_t chained = !places.empty() && places[0].at <= sizeof(int64_t) ? places[0].at : kUnknown;
    for (size_t next = 0; next < places.size();) {
        m_damaged = m_damaged || places[next].at != chained;
        const uint64_t from = at + places[next].at;
        LeaveEndedScopes(from);
        uint64_t limit = kUnknown; // where the next owner's records begin
        for (const Scope& scope : m_scopes)
            for (const uint64_t end : {scope.chainEnd, scope.contentsEnd, scope.tableEnd, scope.end})
                if (end > Original(from))
                    limit = std::min(limit, end);
        ZvSalvaged::Records records;
        records.doubtful = true;
        do { // at least one
            const auto [place, length] = places[next++];
            records.bytes.insert(records.bytes.end(), bytes + place, bytes + place + length);
            ++records.count;
            chained = place + length;
        } while (next < places.size() && Original(at + places[next].at) < limit &&
                 (m_damaged || places[next].at == chained));
        TakeRecords(from, std::move(records));
    }
    m_damaged = true;
    return places.size();
}
