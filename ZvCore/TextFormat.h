#pragma once
#include <cstdarg>
#include <string>

namespace ZvCore {

/// The printf family with one answer on every platform: "I64" and "I32" are length modifiers as "ll" and ""
/// are, the decimal sign is a point whatever the locale. "%n" writes nothing, "%ls" and "%lc" are not
/// supported, a null "%s" is "(null)".
class TextFormat {
public:
    static std::string FormatV(const char* format, va_list args);
};

} // namespace ZvCore
