#include "ZvCore/IOErrorSet.h"
#include <algorithm>

namespace {

std::string KeyOf(int code, IOErrorSet::Severity severity, const std::string& text) {
    return std::to_string(code) + (severity == IOErrorSet::Severity::Error ? 'E' : 'W') + text;
}

} // namespace

void IOErrorSet::Add(int code, std::string text, Severity severity) {
    AddItem({code, severity, std::move(text), 1});
}

void IOErrorSet::AddAll(const IOErrorSet& other) {
    const std::vector<Item> items = other.m_items; // `other` may be this set
    for (const Item& item : items)
        AddItem(item);
}

void IOErrorSet::AddItem(Item item) {
    const auto [known, isNew] =
        m_index.try_emplace(KeyOf(item.code, item.severity, item.text), m_items.size());
    if (isNew)
        m_items.push_back(std::move(item));
    else
        m_items[known->second].count += item.count;
}

void IOErrorSet::Clear() {
    m_items.clear();
    m_index.clear();
}

bool IOErrorSet::HasErrors() const {
    return std::any_of(m_items.begin(), m_items.end(),
                       [](const Item& i) { return i.severity == Severity::Error; });
}

bool IOErrorSet::Has(int code) const {
    return std::any_of(m_items.begin(), m_items.end(), [code](const Item& i) { return i.code == code; });
}

std::string IOErrorSet::ToString() const {
    std::string lines;
    for (const Item& item : m_items) {
        lines += item.text;
        if (item.count > 1)
            lines += " (" + std::to_string(item.count) + " times)";
        lines += '\n';
    }
    return lines;
}
