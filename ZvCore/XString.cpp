#include "ZvCore/XString.h"
#include "ZvCore/CaseTable.h"
#include "ZvCore/TextFormat.h"
#include "ZvCore/Unicode.h"
#include <cstdarg>

using ZvCore::CaseTable;
using ZvCore::Unicode;

namespace {

template <class Fn>
std::u16string MapCodePoints(std::u16string_view text, Fn map) {
    std::u16string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();)
        Unicode::Append(out, map(Unicode::Next(text, i)));
    return out;
}

} // namespace

XStringW XStringW::FromUtf8(std::string_view utf8) {
    return Unicode::Utf8To16(utf8);
}

std::string XStringW::ToUtf8() const {
    return Unicode::Utf16To8(m_text);
}

XStringW XStringW::Format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    XStringW text = FromUtf8(ZvCore::TextFormat::FormatV(format, args));
    va_end(args);
    return text;
}

XStringW XStringW::ToUpper() const {
    return MapCodePoints(m_text, CaseTable::ToUpper);
}

XStringW XStringW::ToLower() const {
    return MapCodePoints(m_text, CaseTable::ToLower);
}

bool XStringW::EqualsNoCase(const XStringW& other) const {
    if (m_text.size() != other.m_text.size())
        return false; // a mapping never leaves its plane, so it keeps the count of code units
    for (size_t i = 0, j = 0; i < m_text.size() && j < other.m_text.size();)
        if (CaseTable::ToUpper(Unicode::Next(m_text, i)) !=
            CaseTable::ToUpper(Unicode::Next(other.m_text, j)))
            return false;
    return true;
}

XStringW XStringW::Trimmed() const {
    size_t from = 0, to = m_text.size();
    while (from < to && Unicode::IsSpace(m_text[from]))
        ++from;
    while (to > from && Unicode::IsSpace(m_text[to - 1]))
        --to;
    return m_text.substr(from, to - from);
}

XStringA XStringA::Format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    XStringA text = ZvCore::TextFormat::FormatV(format, args);
    va_end(args);
    return text;
}

XStringA XStringA::ToUpper() const {
    XStringA upper = *this;
    for (char& c : upper.m_text)
        if (c >= 'a' && c <= 'z')
            c = char(c - 32);
    return upper;
}
