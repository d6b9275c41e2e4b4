#include "Zelvan/DrawingAux/ZvDefaultProperties.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "ZvCore/BinXml.h"

void ZvDefaultProperties::Set(uint32_t fullCode, const std::string& id, ZvProperty::Value value) {
    m_values[{fullCode, id}] = std::move(value);
}

bool ZvDefaultProperties::Remove(uint32_t fullCode, const std::string& id) {
    return m_values.erase({fullCode, id}) != 0;
}

const ZvProperty::Value* ZvDefaultProperties::Find(uint32_t fullCode, const std::string& id) const {
    auto found = m_values.find({fullCode, id});
    if (found == m_values.end())
        found = m_values.find({0, id});
    return found == m_values.end() ? nullptr : &found->second;
}

void ZvDefaultProperties::ApplyTo(ZvEntity& entity) const {
    const uint32_t code = entity.GetFullCode();
    ZvPropertySetter setter;
    bool any = false;
    for (const auto& [key, value] : m_values)
        if (key.first == code || (key.first == 0 && !m_values.count({code, key.second}))) {
            setter.Set(key.second, value);
            any = true;
        }
    if (any)
        entity.SetProperties(setter);
}

void ZvDefaultProperties::Store(ZvCore::BinXmlNode& node) const {
    for (const auto& [key, value] : m_values) {
        ZvCore::BinXmlNode& item = node.AddChild("Default");
        item.Set("Kind", int64_t(key.first));
        item.Set("Property", XStringW::FromUtf8(key.second));
        std::visit([&](const auto& plain) { item.Set("Value", plain); }, value);
    }
}

void ZvDefaultProperties::Load(const ZvCore::BinXmlNode& node) {
    m_values.clear();
    for (const ZvCore::BinXmlNode& item : node.Children()) {
        const auto* stored = item.Find("Value");
        if (item.Name() != "Default" || !stored)
            continue;
        ZvProperty::Value value;
        const bool known = std::visit(
            [&](const auto& plain) {
                if constexpr (std::is_constructible_v<ZvProperty::Value, decltype(plain)>) {
                    value = plain;
                    return true;
                } else {
                    return false;
                }
            },
            *stored);
        if (known)
            Set(uint32_t(item.GetInt("Kind", 0)), item.GetString("Property", {}).ToUtf8(), std::move(value));
    }
}
