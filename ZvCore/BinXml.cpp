#include "ZvCore/BinXml.h"
#include "ZvCore/IFile.h"
#include <algorithm>
#include <cstring>
#include <new>

namespace ZvCore {

namespace {

constexpr char kMagic[4] = {'Z', 'B', 'X', '1'};
constexpr int kMostDepth = 64;
constexpr size_t kMostName = 0xFFFF;
constexpr size_t kMostItems = 0xFFFFFFFF;
constexpr size_t kLeastAttribute = 4; // name length, type, one byte of value
constexpr size_t kLeastNode = 10;     // name length, two counts

// The numbers stand in files; the order is that of BinXmlNode::Value.
enum class Type : uint8_t { Bool = 1, Int = 2, Double = 3, String = 4, Bytes = 5 };

template <class Items>
bool WriteItems(IFile& file, const Items& items) {
    if (items.size() > kMostItems)
        return false;
    const size_t bytes = items.size() * sizeof items[0];
    return file.WriteValue(uint32_t(items.size())) &&
           (bytes == 0 || file.Write(items.data(), bytes) == bytes);
}

struct ValueWriter {
    IFile& file;
    bool operator()(bool value) const {
        return file.WriteValue(Type::Bool) && file.WriteValue(uint8_t(value));
    }
    bool operator()(int64_t value) const { return file.WriteValue(Type::Int) && file.WriteValue(value); }
    bool operator()(double value) const { return file.WriteValue(Type::Double) && file.WriteValue(value); }
    bool operator()(const XStringW& value) const {
        return file.WriteValue(Type::String) && WriteItems(file, value.Str());
    }
    bool operator()(const std::vector<uint8_t>& value) const {
        return file.WriteValue(Type::Bytes) && WriteItems(file, value);
    }
};

bool WriteName(IFile& file, const std::string& name) {
    return name.size() <= kMostName && file.WriteValue(uint16_t(name.size())) &&
           file.Write(name.data(), name.size()) == name.size();
}

/// Reads what others wrote: every count is held against what remains before anything is made for it.
class Reader {
public:
    Reader(IFile& file, std::string& why) : m_file(file), m_why(why) {}

    bool ReadName(std::string& name) {
        uint16_t length = 0;
        return m_file.ReadValue(length) ? ReadItems(name, length) : Fail("the document ends inside a name");
    }
    bool ReadCount(uint32_t& count, size_t leastBytes) {
        if (!m_file.ReadValue(count))
            return Fail("the document ends inside a node");
        return count <= m_file.Remaining() / leastBytes || Fail("a count is larger than the document");
    }
    bool ReadValue(BinXmlNode::Value& value);
    bool Fail(const char* what) {
        m_why = std::string(what) + " (at byte " + std::to_string(m_file.Position()) + ")";
        return false;
    }

private:
    template <class Items>
    bool ReadItems(Items& items, size_t count) {
        if (count > m_file.Remaining() / sizeof items[0])
            return Fail("a value is longer than the document");
        items.resize(count);
        const size_t bytes = count * sizeof items[0];
        return bytes == 0 || m_file.Read(items.data(), bytes) == bytes || Fail("a value cannot be read");
    }
    template <class T>
    bool ReadScalar(BinXmlNode::Value& value) {
        T scalar{};
        if (!m_file.ReadValue(scalar))
            return Fail("the document ends inside a value");
        value = scalar;
        return true;
    }
    template <class Items>
    bool ReadCounted(Items& items) {
        uint32_t count = 0;
        return ReadCount(count, sizeof items[0]) && ReadItems(items, count);
    }
    IFile& m_file;
    std::string& m_why;
};

bool Reader::ReadValue(BinXmlNode::Value& value) {
    uint8_t type = 0;
    if (!m_file.ReadValue(type))
        return Fail("the document ends inside an attribute");
    switch (Type(type)) {
    case Type::Bool: {
        uint8_t byte = 0;
        if (!m_file.ReadValue(byte))
            return Fail("the document ends inside a value");
        value = byte != 0;
        return true;
    }
    case Type::Int:
        return ReadScalar<int64_t>(value);
    case Type::Double:
        return ReadScalar<double>(value);
    case Type::String: {
        XStringW text;
        const bool ok = ReadCounted(text.Str());
        value = std::move(text);
        return ok;
    }
    case Type::Bytes:
        return ReadCounted(value.emplace<std::vector<uint8_t>>());
    }
    return Fail("an attribute has an unknown type");
}

} // namespace

void BinXmlNode::Set(std::string_view name, Value value) {
    for (Attribute& attribute : m_attributes)
        if (attribute.name == name) {
            attribute.value = std::move(value);
            return;
        }
    m_attributes.push_back({std::string(name), std::move(value)});
}

void BinXmlNode::Remove(std::string_view name) {
    std::erase_if(m_attributes, [name](const Attribute& a) { return a.name == name; });
}

const BinXmlNode::Value* BinXmlNode::Find(std::string_view name) const {
    const auto found = std::find_if(m_attributes.begin(), m_attributes.end(),
                                    [name](const Attribute& a) { return a.name == name; });
    return found == m_attributes.end() ? nullptr : &found->value;
}

bool BinXmlNode::GetBool(std::string_view name, bool fallback) const {
    return ValueOr<bool>(Find(name), fallback);
}

int64_t BinXmlNode::GetInt(std::string_view name, int64_t fallback) const {
    return ValueOr<int64_t>(Find(name), fallback);
}

double BinXmlNode::GetDouble(std::string_view name, double fallback) const {
    return DoubleOr(Find(name), fallback);
}

double BinXmlNode::DoubleOr(const Value* value, double fallback) {
    const auto* whole = value ? std::get_if<int64_t>(value) : nullptr;
    return whole ? double(*whole) : ValueOr<double>(value, fallback);
}

XStringW BinXmlNode::GetString(std::string_view name, const XStringW& fallback) const {
    return ValueOr<XStringW>(Find(name), fallback);
}

BinXmlNode& BinXmlNode::AddChild(std::string name) {
    return m_children.emplace_back(std::move(name));
}

const BinXmlNode* BinXmlNode::Child(std::string_view name) const {
    const auto found = std::find_if(m_children.begin(), m_children.end(),
                                    [name](const BinXmlNode& n) { return n.m_name == name; });
    return found == m_children.end() ? nullptr : &*found;
}

BinXmlNode& BinXmlNode::ChildOrNew(std::string_view name) {
    const BinXmlNode* child = Child(name);
    return child ? m_children[size_t(child - m_children.data())] : AddChild(std::string(name));
}

bool BinXmlNode::Write(IFile& file) const {
    return WriteNode(file, 0);
}

bool BinXmlNode::WriteNode(IFile& file, int depth) const {
    if (depth >= kMostDepth || m_attributes.size() > kMostItems || m_children.size() > kMostItems)
        return false;
    if (!WriteName(file, m_name) || !file.WriteValue(uint32_t(m_attributes.size())))
        return false;
    for (const Attribute& attribute : m_attributes)
        if (!WriteName(file, attribute.name) || !std::visit(ValueWriter{file}, attribute.value))
            return false;
    if (!file.WriteValue(uint32_t(m_children.size())))
        return false;
    return std::all_of(m_children.begin(), m_children.end(),
                       [&file, depth](const BinXmlNode& child) { return child.WriteNode(file, depth + 1); });
}

bool BinXmlNode::Read(IFile& file, std::string& why) {
    try {
        BinXmlNode fresh;
        if (!fresh.ReadNode(file, 0, why))
            return false;
        *this = std::move(fresh);
        return true;
    } catch (const std::bad_alloc&) {
        why = "out of memory";
        return false;
    }
}

bool BinXmlNode::ReadNode(IFile& file, int depth, std::string& why) {
    Reader reader(file, why);
    if (depth >= kMostDepth)
        return reader.Fail("nodes lie too deep in each other");
    uint32_t count = 0;
    if (!reader.ReadName(m_name) || !reader.ReadCount(count, kLeastAttribute))
        return false;
    for (uint32_t i = 0; i < count; ++i) {
        Attribute& attribute = m_attributes.emplace_back();
        if (!reader.ReadName(attribute.name) || !reader.ReadValue(attribute.value))
            return false;
    }
    if (!reader.ReadCount(count, kLeastNode))
        return false;
    for (uint32_t i = 0; i < count; ++i)
        if (!m_children.emplace_back().ReadNode(file, depth + 1, why))
            return false;
    return true;
}

bool BinXmlDocument::Write(IFile& file) const {
    return file.Write(kMagic, sizeof kMagic) == sizeof kMagic && root.Write(file);
}

bool BinXmlDocument::Read(IFile& file, std::string& why) {
    char magic[sizeof kMagic] = {};
    if (file.Read(magic, sizeof magic) != sizeof magic || std::memcmp(magic, kMagic, sizeof magic) != 0) {
        why = "it is no binary XML document";
        return false;
    }
    return root.Read(file, why);
}

} // namespace ZvCore
