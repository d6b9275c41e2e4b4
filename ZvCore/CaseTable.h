#pragma once
#include <cstdint>

namespace ZvCore {

/// Simple case mapping of single code points (the Unicode Character Database's UnicodeData.txt, version 14):
/// one code point in, one out, in the same plane, and no locale. Everything without a mapping stays as it is.
class CaseTable {
public:
    static char32_t ToUpper(char32_t c);
    static char32_t ToLower(char32_t c);
};

} // namespace ZvCore
