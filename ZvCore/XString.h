#pragma once
#include "ZvCore/Api.h"
#include <compare>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

/// Wide string: UTF-16 code units on every platform. A value type; embedded zeros are allowed.
class ZV_API XStringW {
public:
    XStringW() = default;
    XStringW(const char16_t* text) : m_text(text ? text : u"") {}
    XStringW(std::u16string_view text) : m_text(text) {}
    XStringW(std::u16string text) : m_text(std::move(text)) {}

    /// Malformed sequences become U+FFFD, one per maximal ill-formed part.
    static XStringW FromUtf8(std::string_view utf8);
    /// printf-style formatting of a narrow format; the result is read as UTF-8. %s takes UTF-8 text; "%I64d",
    /// "%I64X" are accepted as 64-bit forms on every platform; the decimal sign is a point in every locale.
    static XStringW Format(const char* format, ...)
#if defined(__GNUC__) && !defined(_WIN32)
        __attribute__((format(printf, 1, 2)))
#endif
        ;
    /// Unpaired surrogates become U+FFFD.
    std::string ToUtf8() const;

    /// Upper-casing of single code points by the platform-independent table (no locale, length kept in code
    /// points: "ß" stays as it is).
    XStringW ToUpper() const;
    XStringW ToLower() const;
    /// Same as comparing ToUpper() of both.
    bool EqualsNoCase(const XStringW& other) const;
    bool StartsWith(std::u16string_view prefix) const {
        return View().starts_with(prefix);
    }
    bool EndsWith(std::u16string_view suffix) const {
        return View().ends_with(suffix);
    }
    /// Without white space (Unicode's) at both ends.
    XStringW Trimmed() const;

    bool IsEmpty() const {
        return m_text.empty();
    }
    size_t Length() const {
        return m_text.size();
    }
    const char16_t* Ptr() const {
        return m_text.c_str();
    }
    std::u16string_view View() const {
        return m_text;
    }
    const std::u16string& Str() const {
        return m_text;
    }
    std::u16string& Str() {
        return m_text;
    }
    char16_t operator[](size_t i) const {
        return m_text[i];
    }
    void Clear() {
        m_text.clear();
    }

    XStringW& operator+=(const XStringW& s) {
        m_text += s.m_text;
        return *this;
    }
    XStringW& operator+=(char16_t c) {
        m_text += c;
        return *this;
    }
    friend XStringW operator+(XStringW a, const XStringW& b) {
        return a += b;
    }
    friend bool operator==(const XStringW&, const XStringW&) = default;
    friend auto operator<=>(const XStringW& a, const XStringW& b) {
        return a.m_text <=> b.m_text;
    }

private:
    std::u16string m_text;
};

/// Narrow string: bytes in the code page that its user states (UTF-8 unless said otherwise).
class ZV_API XStringA {
public:
    XStringA() = default;
    XStringA(const char* text) : m_text(text ? text : "") {}
    XStringA(std::string text) : m_text(std::move(text)) {}
    XStringA(std::string_view text) : m_text(text) {}

    static XStringA Format(const char* format, ...)
#if defined(__GNUC__) && !defined(_WIN32)
        __attribute__((format(printf, 1, 2)))
#endif
        ;
    /// Upper-cases ASCII letters only.
    XStringA ToUpper() const;

    bool IsEmpty() const {
        return m_text.empty();
    }
    size_t Length() const {
        return m_text.size();
    }
    const char* Ptr() const {
        return m_text.c_str();
    }
    std::string_view View() const {
        return m_text;
    }
    const std::string& Str() const {
        return m_text;
    }
    std::string& Str() {
        return m_text;
    }
    XStringA& operator+=(const XStringA& s) {
        m_text += s.m_text;
        return *this;
    }
    friend XStringA operator+(XStringA a, const XStringA& b) {
        return a += b;
    }
    friend bool operator==(const XStringA&, const XStringA&) = default;
    friend auto operator<=>(const XStringA& a, const XStringA& b) {
        return a.m_text <=> b.m_text;
    }

private:
    std::string m_text;
};

template <>
struct std::hash<XStringW> {
    size_t operator()(const XStringW& s) const noexcept { return std::hash<std::u16string_view>()(s.View()); }
};
template <>
struct std::hash<XStringA> {
    size_t operator()(const XStringA& s) const noexcept { return std::hash<std::string_view>()(s.View()); }
};
