#pragma once
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include <string>

/// Shows fields as properties. Colours, brushes, line types, widths and sizes are given as their texts; a
/// position as three properties ("Center.X", "Center.Y", "Center.Z").
class ZvFieldGatherer final : public ZvRecordFields {
public:
    explicit ZvFieldGatherer(ZvPropertyGatherer& gatherer) : m_gatherer(gatherer) {}

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
    void Field(const char*, Guid&, unsigned) override {}
    void Field(const char*, std::vector<double>&, unsigned) override {}
    void Field(const char*, std::vector<uint8_t>&, unsigned) override {}
    void Field(const char*, ZvCore::BinXmlNode&, unsigned) override {}

private:
    void Show(const std::string& id, ZvProperty::Value value, unsigned how);
    ZvPropertyGatherer& m_gatherer;
};

/// Sets fields from properties. A value of the wrong type, out of range or with a text that does not parse is
/// refused with a reason and leaves the field alone.
class ZvFieldSetter final : public ZvRecordFields {
public:
    explicit ZvFieldSetter(ZvPropertySetter& setter) : m_setter(setter) {}
    bool Changed() const { return m_changed; }

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
    void Field(const char*, Guid&, unsigned) override {}
    void Field(const char*, std::vector<double>&, unsigned) override {}
    void Field(const char*, std::vector<uint8_t>&, unsigned) override {}
    void Field(const char*, ZvCore::BinXmlNode&, unsigned) override {}

private:
    const ZvProperty::Value* Take(const std::string& id, unsigned how);
    template <class T>
    void Assign(T& target, T value);
    template <class T>
    void Parsed(const char* id, T& value, unsigned how);
    bool Number(const std::string& id, double& value, unsigned how);
    bool Whole(const char* id, int64_t low, int64_t high, int64_t& value, unsigned how);

    ZvPropertySetter& m_setter;
    bool m_changed = false;
};
