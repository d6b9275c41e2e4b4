#include "Zelvan/DrawingAux/ZvAttributeText.h"
#include "Zelvan/ZvTextScan.h"
#include <charconv>
#include <cstdio>

namespace {

using Value = ZvAttributeColumn::Value;

std::optional<Value> Whole(std::string_view text) {
    text.remove_prefix(text.starts_with('+') ? 1 : 0);
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional<Value>(value)
                                                                    : std::nullopt;
}

std::optional<Value> Number(std::string_view text) {
    double value = 0;
    ZvTextScan scan{std::string(text)};
    return scan.Number(value) && scan.AtEnd() ? std::optional<Value>(value) : std::nullopt;
}

std::optional<Value> Switch(const XStringW& text) {
    for (const char16_t* on : {u"true", u"yes", u"1"})
        if (text.EqualsNoCase(on))
            return true;
    for (const char16_t* off : {u"false", u"no", u"0"})
        if (text.EqualsNoCase(off))
            return false;
    return std::nullopt;
}

std::optional<Value> Date(const std::string& text) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, dateEnd = 0, end = 0;
    const bool dashes = std::sscanf(text.c_str(), "%4d-%2d-%2d%n", &year, &month, &day, &dateEnd) == 3;
    if (!dashes && std::sscanf(text.c_str(), "%4d/%2d/%2d%n", &year, &month, &day, &dateEnd) != 3)
        return std::nullopt;
    std::string_view rest = std::string_view(text).substr(size_t(dateEnd));
    if (rest.ends_with('Z'))
        rest.remove_suffix(1);
    if (!rest.empty()) {
        const std::string time(rest.substr(1));
        const int read = std::sscanf(time.c_str(), "%2d:%2d%n:%2d%n", &hour, &minute, &end, &second, &end);
        if ((rest[0] != ' ' && rest[0] != 'T') || read < 2 || size_t(end) != time.size())
            return std::nullopt;
    }
    const DateTime date = DateTime::FromUtc(year, month, day, hour, minute, second);
    // Fields beyond their range carry over: then it is another date than the one written.
    char written[40];
    std::snprintf(written, sizeof written, "%04d-%02d-%02d %02d:%02d:%02dZ", year, month, day, hour, minute,
                  second);
    return date.ToString().ToUtf8() == written ? std::optional<Value>(date) : std::nullopt;
}

} // namespace

std::optional<Value> ZvAttributeText::Parse(ZvAttributeColumn::Type type, const XStringW& text) {
    if (type == ZvAttributeColumn::Type::String)
        return text;
    if (text.IsEmpty())
        return Value();
    switch (type) {
    case ZvAttributeColumn::Type::Int64:
        return Whole(text.ToUtf8());
    case ZvAttributeColumn::Type::Double:
        return Number(text.ToUtf8());
    case ZvAttributeColumn::Type::Bool:
        return Switch(text);
    case ZvAttributeColumn::Type::Date:
        return Date(text.ToUtf8());
    default:
        return std::nullopt;
    }
}

const char* ZvAttributeText::TypeName(ZvAttributeColumn::Type type) {
    switch (type) {
    case ZvAttributeColumn::Type::Int64:
        return "whole numbers";
    case ZvAttributeColumn::Type::Double:
        return "numbers";
    case ZvAttributeColumn::Type::String:
        return "texts";
    case ZvAttributeColumn::Type::Bool:
        return "yes or no";
    case ZvAttributeColumn::Type::Binary:
        return "binary data";
    case ZvAttributeColumn::Type::Date:
        return "dates";
    }
    return "";
}
