#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/BinXml.h"
#include <map>
#include <string>
#include <string_view>

namespace ZvCore {

/// Settings store: upper camel case keys ("WheelZoomFactor") to typed values. Passed in to whoever needs it;
/// the program's store can be kept in a file, a drawing's store travels in its settings document.
class ZV_API Settings {
public:
    bool GetBool(std::string_view key, bool fallback) const;
    int64_t GetInt(std::string_view key, int64_t fallback) const;
    double GetDouble(std::string_view key, double fallback) const;
    XStringW GetString(std::string_view key, const XStringW& fallback) const;
    void Set(std::string_view key, BinXmlNode::Value value);
    void Remove(std::string_view key);
    bool Has(std::string_view key) const;
    /// Sets an attribute of the node for every key, in key order.
    void Store(BinXmlNode& node) const;
    /// Takes all attributes of the node in place of what was there; keys that nobody asks for are kept and
    /// stored again.
    void Load(const BinXmlNode& node);
    friend bool operator==(const Settings&, const Settings&) = default;

private:
    const BinXmlNode::Value* Find(std::string_view key) const;
    std::map<std::string, BinXmlNode::Value, std::less<>> m_values;
};

} // namespace ZvCore
