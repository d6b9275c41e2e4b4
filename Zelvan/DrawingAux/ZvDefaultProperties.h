#pragma once
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "ZvCore/Api.h"
#include <cstdint>
#include <map>
#include <string>

class ZvEntity;
namespace ZvCore {
class BinXmlNode;
}

/// Values that new entities of a kind start with, by property identifier, over what the kind itself gives
/// them. Travels in the drawing's file.
class ZV_API ZvDefaultProperties {
public:
    /// `fullCode` 0: all kinds; a value for the kind itself comes before it.
    void Set(uint32_t fullCode, const std::string& id, ZvProperty::Value value);
    bool Remove(uint32_t fullCode, const std::string& id);
    const ZvProperty::Value* Find(uint32_t fullCode, const std::string& id) const;
    void Clear() { m_values.clear(); }
    int Count() const { return int(m_values.size()); }
    /// Sets what the entity knows of its kind's values.
    void ApplyTo(ZvEntity& entity) const;

    void Store(ZvCore::BinXmlNode& node) const;
    void Load(const ZvCore::BinXmlNode& node);

private:
    std::map<std::pair<uint32_t, std::string>, ZvProperty::Value> m_values;
};
