#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <array>
#include <compare>
#include <cstdint>

/// 128-bit identifier. Bytes are kept in the order in which files store them.
struct ZV_API Guid {
    std::array<uint8_t, 16> bytes{};

    /// Random (version 4, RFC 4122) from the system's entropy source.
    static Guid New();
    /// "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx", upper-case, bytes in storage order.
    XStringW ToString() const;
    /// With or without braces, either case; false (out untouched) for anything else.
    static bool Parse(std::u16string_view text, Guid& out);
    bool IsNull() const { return *this == Guid{}; }
    friend auto operator<=>(const Guid&, const Guid&) = default;
};

template <>
struct std::hash<Guid> {
    size_t operator()(const Guid& g) const noexcept {
        uint64_t a = 0, b = 0;
        for (int i = 0; i < 8; ++i)
            a = a << 8 | g.bytes[size_t(i)], b = b << 8 | g.bytes[size_t(i) + 8];
        return size_t(a * 0x9E3779B97F4A7C15ull ^ b);
    }
};
