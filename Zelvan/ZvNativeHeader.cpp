#include "Zelvan/ZvNativeHeader.h"
#include <cstring>
#include <string_view>

namespace {

template <class T>
T Load(const uint8_t* from) {
    T value;
    std::memcpy(&value, from, sizeof(T));
    return value;
}

template <class T>
void Put(uint8_t* to, T value) {
    std::memcpy(to, &value, sizeof(T));
}

std::string LoadText(const uint8_t* field, size_t size) {
    const char* text = reinterpret_cast<const char*>(field);
    return std::string(text, strnlen(text, size));
}

/// Cuts between two UTF-8 characters; the rest of the field, its last byte included, is zero.
void PutText(uint8_t* field, size_t size, std::string_view text) {
    size_t length = text.size() < size - 1 ? text.size() : size - 1;
    if (length < text.size())
        while (length > 0 && (uint8_t(text[length]) & 0xC0) == 0x80)
            --length;
    std::memset(field, 0, size);
    if (length)
        std::memcpy(field, text.data(), length);
}

} // namespace

void ZvNativeHeader::Parse(const uint8_t bytes[kSize]) {
    size = Load<uint64_t>(bytes);
    std::memcpy(magic, bytes + 8, 8);
    version = Load<int32_t>(bytes + 16);
    length = Load<uint64_t>(bytes + 20);
    entityHeadSize = Load<uint32_t>(bytes + 28);
    clientCount = Load<uint32_t>(bytes + 32);
    clientsOffset = Load<uint64_t>(bytes + 36);
    tablesOffset = Load<uint64_t>(bytes + 44);
    settingsOffset = Load<uint64_t>(bytes + 52);
    std::memcpy(digest.data(), bytes + kDigestOffset, 16);
    flags = Load<uint64_t>(bytes + 76);
    solidOffset = Load<uint64_t>(bytes + 84);
    minimumReader = Load<int32_t>(bytes + 92);
    buildStamp = Load<uint64_t>(bytes + 96);
}

void ZvNativeHeader::Store(uint8_t bytes[kSize]) const {
    Put(bytes, size);
    std::memcpy(bytes + 8, magic, 8);
    Put(bytes + 16, version);
    Put(bytes + 20, length);
    Put(bytes + 28, entityHeadSize);
    Put(bytes + 32, clientCount);
    Put(bytes + 36, clientsOffset);
    Put(bytes + 44, tablesOffset);
    Put(bytes + 52, settingsOffset);
    std::memcpy(bytes + kDigestOffset, digest.data(), 16);
    Put(bytes + 76, flags);
    Put(bytes + 84, solidOffset);
    Put(bytes + 92, minimumReader);
    Put(bytes + 96, buildStamp);
}

bool ZvNativeHeader::HasMagic() const {
    return std::memcmp(magic, kMagic, 7) == 0;
}

void ZvNativeBlockHead::Parse(const uint8_t bytes[kSize]) {
    method = Load<uint32_t>(bytes);
    length = Load<uint64_t>(bytes + 4);
    stored = Load<uint64_t>(bytes + 12);
    std::memcpy(digest.data(), bytes + 20, 16);
}

void ZvNativeBlockHead::Store(uint8_t bytes[kSize]) const {
    Put(bytes, method);
    Put(bytes + 4, length);
    Put(bytes + 12, stored);
    std::memcpy(bytes + 20, digest.data(), 16);
}

void ZvNativeRecordHead::Parse(const uint8_t bytes[kSize], int version) {
    length = Load<uint64_t>(bytes);
    client = Load<uint16_t>(bytes + 8);
    type = Load<uint16_t>(bytes + 10);
    name = Load<uint64_t>(bytes + 12);
    if (version >= kColorValueFirstVersion) {
        colorValue = Load<uint32_t>(bytes + 20);
        colorIndex = Load<int16_t>(bytes + 24);
    } else {
        colorIndex = Load<int16_t>(bytes + 20);
        colorValue = Load<uint32_t>(bytes + 22);
    }
    flags = Load<uint32_t>(bytes + 26);
}

void ZvNativeRecordHead::Store(uint8_t bytes[kSize]) const {
    Put(bytes, length);
    Put(bytes + 8, client);
    Put(bytes + 10, type);
    Put(bytes + 12, name);
    Put(bytes + 20, colorValue);
    Put(bytes + 24, colorIndex);
    Put(bytes + 26, flags);
}

bool ZvNativeRecordHead::Name32(uint32_t& out) const {
    if (name == ~uint64_t(0)) {
        out = 0;
        return true;
    }
    if (name > 0xFFFFFFFFu)
        return false;
    out = uint32_t(name);
    return true;
}

void ZvNativeClientRecord::Parse(const uint8_t bytes[kSize]) {
    name = LoadText(bytes + 4, kNameSize);
    id = Load<uint32_t>(bytes + 1028);
    std::memcpy(guid, bytes + 1032, 16);
    records = Load<uint32_t>(bytes + 1048);
    types = Load<uint32_t>(bytes + 1060);
}

void ZvNativeClientRecord::Store(uint8_t bytes[kSize]) const {
    std::memset(bytes, 0, kSize);
    Put(bytes, uint32_t(kSize));
    PutText(bytes + 4, kNameSize, name);
    Put(bytes + 1028, id);
    std::memcpy(bytes + 1032, guid, 16);
    Put(bytes + 1048, records);
    Put(bytes + 1060, types);
}

void ZvNativeTypeRecord::Parse(const uint8_t bytes[kSize]) {
    type = Load<uint16_t>(bytes + 4);
    hasName = Load<uint32_t>(bytes + 6);
    name = LoadText(bytes + 10, kNameSize);
}

void ZvNativeTypeRecord::Store(uint8_t bytes[kSize]) const {
    std::memset(bytes, 0, kSize);
    Put(bytes, uint32_t(kSize));
    Put(bytes + 4, type);
    Put(bytes + 6, hasName);
    PutText(bytes + 10, kNameSize, name);
}
