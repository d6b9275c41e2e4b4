#include "ZvCore/Guid.h"
#include "ZvCore/Platform/Platform.h"

namespace {

constexpr char16_t kDigits[] = u"0123456789ABCDEF";
constexpr size_t kTextLength = 36;

constexpr bool IsDash(size_t i) {
    return i == 8 || i == 13 || i == 18 || i == 23;
}

int DigitValue(char16_t c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

} // namespace

Guid Guid::New() {
    Guid guid;
    ZvPlatform::RandomBytes(guid.bytes.data(), guid.bytes.size());
    guid.bytes[6] = uint8_t(0x40 | (guid.bytes[6] & 0x0F)); // version 4
    guid.bytes[8] = uint8_t(0x80 | (guid.bytes[8] & 0x3F)); // variant of the RFC
    return guid;
}

XStringW Guid::ToString() const {
    std::u16string text;
    text.reserve(kTextLength);
    for (uint8_t byte : bytes) {
        if (IsDash(text.size()))
            text += u'-';
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

bool Guid::Parse(std::u16string_view text, Guid& out) {
    if (text.size() == kTextLength + 2 && text.front() == '{' && text.back() == '}')
        text = text.substr(1, kTextLength);
    if (text.size() != kTextLength)
        return false;
    Guid guid;
    size_t digit = 0;
    for (size_t i = 0; i < kTextLength; ++i) {
        if (IsDash(i)) {
            if (text[i] != '-')
                return false;
            continue;
        }
        const int value = DigitValue(text[i]);
        if (value < 0)
            return false;
        guid.bytes[digit / 2] = uint8_t(guid.bytes[digit / 2] << 4 | value);
        ++digit;
    }
    out = guid;
    return true;
}
