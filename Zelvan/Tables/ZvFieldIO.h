#pragma once
#include "Zelvan/Tables/ZvRecordFields.h"
#include <span>
#include <vector>

/// Appends fields to bytes in memory, in the form of files (little-endian; texts as in the native file,
/// UTF-16).
class ZV_API ZvFieldWriter final : public ZvRecordFields {
public:
    explicit ZvFieldWriter(std::vector<uint8_t>& target) : m_target(target) {}
    void Bytes(const void* bytes, size_t count);
    template <class T>
    void Value(T value) {
        Bytes(&value, sizeof(T));
    }
    void Text(const XStringW& text);

    using ZvRecordFields::Field;
    void Field(const char* id, bool& value, unsigned how) override;
    void Field(const char* id, int32_t& value, unsigned how) override;
    void Field(const char* id, uint32_t& value, unsigned how) override;
    void Field(const char* id, int64_t& value, unsigned how) override;
    void Field(const char* id, double& value, unsigned how) override;
    void Field(const char* id, XStringW& value, unsigned how) override;
    void Field(const char* id, ZvColor& value, unsigned how) override;
    void Field(const char* id, ZvBrush& value, unsigned how) override;
    void Field(const char* id, ZvLineType& value, unsigned how) override;
    void Field(const char* id, ZvLineWidth& value, unsigned how) override;
    void Field(const char* id, ZvUniSize& value, unsigned how) override;
    void Field(const char* id, Vec3d& value, unsigned how) override;
    void Field(const char* id, Guid& value, unsigned how) override;
    void Field(const char* id, std::vector<double>& value, unsigned how) override;
    void Field(const char* id, std::vector<uint8_t>& value, unsigned how) override;
    void Field(const char* id, ZvCore::BinXmlNode& value, unsigned how) override;

private:
    std::vector<uint8_t>& m_target;
};

/// Takes fields from bytes in memory. Once the bytes run out, the field at hand and all later ones keep the
/// values that they have: that is how records of older programs are read. Counts inside are checked against
/// the bytes that are left.
class ZV_API ZvFieldReader final : public ZvRecordFields {
public:
    explicit ZvFieldReader(std::span<const uint8_t> bytes) : m_bytes(bytes) {}
    size_t Remaining() const { return m_bytes.size() - m_at; }
    /// Nothing more can be read: the bytes ended within or before a field.
    bool IsShort() const { return m_short; }
    /// The bytes that no field took.
    std::span<const uint8_t> Rest() const {
        return m_short ? std::span<const uint8_t>() : m_bytes.subspan(m_at);
    }
    bool Bytes(void* target, size_t count);
    template <class T>
    bool Value(T& value) {
        return Bytes(&value, sizeof(T));
    }
    bool Text(XStringW& text);

    using ZvRecordFields::Field;
    void Field(const char* id, bool& value, unsigned how) override;
    void Field(const char* id, int32_t& value, unsigned how) override;
    void Field(const char* id, uint32_t& value, unsigned how) override;
    void Field(const char* id, int64_t& value, unsigned how) override;
    void Field(const char* id, double& value, unsigned how) override;
    void Field(const char* id, XStringW& value, unsigned how) override;
    void Field(const char* id, ZvColor& value, unsigned how) override;
    void Field(const char* id, ZvBrush& value, unsigned how) override;
    void Field(const char* id, ZvLineType& value, unsigned how) override;
    void Field(const char* id, ZvLineWidth& value, unsigned how) override;
    void Field(const char* id, ZvUniSize& value, unsigned how) override;
    void Field(const char* id, Vec3d& value, unsigned how) override;
    void Field(const char* id, Guid& value, unsigned how) override;
    void Field(const char* id, std::vector<double>& value, unsigned how) override;
    void Field(const char* id, std::vector<uint8_t>& value, unsigned how) override;
    void Field(const char* id, ZvCore::BinXmlNode& value, unsigned how) override;

private:
    bool Count(uint32_t& count, size_t itemSize);

    std::span<const uint8_t> m_bytes;
    size_t m_at = 0;
    bool m_short = false;
};
