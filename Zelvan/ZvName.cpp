#include "Zelvan/ZvName.h"
#include <limits>

XStringW ZvName::ToString() const {
    return XStringW::Format("%u", value);
}

bool ZvName::ParseString(std::u16string_view text, ZvName& out) {
    const XStringW trimmed = XStringW(text).Trimmed();
    if (trimmed.IsEmpty())
        return false;
    uint64_t number = 0;
    for (const char16_t c : trimmed.View()) {
        if (c < u'0' || c > u'9')
            return false;
        number = number * 10 + uint64_t(c - u'0');
        if (number > std::numeric_limits<uint32_t>::max())
            return false;
    }
    out.value = uint32_t(number);
    return true;
}

ZvName ZvName::FromString(std::u16string_view text) {
    ZvName name;
    ParseString(text, name);
    return name;
}
