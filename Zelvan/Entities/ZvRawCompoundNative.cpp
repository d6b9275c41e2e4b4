#include "Zelvan/Entities/ZvRawCompoundProxy.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeHeader.h"
#include <algorithm>
#include <cmath>

namespace {

/// What a compound writes behind the record head; a reader takes a shorter or longer form of it.
#pragma pack(push, 1)
struct Fields {
    uint16_t size;
    int16_t lineType;
    float lineWidth;
    uint32_t brushValue;
    int16_t brushIndex;
    int16_t brushStyle;
    uint8_t tie;
    uint8_t hasChildren;
    int32_t block;
};
#pragma pack(pop)
static_assert(sizeof(Fields) == 22);

} // namespace

bool ZvRawCompound::Proxy::SamePayload(const Proxy& other) const {
    constexpr auto head = ptrdiff_t(ZvNativeRecordHead::kSize);
    return type == other.type &&
           std::equal(record.begin() + head, record.end(), other.record.begin() + head, other.record.end());
}

void ZvRawCompound::SetProxyRecord(std::vector<uint8_t> record,
                                   std::shared_ptr<ZvNativeDesc::Client> client) {
    ZvNativeRecordHead head;
    head.Parse(record.data(), ZvNativeFile::kVersion);
    m_proxy = std::make_unique<Proxy>();
    m_proxy->record = std::move(record);
    m_proxy->client = std::move(client);
    m_proxy->clientId = head.client;
    m_proxy->type = head.type;
    uint32_t name = 0;
    if (head.Name32(name))
        SetName32(name);
    SetColor(ZvColor(int(head.colorIndex), head.colorValue));
    SetFlags(head.flags);
}

const std::vector<uint8_t>& ZvRawCompound::ProxyRecord() const {
    static const std::vector<uint8_t> none;
    return m_proxy ? m_proxy->record : none;
}

const ZvNativeDesc::Client* ZvRawCompound::ProxyClient() const {
    return m_proxy ? m_proxy->client.get() : nullptr;
}

/// The record as it came. Its client id is that of the client in this file, and its name that of the entity: both stay as they
/// were unless they are taken.
bool ZvRawCompound::WriteProxy(ZvNativeDesc& desc) const {
    ZvNativeRecordHead head;
    head.Parse(m_proxy->record.data(), ZvNativeFile::kVersion);
    if (m_proxy->client)
        head.client = desc.Native().ClientIdFor(m_proxy->client);
    uint32_t stored = 0;
    if (!head.Name32(stored) || stored != Name32())
        head.name = Name32();
    uint8_t bytes[ZvNativeRecordHead::kSize];
    head.Store(bytes);
    desc.CountRecord(head.client);
    if (m_proxy->client)
        desc.Native().NoteProxyType(head.client, head.type, *m_proxy->client);
    return desc.Write(bytes, sizeof bytes) &&
           desc.Write(m_proxy->record.data() + sizeof bytes, m_proxy->record.size() - sizeof bytes);
}

bool ZvRawCompound::NativeOut(ZvNativeDesc& desc) const {
    if (m_proxy)
        return !WriteProxy(desc);
    const uint64_t start = desc.Native().StoreRecordStart();
    if (NativeOutBase(desc, kPubKeepAsProxy) || !WriteCompoundFields(desc, true))
        return true;
    desc.Native().WriteRecordLength64(start);
    return false;
}

bool ZvRawCompound::NativeIn(ZvNativeDesc& desc) {
    return NativeInBase(desc) || !ReadCompoundFields(desc);
}

bool ZvRawCompound::WriteCompoundFields(ZvNativeDesc& desc, bool children) const {
    Fields fields;
    fields.size = sizeof fields;
    fields.lineType = m_lineType.hardGet();
    fields.lineWidth = m_lineWidth.Raw();
    fields.brushValue = m_brushValue;
    fields.brushIndex = m_brushIndex;
    fields.brushStyle = m_brushStyle;
    fields.tie = uint8_t(m_tie);
    fields.hasChildren = children;
    fields.block = m_blockIndex;
    if (!desc.Write(&fields, sizeof fields))
        return false;
    if (!children)
        return true;
    std::vector<ZvEntity*> list;
    for (const std::unique_ptr<ZvEntity>& child : m_children)
        list.push_back(child.get());
    desc.Native().WriteEntityList(list);
    return !desc.File().Error();
}

bool ZvRawCompound::ReadCompoundFields(ZvNativeDesc& desc) {
    const uint64_t start = desc.Position();
    uint16_t size = 0;
    Fields fields{};
    if (!desc.ReadValue(size) || size < sizeof size || !desc.Seek(start) ||
        !desc.ReadPad(&fields, sizeof fields, size))
        return false;
    m_lineType.hardSet(fields.lineType);
    m_lineWidth.SetRaw(std::isfinite(fields.lineWidth) ? fields.lineWidth : 0);
    m_brushValue = fields.brushValue;
    m_brushIndex = fields.brushIndex;
    m_brushStyle = fields.brushStyle;
    const bool tied = fields.block >= 0 && fields.tie <= uint8_t(BlockTie::Indexed);
    m_tie = tied ? BlockTie(fields.tie) : BlockTie::None;
    m_blockIndex = m_tie == BlockTie::None ? -1 : fields.block;
    m_children.clear();
    m_boundsKnown = false;
    if (!fields.hasChildren)
        return true;
    ZvEntityList list;
    desc.Native().ReadEntityList(list);
    for (std::unique_ptr<ZvEntity>& child : list)
        TakeOver(std::move(child));
    return true;
}
