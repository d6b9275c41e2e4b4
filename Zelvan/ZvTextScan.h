#pragma once
#include "ZvCore/XString.h"
#include <cstdint>
#include <string>
#include <string_view>

/// Reads the text forms of values from left to right. Every reader skips blanks first, and moves on only when
/// it succeeds.
class ZvTextScan {
public:
    /// Keeps UTF-8 of the text; upper-cased so that keywords match in any case.
    static ZvTextScan Upper(const XStringW& text) { return ZvTextScan(text.ToUpper().ToUtf8()); }
    explicit ZvTextScan(std::string text) : m_text(std::move(text)) {}

    void SkipBlanks();
    bool AtEnd();
    /// The text as it stands, e.g. "WORLD:".
    bool Literal(std::string_view expected);
    /// As Literal, with nothing behind it.
    bool Whole(std::string_view expected);
    bool Int(int& value);
    /// Decimal number with an optional sign and exponent; a point is the decimal sign. Neither "inf" nor
    /// "nan".
    bool Number(double& value);
    /// At most 8 hexadecimal digits, either case.
    bool Hex(uint32_t& value);
    /// What is left, blanks in front taken off.
    std::string_view Rest();

private:
    std::string m_text;
    size_t m_pos = 0;
};
