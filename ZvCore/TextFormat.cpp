#include "ZvCore/TextFormat.h"
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace ZvCore {

namespace {

enum class Size { Char, Short, Int, Long, LongLong, LongDouble, Pointer };

/// One conversion between '%' and its letter.
struct Conversion {
    std::string head; ///< '%', flags, width and precision, with every '*' replaced by its number
    Size size = Size::Int;
    char letter = 0; ///< 0 when the format ends before it
};

/// What the system's formatting makes of one value; `spec` is ours, so its letter fits the value.
template <class T>
void Print(std::string& out, const std::string& spec, T value) {
    char small[128];
    const int length = std::snprintf(small, sizeof small, spec.c_str(), value);
    if (length < 0)
        return;
    if (size_t(length) < sizeof small) {
        out.append(small, size_t(length));
        return;
    }
    const size_t start = out.size();
    out.resize(start + size_t(length) + 1);
    std::snprintf(out.data() + start, size_t(length) + 1, spec.c_str(), value);
    out.pop_back();
}

template <class T>
void PrintReal(std::string& out, const std::string& spec, T value) {
    const size_t start = out.size();
    Print(out, spec, value);
    const char* sign = std::localeconv()->decimal_point;
    if (std::strcmp(sign, ".") == 0)
        return;
    const size_t at = out.find(sign, start);
    if (at != std::string::npos)
        out.replace(at, std::strlen(sign), ".");
}

Size ParseSize(const char*& p) {
    const auto take = [&p](const char* prefix) {
        const size_t length = std::strlen(prefix);
        if (std::strncmp(p, prefix, length) != 0)
            return false;
        p += length;
        return true;
    };
    if (take("I64") || take("ll") || take("j"))
        return Size::LongLong;
    if (take("I32"))
        return Size::Int;
    if (take("hh"))
        return Size::Char;
    if (take("h"))
        return Size::Short;
    if (take("l"))
        return Size::Long;
    if (take("L"))
        return Size::LongDouble;
    if (take("z") || take("t") || take("I"))
        return Size::Pointer;
    return Size::Int;
}

/// A va_list that can be handed on by reference, whatever type the system makes it.
struct Args {
    va_list list;
};

int64_t NextSigned(Args& args, Size size) {
    switch (size) {
    case Size::Char:
        return static_cast<signed char>(va_arg(args.list, int));
    case Size::Short:
        return static_cast<short>(va_arg(args.list, int));
    case Size::Long:
        return va_arg(args.list, long);
    case Size::LongLong:
        return va_arg(args.list, long long);
    case Size::Pointer:
        return va_arg(args.list, intptr_t);
    default:
        return va_arg(args.list, int);
    }
}

uint64_t NextUnsigned(Args& args, Size size) {
    switch (size) {
    case Size::Char:
        return static_cast<unsigned char>(va_arg(args.list, unsigned));
    case Size::Short:
        return static_cast<unsigned short>(va_arg(args.list, unsigned));
    case Size::Long:
        return va_arg(args.list, unsigned long);
    case Size::LongLong:
        return va_arg(args.list, unsigned long long);
    case Size::Pointer:
        return va_arg(args.list, uintptr_t);
    default:
        return va_arg(args.list, unsigned);
    }
}

/// `p` stands behind the '%' and is left behind the letter.
Conversion ParseConversion(const char*& p, Args& args) {
    Conversion c;
    c.head = "%";
    bool inFlags = true;
    for (; *p && std::strchr("-+ #0123456789.*'", *p); ++p) {
        inFlags = inFlags && std::strchr("-+ #0'", *p);
        if (*p == '*') {
            const int number = va_arg(args.list, int);
            if (number >= 0 || c.head.back() != '.')
                c.head += std::to_string(number); // a negative width is the flag '-' and a width
            else
                c.head.pop_back(); // a negative precision is none
        } else if (!(inFlags && *p == '\'')) {
            c.head += *p;
        }
    }
    c.size = ParseSize(p);
    if (*p)
        c.letter = *p++;
    return c;
}

void PrintConversion(std::string& out, const Conversion& c, Args& args) {
    switch (c.letter) {
    case 'd':
    case 'i':
        Print(out, c.head + "lld", static_cast<long long>(NextSigned(args, c.size)));
        break;
    case 'u':
    case 'x':
    case 'X':
    case 'o':
        Print(out, c.head + "ll" + c.letter, static_cast<unsigned long long>(NextUnsigned(args, c.size)));
        break;
    case 'f':
    case 'F':
    case 'e':
    case 'E':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
        if (c.size == Size::LongDouble)
            PrintReal(out, c.head + "L" + c.letter, va_arg(args.list, long double));
        else
            PrintReal(out, c.head + c.letter, va_arg(args.list, double));
        break;
    case 's': {
        const char* text = va_arg(args.list, const char*);
        if (c.head == "%")
            out += text ? text : "(null)";
        else
            Print(out, c.head + "s", text ? text : "(null)");
        break;
    }
    case 'c':
        if (const int byte = va_arg(args.list, int); c.head == "%")
            out += char(byte);
        else
            Print(out, c.head + "c", byte);
        break;
    case 'p':
        Print(out, c.head + "#llx", static_cast<unsigned long long>(va_arg(args.list, uintptr_t)));
        break;
    case 'n':
        (void)va_arg(args.list, void*);
        break;
    case '%':
        out += '%';
        break;
    default: // no conversion: it stays readable
        out += c.head;
        if (c.letter)
            out += c.letter;
        break;
    }
}

} // namespace

std::string TextFormat::FormatV(const char* format, va_list args) {
    std::string out;
    if (!format)
        return out;
    Args rest;
    va_copy(rest.list, args);
    for (const char* p = format; *p;) {
        const char* percent = std::strchr(p, '%');
        if (!percent) {
            out += p;
            break;
        }
        out.append(p, percent);
        p = percent + 1;
        PrintConversion(out, ParseConversion(p, rest), rest);
    }
    va_end(rest.list);
    return out;
}

} // namespace ZvCore
