#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/ZvStrings.h"
#include <algorithm>
#include <utility>

void ZvPropertyGatherer::Add(std::string id, XStringW label, ZvProperty::Value value, bool writable) {
    m_items.push_back({std::move(id), std::move(label), std::move(value), writable});
}

const ZvProperty* ZvPropertyGatherer::Find(std::string_view id) const {
    for (const ZvProperty& item : m_items)
        if (item.id == id)
            return &item;
    return nullptr;
}

void ZvPropertySetter::Set(std::string id, ZvProperty::Value value) {
    m_values[std::move(id)] = {std::move(value), false};
}

const ZvProperty::Value* ZvPropertySetter::Take(std::string_view id) {
    const auto found = m_values.find(id);
    if (found == m_values.end())
        return nullptr;
    found->second.taken = true;
    return &found->second.value;
}

const XStringW* ZvPropertySetter::TakeText(std::string_view id) {
    const ZvProperty::Value* value = Take(id);
    const XStringW* text = value ? std::get_if<XStringW>(value) : nullptr;
    if (value && !text)
        Refuse(id, ZvStrings::Get(ZvStr::PropertyWrongType));
    return text;
}

bool ZvPropertySetter::TakeNumber(std::string_view id, double& number) {
    const ZvProperty::Value* value = Take(id);
    if (!value)
        return false;
    if (const double* real = std::get_if<double>(value))
        number = *real;
    else if (const int64_t* whole = std::get_if<int64_t>(value))
        number = double(*whole);
    else
        return Refuse(id, ZvStrings::Get(ZvStr::PropertyWrongType)), false;
    return true;
}

void ZvPropertySetter::RefuseText(std::string_view id, const XStringW& text) {
    Refuse(id, XStringA::Format(ZvStrings::Get(ZvStr::PropertyNotUnderstood), text.ToUtf8().c_str()).Str());
}

void ZvPropertySetter::Refuse(std::string_view id, std::string reason) {
    m_refusals.push_back(std::string(id) + ": " + std::move(reason));
}

bool ZvPropertySetter::IsRefused(std::string_view id) const {
    const std::string start = std::string(id) + ": ";
    return std::any_of(m_refusals.begin(), m_refusals.end(),
                       [&start](const std::string& refusal) { return refusal.starts_with(start); });
}

std::vector<std::string> ZvPropertySetter::Unused() const {
    std::vector<std::string> unused;
    for (const auto& [id, entry] : m_values)
        if (!entry.taken)
            unused.push_back(id);
    return unused;
}

int ZvUsageTable::Count(uint32_t tableCode, int index) const {
    const auto found = m_counts.find({tableCode, index});
    return found == m_counts.end() ? 0 : found->second;
}
