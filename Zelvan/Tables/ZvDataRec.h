#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include "ZvCore/BinXml.h"

/// A named piece of data: the store of programs, plug-ins and of the engine itself ("__Thumbnail__", layer
/// presets ...).
class ZV_API ZvDataRec : public ZvTableRecord {
public:
    enum class Kind : int32_t { None = 0, String = 1, Number = 2, Binary = 3, XmlNode = 4 };

    uint16_t GetRecordCode() const override { return ZvTableCode::Data; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    Kind GetKind() const { return m_kind; }
    // The getters answer the empty value when the record is of another kind; the setters change the kind.
    const XStringW& GetString() const { return m_string; }
    double GetNumber() const { return m_number; }
    const std::vector<uint8_t>& GetBinary() const { return m_binary; }
    const ZvCore::BinXmlNode& GetXml() const { return m_xml; }
    void SetString(const XStringW& text);
    void SetNumber(double number);
    void SetBinary(std::vector<uint8_t> bytes);
    void SetXml(ZvCore::BinXmlNode node);
    size_t MemUsage() const override;

protected:
    void Fields(ZvRecordFields& visit) override;

private:
    void Become(Kind kind);
    Kind m_kind = Kind::None;
    XStringW m_string;
    double m_number = 0;
    std::vector<uint8_t> m_binary;
    ZvCore::BinXmlNode m_xml;
};
