#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <compare>
#include <cstdint>

/// Identity of an entity within one drawing: an unsigned 32-bit number handed out by the drawing's name table; 0 is null.
struct ZV_API ZvName {
    uint32_t value = 0;

    constexpr ZvName() = default;
    constexpr ZvName(uint32_t v) : value(v) {}
    constexpr bool IsNull() const { return value == 0; }
    /// Decimal digits; "0" for the null name.
    XStringW ToString() const;
    /// Decimal digits with optional blanks around them, at most 4294967295. False (out untouched) for anything else.
    static bool ParseString(std::u16string_view text, ZvName& out);
    /// The null name for text that does not parse.
    static ZvName FromString(std::u16string_view text);
    friend constexpr auto operator<=>(const ZvName&, const ZvName&) = default;
};

template <>
struct std::hash<ZvName> {
    size_t operator()(ZvName n) const noexcept { return n.value; }
};
