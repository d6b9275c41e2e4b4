#include "Zelvan/Tables/ZvDataRec.h"
#include "Zelvan/Tables/ZvRecordFields.h"

std::unique_ptr<ZvTableRecord> ZvDataRec::NewOfKind() const {
    return std::make_unique<ZvDataRec>();
}

void ZvDataRec::Become(Kind kind) {
    m_kind = kind;
    m_string.Clear();
    m_number = 0;
    m_binary.clear();
    m_xml = ZvCore::BinXmlNode();
}

void ZvDataRec::SetString(const XStringW& text) {
    Become(Kind::String);
    m_string = text;
    IncModified();
}

void ZvDataRec::SetNumber(double number) {
    Become(Kind::Number);
    m_number = number;
    IncModified();
}

void ZvDataRec::SetBinary(std::vector<uint8_t> bytes) {
    Become(Kind::Binary);
    m_binary = std::move(bytes);
    IncModified();
}

void ZvDataRec::SetXml(ZvCore::BinXmlNode node) {
    Become(Kind::XmlNode);
    m_xml = std::move(node);
    IncModified();
}

size_t ZvDataRec::MemUsage() const {
    return ZvTableRecord::MemUsage() + m_string.Length() * 2 + m_binary.capacity();
}

void ZvDataRec::Fields(ZvRecordFields& visit) {
    visit.Enum("Kind", m_kind, Kind::XmlNode, ZvRecordFields::kReadOnly);
    // Only the value of the kind is kept; a reader knows the kind by the time it comes here.
    switch (m_kind) {
    case Kind::String:
        visit.Field("String", m_string);
        break;
    case Kind::Number:
        visit.Field("Number", m_number);
        break;
    case Kind::Binary:
        visit.Field("Binary", m_binary);
        break;
    case Kind::XmlNode:
        visit.Field("Xml", m_xml);
        break;
    case Kind::None:
        break;
    }
}
