#include "ZvCore/Unicode.h"

namespace ZvCore {

namespace {

/// How a multi-byte sequence goes on behind its lead byte (table 3-7 of the standard): count of trailing
/// bytes and the range of the first of them, which excludes overlong forms, surrogates and what lies above
/// U+10FFFF.
struct Lead {
    int trailing;
    unsigned char low;
    unsigned char high;
};

Lead LeadOf(unsigned char c) {
    if (c >= 0xC2 && c <= 0xDF)
        return {1, 0x80, 0xBF};
    if (c >= 0xE0 && c <= 0xEF)
        return {2, static_cast<unsigned char>(c == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(c == 0xED ? 0x9F : 0xBF)};
    if (c >= 0xF0 && c <= 0xF4)
        return {3, static_cast<unsigned char>(c == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(c == 0xF4 ? 0x8F : 0xBF)};
    return {0, 0, 0};
}

/// The code point that begins at `i`, a byte of 0x80 or more; `i` is moved behind what belongs together.
char32_t NextMultiByte(std::string_view text, size_t& i) {
    const auto first = static_cast<unsigned char>(text[i++]);
    Lead lead = LeadOf(first);
    if (lead.trailing == 0)
        return Unicode::kReplacement;
    char32_t c = first & (0x3Fu >> lead.trailing);
    for (int n = 0; n < lead.trailing; ++n) {
        if (i == text.size())
            return Unicode::kReplacement;
        const auto next = static_cast<unsigned char>(text[i]);
        if (next < lead.low || next > lead.high)
            return Unicode::kReplacement;
        c = c << 6 | (next & 0x3Fu);
        lead.low = 0x80, lead.high = 0xBF;
        ++i;
    }
    return c;
}

} // namespace

std::u16string Unicode::Utf8To16(std::string_view utf8) {
    std::u16string out;
    out.reserve(utf8.size());
    for (size_t i = 0; i < utf8.size();) {
        if (static_cast<unsigned char>(utf8[i]) < 0x80)
            out += static_cast<char16_t>(utf8[i++]);
        else
            Append(out, NextMultiByte(utf8, i));
    }
    return out;
}

std::string Unicode::Utf16To8(std::u16string_view utf16) {
    std::string out;
    out.reserve(utf16.size());
    for (size_t i = 0; i < utf16.size();) {
        char32_t c = Next(utf16, i);
        if (c < 0x80) {
            out += char(c);
            continue;
        }
        if (c >= 0xD800 && c <= 0xDFFF)
            c = kReplacement;
        if (c < 0x800) {
            out += char(0xC0 | c >> 6);
        } else {
            if (c < 0x10000) {
                out += char(0xE0 | c >> 12);
            } else {
                out += char(0xF0 | c >> 18);
                out += char(0x80 | (c >> 12 & 0x3F));
            }
            out += char(0x80 | (c >> 6 & 0x3F));
        }
        out += char(0x80 | (c & 0x3F));
    }
    return out;
}

bool Unicode::IsSpace(char32_t c) {
    return (c >= 9 && c <= 13) || c == ' ' || c == 0x85 || c == 0xA0 || c == 0x1680 ||
           (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
           c == 0x3000;
}

} // namespace ZvCore
