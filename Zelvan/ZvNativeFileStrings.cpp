#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

// A string is one byte for its encoding, an int32 length in characters, and the characters.

namespace {

enum Encoding : uint8_t { kNarrow = 0, kWide = 1 };
constexpr size_t kHeadSize = 5;
constexpr size_t kStackBytes = 7984;

bool FitsLength(size_t characters) {
    return characters <= size_t(std::numeric_limits<int32_t>::max());
}

/// Widens as a signed byte: 0x80..0xFF become 0xFF80..0xFFFF. Files depend on it.
char16_t Widen(char c) {
    return char16_t(int16_t(static_cast<signed char>(c)));
}

/// Copies as much of converted text as fits, cut between two characters of a multi-byte code page.
void Fill(char* buffer, size_t capacity, const std::string& text) {
    size_t length = std::min(text.size(), capacity - 1);
    if (length < text.size())
        while (length > 0 && (uint8_t(text[length]) & 0xC0) == 0x80)
            --length;
    std::memcpy(buffer, text.data(), length);
    buffer[length] = 0;
}

} // namespace

// --- writing ---------------------------------------------------------------------------------------------------------------

bool ZvNativeFile::WriteStringHead(uint8_t encoding, int32_t length) {
    return m_impl->desc->WriteValue(encoding) && m_impl->desc->WriteValue(length);
}

bool ZvNativeFile::WriteString(const char* text, int32_t length) {
    if (!text)
        return WriteStringHead(kNarrow, 0);
    const size_t count = length < 0 ? std::strlen(text) : size_t(length);
    return FitsLength(count) && WriteStringHead(kNarrow, int32_t(count)) && m_impl->desc->Write(text, count);
}

bool ZvNativeFile::WriteString(const char16_t* text, int32_t length) {
    if (!text)
        return WriteStringHead(kWide, 0);
    const size_t count = length < 0 ? std::char_traits<char16_t>::length(text) : size_t(length);
    return FitsLength(count) && WriteStringHead(kWide, int32_t(count)) &&
           m_impl->desc->Write(text, 2 * count);
}

bool ZvNativeFile::WriteString(const XStringW& text) {
    return FitsLength(text.Length()) && WriteStringHead(kWide, int32_t(text.Length())) &&
           m_impl->desc->Write(text.Ptr(), 2 * text.Length());
}

// --- reading ---------------------------------------------------------------------------------------------------------------

bool ZvNativeFile::ReadStringHead(uint8_t& encoding, int32_t& length) {
    ZvNativeDesc& desc = *m_impl->desc;
    if (!desc.ReadValue(encoding) || !desc.ReadValue(length))
        return false;
    return encoding <= kWide && length >= 0 &&
           uint64_t(length) << (encoding == kWide ? 1 : 0) <= desc.RecordRemaining();
}

bool ZvNativeFile::PeekString(uint8_t& encoding, int32_t& length) {
    ZvNativeDesc& desc = *m_impl->desc;
    if (desc.RecordRemaining() < kHeadSize)
        return false;
    const uint64_t at = desc.Position();
    const bool good = ReadStringHead(encoding, length);
    return desc.Seek(at) && good;
}

bool ZvNativeFile::ReadStringRaw(char* buffer, size_t capacity) {
    ZvNativeDesc& desc = *m_impl->desc;
    uint8_t encoding = 0;
    int32_t length = 0;
    if (!capacity || !ReadStringHead(encoding, length))
        return false;
    const size_t taken = std::min(size_t(length), capacity - 1);
    const uint64_t end = desc.Position() + (uint64_t(length) << (encoding == kWide ? 1 : 0));
    if (encoding == kNarrow) {
        if (!desc.Read(buffer, taken))
            return false;
        buffer[taken] = 0;
    } else {
        std::u16string wide(taken, u'\0');
        if (!desc.Read(wide.data(), 2 * taken))
            return false;
        Fill(buffer, capacity, ZvPlatform::WideToAnsi(wide));
    }
    return desc.Seek(end);
}

bool ZvNativeFile::ReadStringRaw(char16_t* buffer, size_t capacity) {
    ZvNativeDesc& desc = *m_impl->desc;
    uint8_t encoding = 0;
    int32_t length = 0;
    if (!capacity || !ReadStringHead(encoding, length))
        return false;
    const size_t taken = std::min(size_t(length), capacity - 1);
    const uint64_t end = desc.Position() + (uint64_t(length) << (encoding == kWide ? 1 : 0));
    if (encoding == kWide) {
        if (!desc.Read(buffer, 2 * taken))
            return false;
    } else {
        // The narrow bytes go to the upper half of the buffer and are widened from the front.
        char* narrow = reinterpret_cast<char*>(buffer) + taken;
        if (!desc.Read(narrow, taken))
            return false;
        for (size_t i = 0; i < taken; ++i)
            buffer[i] = Widen(narrow[i]);
    }
    buffer[taken] = 0;
    return desc.Seek(end);
}

bool ZvNativeFile::ReadStringA(XStringA& text) {
    uint8_t encoding = 0;
    int32_t length = 0;
    if (!PeekString(encoding, length))
        return false;
    if (encoding == kWide) {
        XStringW wide;
        if (!ReadStringW(wide))
            return false;
        text = XStringA(ZvPlatform::WideToAnsi(wide.View()));
        return true;
    }
    if (size_t(length) < kStackBytes) {
        char buffer[kStackBytes];
        if (!ReadStringRaw(buffer, sizeof buffer))
            return false;
        text = XStringA(std::string(buffer, size_t(length)));
        return true;
    }
    std::string buffer(size_t(length) + 1, '\0');
    if (!ReadStringRaw(buffer.data(), buffer.size()))
        return false;
    buffer.resize(size_t(length));
    text = XStringA(std::move(buffer));
    return true;
}

bool ZvNativeFile::ReadStringW(XStringW& text) {
    uint8_t encoding = 0;
    int32_t length = 0;
    if (!PeekString(encoding, length))
        return false;
    std::u16string buffer(size_t(length) + 1, u'\0');
    if (!ReadStringRaw(buffer.data(), buffer.size()))
        return false;
    buffer.resize(size_t(length));
    text = XStringW(std::move(buffer));
    return true;
}

void ZvNativeFile::WriteCharString(const XStringW& text, char* field, size_t size) {
    if (!size)
        return;
    const size_t length = std::min(text.Length(), size - 1);
    for (size_t i = 0; i < length; ++i)
        field[i] = char(text[i] & 0xFF);
    std::memset(field + length, 0, size - length);
}

XStringW ZvNativeFile::ReadCharString(const char* field, size_t size) {
    std::u16string text;
    for (size_t i = 0; i < size && field[i]; ++i)
        text.push_back(Widen(field[i]));
    return XStringW(std::move(text));
}

bool ZvNativeFile::WriteBinXml(const ZvCore::BinXmlDocument& document) {
    return document.Write(File());
}

bool ZvNativeFile::WriteBinXml(const ZvCore::BinXmlNode& node) {
    return node.Write(File());
}

bool ZvNativeFile::ReadBinXml(ZvCore::BinXmlDocument& document) {
    std::string why;
    const uint64_t end = m_impl->desc->RecordEnd();
    return document.Read(File(), why) && m_impl->desc->Position() <= end;
}

bool ZvNativeFile::ReadBinXml(ZvCore::BinXmlNode& node) {
    std::string why;
    const uint64_t end = m_impl->desc->RecordEnd();
    return node.Read(File(), why) && m_impl->desc->Position() <= end;
}
