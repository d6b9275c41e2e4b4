#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ZvCore {

class IFile;

/// One node of a binary XML document: a name, typed attributes in order, child nodes in order.
/// Names are UTF-8, at most 65535 bytes.
class ZV_API BinXmlNode {
public:
    using Value = std::variant<bool, int64_t, double, XStringW, std::vector<uint8_t>>;
    struct Attribute {
        std::string name;
        Value value;
        friend bool operator==(const Attribute&, const Attribute&) = default;
    };

    explicit BinXmlNode(std::string name = {}) : m_name(std::move(name)) {}

    const std::string& Name() const { return m_name; }
    const std::vector<Attribute>& Attributes() const { return m_attributes; }
    bool HasAttributes() const { return !m_attributes.empty(); }
    /// Replaces an attribute of that name or appends it.
    void Set(std::string_view name, Value value);
    void Remove(std::string_view name);
    const Value* Find(std::string_view name) const;
    /// Value of that name when it exists and has the asked type (an int64 also answers as double), else the
    /// fallback.
    bool GetBool(std::string_view name, bool fallback) const;
    int64_t GetInt(std::string_view name, int64_t fallback) const;
    double GetDouble(std::string_view name, double fallback) const;
    XStringW GetString(std::string_view name, const XStringW& fallback) const;
    /// The same rule for a value that was found elsewhere; null is allowed.
    template <class T>
    static T ValueOr(const Value* value, const T& fallback) {
        const T* typed = value ? std::get_if<T>(value) : nullptr;
        return typed ? *typed : fallback;
    }
    static double DoubleOr(const Value* value, double fallback);

    BinXmlNode& AddChild(std::string name);
    /// First child of that name, or null.
    const BinXmlNode* Child(std::string_view name) const;
    BinXmlNode& ChildOrNew(std::string_view name);
    const std::vector<BinXmlNode>& Children() const { return m_children; }
    std::vector<BinXmlNode>& Children() { return m_children; }
    friend bool operator==(const BinXmlNode&, const BinXmlNode&) = default;

    /// Encoding, little-endian: a node is its name, u32 count of attributes, the attributes, u32 count of
    /// children, the children. A name is u16 count of bytes, UTF-8. An attribute is its name, u8 type and the
    /// value: 1 bool as u8, 2 int64, 3 double, 4 u32 count and UTF-16 code units, 5 u32 count and bytes.
    /// Nodes nest at most 64 deep. False after an I/O error, and for a node that cannot be expressed (names
    /// too long, nesting too deep).
    bool Write(IFile& file) const;
    /// False with `why` set on malformed input, this node untouched; no more is allocated than the remaining
    /// bytes can fill.
    bool Read(IFile& file, std::string& why);

private:
    bool WriteNode(IFile& file, int depth) const;
    bool ReadNode(IFile& file, int depth, std::string& why);
    std::string m_name;
    std::vector<Attribute> m_attributes;
    std::vector<BinXmlNode> m_children;
};

/// A document: the magic "ZBX1" and one root node.
class ZV_API BinXmlDocument {
public:
    BinXmlNode root{"root"};
    bool Write(IFile& file) const;
    bool Read(IFile& file, std::string& why);
    friend bool operator==(const BinXmlDocument&, const BinXmlDocument&) = default;
};

} // namespace ZvCore
