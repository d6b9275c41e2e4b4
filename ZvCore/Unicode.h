#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace ZvCore {

/// Conversions between the encoding forms of the Unicode Standard (chapter 3.9). What is malformed becomes
/// U+FFFD, one for each maximal ill-formed part.
class Unicode {
public:
    static constexpr char32_t kReplacement = 0xFFFD;

    static std::u16string Utf8To16(std::string_view utf8);
    static std::string Utf16To8(std::u16string_view utf16);
    /// The code point at `i`, which is moved behind it; an unpaired surrogate is answered as it is.
    static char32_t Next(std::u16string_view text, size_t& i) {
        const char16_t c = text[i++];
        if (c < 0xD800 || c > 0xDBFF || i == text.size() || text[i] < 0xDC00 || text[i] > 0xDFFF)
            return c;
        return 0x10000 + ((char32_t(c) - 0xD800) << 10) + (text[i++] - 0xDC00);
    }
    static void Append(std::u16string& out, char32_t c) {
        if (c < 0x10000) {
            out += char16_t(c);
        } else {
            out += char16_t(0xD800 + ((c - 0x10000) >> 10));
            out += char16_t(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
    /// Property White_Space.
    static bool IsSpace(char32_t c);
};

} // namespace ZvCore
