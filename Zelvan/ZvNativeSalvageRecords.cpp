#include "Zelvan/ZvNativeSalvageRecords.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvNativePayload.h"
#include <algorithm>
#include <cstring>

namespace {

/// Bits of the flags that stand for something in a file.
constexpr uint32_t kAssignedFlags = 0x8000037F;
/// Bytes of supposed records that a search looks at for one byte of what it searches: contrived bytes could hold it up for long.
constexpr uint64_t kEffortPerByte = 64;
constexpr uint64_t kAskEvery = uint64_t(1) << 16;
constexpr uint64_t kLeastEffort = uint64_t(1) << 20;

class Counter final : public IZvNativeVisitor {
public:
    int problems = 0;
    bool WantsFields() const override { return false; }
    void Field(const ZvNativeStream&, uint64_t, uint64_t, int, const std::string&,
               const std::string&) override {}
    void Problem(const ZvNativeStream&, uint64_t, int, const std::string&, const std::string&,
                 const std::string&) override {
        ++problems;
    }
    bool Stopped() const override { return problems > 0; }
};

} // namespace

uint64_t ZvNativeSalvageRecords::MayBegin(const uint8_t* at, uint64_t left, bool strict) const {
    const uint32_t headSize = m_header.entityHeadSize;
    if (left < headSize)
        return 0;
    uint8_t bytes[ZvNativeRecordHead::kSize] = {};
    std::memcpy(bytes, at, std::min<size_t>(headSize, sizeof bytes));
    ZvNativeRecordHead head;
    head.Parse(bytes, m_header.version);
    uint32_t name = 0;
    if (head.length < headSize || head.length > left || !head.Name32(name))
        return 0;
    const auto client = m_clients.find(head.client);
    if (client == m_clients.end())
        return !strict && m_clientsLost && head.flags >> 31 && !(head.flags & ~kAssignedFlags) ? head.length
                                                                                               : 0;
    if (client->second && !ZvNativePayload::Find(head.type))
        return 0;
    if (strict && (head.flags & ~kAssignedFlags) != 0)
        return 0;
    return head.length;
}

bool ZvNativeSalvageRecords::IsFollowed(const uint8_t* end, uint64_t left) const {
    return left <= 1 || MayBegin(end, left, true);
}

bool ZvNativeSalvageRecords::MakesSense(const uint8_t* at, uint64_t length, bool trusted) const {
    ZvNativeRecordHead head;
    uint8_t bytes[ZvNativeRecordHead::kSize] = {};
    std::memcpy(bytes, at, std::min<size_t>(m_header.entityHeadSize, sizeof bytes));
    head.Parse(bytes, m_header.version);
    const auto client = m_clients.find(head.client);
    const ZvNativePayload* kind =
        client != m_clients.end() && client->second ? ZvNativePayload::Find(head.type) : nullptr;
    if (!kind || !kind->check)
        return trusted;
    Counter counter;
    ZvNativeWalk walk(counter, {});
    walk.Assume(m_header, m_clients);
    const ZvNativeStream stream{at, length};
    kind->check(walk, ZvNativeCursor(stream, m_header.entityHeadSize, length));
    return counter.problems == 0;
}

bool ZvNativeSalvageRecords::IsList(const uint8_t* bytes, uint64_t size, ZvSalvaged::Records& list) const {
    int64_t count = 0;
    if (size < sizeof count)
        return false;
    std::memcpy(&count, bytes, sizeof count);
    if (count < 1 || uint64_t(count) > size / m_header.entityHeadSize)
        return false;
    uint64_t at = sizeof count;
    for (int64_t i = 0; i < count; ++i) {
        uint64_t length = 0;
        if (size - at < m_header.entityHeadSize)
            return false;
        std::memcpy(&length, bytes + at, sizeof length);
        if (length < m_header.entityHeadSize || length > size - at)
            return false;
        at += length;
    }
    if (at != size)
        return false;
    list.count = uint64_t(count);
    list.bytes.assign(bytes + sizeof count, bytes + size);
    return true;
}

uint64_t ZvNativeSalvageRecords::Overrun(const uint8_t* bytes, uint64_t size, uint64_t at, uint64_t length,
                                         uint64_t& effort) const {
    const uint64_t end = at + length;
    for (uint64_t next = at + m_header.entityHeadSize; next < end && effort > 0; ++next, --effort) {
        uint64_t behind = next;
        while (behind < end) {
            const uint64_t step = MayBegin(bytes + behind, size - behind, true);
            effort -= std::min(effort, step);
            if (!step ||
                !MakesSense(bytes + behind, step, IsFollowed(bytes + behind + step, size - behind - step)))
                break;
            behind += step;
        }
        if (behind > end)
            return next;
    }
    return 0;
}

std::vector<ZvNativeSalvageRecords::Place> ZvNativeSalvageRecords::Search(const uint8_t* bytes, uint64_t size,
                                                                          const std::function<bool()>& goOn) {
    std::vector<Place> found;
    uint64_t at = 0;
    if (size >= 8 && !MayBegin(bytes, size, false) && MayBegin(bytes + 8, size - 8, false))
        at = 8; // behind the count of the list
    bool chained = true;
    uint64_t effort = kLeastEffort + size * kEffortPerByte;
    uint64_t asked = 0;
    while (size - at >= m_header.entityHeadSize && effort > 0) {
        if (at - asked >= kAskEvery) {
            asked = at;
            if (!goOn())
                break;
        }
        const uint64_t length = MayBegin(bytes + at, size - at, !chained);
        effort -= std::min(effort, chained ? 1 : length + 1);
        const bool follows = length && IsFollowed(bytes + at + length, size - at - length);
        const bool sense = length && MakesSense(bytes + at, length, chained || follows);
        if (const uint64_t next = length && !follows ? Overrun(bytes, size, at, length, effort) : 0) {
            at = next;
            continue;
        }
        if (sense) {
            found.push_back({at, length});
            LearnClient(bytes + at);
        }
        // Of a damaged record in a chain nothing is taken: the records inside of it are no objects of their own.
        chained = sense || (chained && follows);
        at += chained ? length : 1;
    }
    return found;
}

void ZvNativeSalvageRecords::LearnClient(const uint8_t* record) {
    uint16_t client = 0;
    std::memcpy(&client, record + sizeof(uint64_t), sizeof client);
    if (m_clientsLost)
        m_clients.try_emplace(client, false);
}

void ZvNativeSalvageRecords::LearnClients(const ZvSalvaged::Records& list) {
    for (uint64_t at = 0; at + m_header.entityHeadSize <= list.bytes.size();) {
        uint64_t length = 0;
        std::memcpy(&length, list.bytes.data() + at, sizeof length);
        LearnClient(list.bytes.data() + at);
        if (length < m_header.entityHeadSize)
            break;
        at += length;
    }
}
