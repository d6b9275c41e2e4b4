#include "ZvCore/Settings.h"

namespace ZvCore {

const BinXmlNode::Value* Settings::Find(std::string_view key) const {
    const auto found = m_values.find(key);
    return found == m_values.end() ? nullptr : &found->second;
}

bool Settings::GetBool(std::string_view key, bool fallback) const {
    return BinXmlNode::ValueOr<bool>(Find(key), fallback);
}

int64_t Settings::GetInt(std::string_view key, int64_t fallback) const {
    return BinXmlNode::ValueOr<int64_t>(Find(key), fallback);
}

double Settings::GetDouble(std::string_view key, double fallback) const {
    return BinXmlNode::DoubleOr(Find(key), fallback);
}

XStringW Settings::GetString(std::string_view key, const XStringW& fallback) const {
    return BinXmlNode::ValueOr<XStringW>(Find(key), fallback);
}

void Settings::Set(std::string_view key, BinXmlNode::Value value) {
    m_values.insert_or_assign(std::string(key), std::move(value));
}

void Settings::Remove(std::string_view key) {
    if (const auto found = m_values.find(key); found != m_values.end())
        m_values.erase(found);
}

bool Settings::Has(std::string_view key) const {
    return m_values.contains(key);
}

void Settings::Store(BinXmlNode& node) const {
    for (const auto& [key, value] : m_values)
        node.Set(key, value);
}

void Settings::Load(const BinXmlNode& node) {
    m_values.clear();
    for (const BinXmlNode::Attribute& attribute : node.Attributes())
        m_values.insert_or_assign(attribute.name, attribute.value);
}

} // namespace ZvCore
