#include "Zelvan/ZvNativePayload.h"
#include "Zelvan/ZvNativeWalk.h"
#include "ZvCore/XString.h"
#include <algorithm>

namespace {

constexpr uint64_t kChainHead = 20;
constexpr int kDeepestList = 64;
constexpr uint64_t kProgressEvery = 65536;

} // namespace

void ZvNativeWalk::EntityChunks(ZvNativeCursor& cursor) {
    const ZvNativeCursor start = cursor;
    const char* loss = "the objects of this list";
    uint64_t length = 0, total = 0;
    uint32_t blocks = 0;
    if (!Number(cursor, "list length", length) || !Number(cursor, "objects", total) ||
        !Number(cursor, "blocks", blocks) || length < kChainHead || length > start.Left()) {
        Problem(start, "the head of the list is damaged", loss);
        cursor.SkipAll();
        return;
    }
    ZvNativeCursor chain = start.Part(length);
    chain.Skip(kChainHead);
    cursor = start;
    cursor.Skip(length);
    for (uint32_t i = 0; i < blocks && !m_cancelled && !m_visitor.Stopped(); ++i) {
        if (!chain.Left()) {
            Problem(chain,
                    "the list ends behind " + std::to_string(i) + " of its " + std::to_string(blocks) +
                        " blocks",
                    "the objects of the missing blocks");
            break;
        }
        const Level level(*this, "chunk " + std::to_string(i));
        const ZvNativeStream* stream = OpenBlock(chain, "objects block", "the objects of this block");
        if (!stream)
            continue;
        ZvNativeCursor content(*stream, 0, stream->size);
        EntityList(content);
        CloseBlock();
    }
    if (chain.Left())
        Problem(chain, "bytes follow the last block of the list", "nothing");
}

void ZvNativeWalk::EntityList(ZvNativeCursor& cursor) {
    const ZvNativeCursor start = cursor;
    int64_t count = 0;
    if (!Number(cursor, "records", count) || count < 0 || m_listDepth >= kDeepestList) {
        Problem(start, "the list has no sensible count", "its objects");
        return;
    }
    ++m_listDepth;
    const bool former = m_quiet;
    for (int64_t i = 0; i < count && !m_cancelled && !m_visitor.Stopped(); ++i) {
        if (uint64_t(i) >= m_visitor.MaxEntities())
            m_quiet = true;
        if (uint64_t(i) % kProgressEvery == kProgressEvery - 1 && m_options.progress &&
            !m_options.progress->Step("Checking", cursor.At(), cursor.End()))
            m_cancelled = true;
        if (!Record(cursor, uint64_t(i), count - i))
            break;
    }
    m_quiet = former;
    --m_listDepth;
}

bool ZvNativeWalk::Record(ZvNativeCursor& cursor, uint64_t index, int64_t left) {
    const ZvNativeCursor start = cursor;
    const uint32_t headSize = m_inner.entityHeadSize;
    ZvNativeRecordHead head;
    uint8_t bytes[ZvNativeRecordHead::kSize] = {};
    const bool whole = headSize >= 12 && start.Left() >= headSize;
    if (whole) {
        std::memcpy(bytes, start.Here(), std::min<size_t>(headSize, sizeof bytes));
        head.Parse(bytes, m_version);
    }
    if (!whole || head.length < headSize || head.length > start.Left()) {
        const Level level(*this, "record ", index);
        Problem(start,
                whole ? "the record length " + std::to_string(head.length) + " cannot be true"
                      : "the stream ends in the record's head",
                std::to_string(left) + " objects, this one and those behind it");
        return false;
    }
    cursor.Skip(head.length);
    ZvNativeCursor payload = start.Part(head.length);
    payload.Skip(headSize);
    const auto client = m_clients.find(head.client);
    if (client != m_clients.end())
        ++client->second.seen;
    const bool builtIn = client != m_clients.end() && client->second.isBuiltIn;
    const ZvNativePayload* kind = builtIn ? ZvNativePayload::Find(head.type) : nullptr;
    m_visitor.Entity(kind != nullptr);
    m_ownEntities += m_listDepth == 1;
    uint32_t name32 = 0;
    const bool goodName = head.Name32(name32);
    if (!WantsFields() && goodName && client != m_clients.end() && (!kind || !kind->check))
        return true;
    const Level level(*this, "record ", index);
    if (WantsFields())
        TellRecord(start, head, kind);
    if (!goodName)
        Problem(start.Stream(), start.At() + 12,
                "the name " + std::to_string(head.name) + " is above 32 bits", "this object");
    if (client == m_clients.end())
        Problem(start.Stream(), start.At() + 8,
                "client " + std::to_string(head.client) + " has no client record",
                "what the object is; it is kept as it is when its flags say so");
    if (kind && kind->check)
        kind->check(*this, payload);
    else if (WantsFields())
        Tell(payload, payload.Left(), "payload", std::to_string(payload.Left()) + " bytes");
    return true;
}

void ZvNativeWalk::TellRecord(const ZvNativeCursor& start, const ZvNativeRecordHead& head,
                              const ZvNativePayload* kind) {
    const std::string what =
        kind ? kind->name : "client " + std::to_string(head.client) + " type " + std::to_string(head.type);
    Tell(start, head.length, "object", what + ", " + std::to_string(head.length) + " bytes");
    Tell(start.Stream(), start.At() + 12, 8, "name", std::to_string(head.name));
    Tell(start.Stream(), start.At() + 20, 6, "colour",
         std::to_string(head.colorIndex) + XStringA::Format(":%08X", head.colorValue).Str());
    Tell(start.Stream(), start.At() + 26, 4, "flags", XStringA::Format("0x%08X", head.flags).Str());
}
