#include "Zelvan/Tables/ZvDataTable.h"

XStringW ZvDataTable::DefaultNameBase() const {
    return u"Data";
}

ZvDataRec& ZvDataTable::GetOrMake(const XStringW& name) {
    if (ZvDataRec* record = GetByName(name))
        return *record;
    auto made = std::make_unique<ZvDataRec>();
    ZvDataRec& record = *made;
    made->SetNameFinal(name);
    made->SetInternal(name.StartsWith(u"__"));
    (void)Insert(std::move(made)); // a new record of the table's kind under a free name: it cannot be refused
    return record;
}

bool ZvDataTable::Remove(const XStringW& name) {
    return DeleteRecord(name);
}

bool ZvDataTable::MayDelete(const ZvTableRecord&) const {
    return true;
}

XStringW ZvDataTable::GetString(const XStringW& name, const XStringW& fallback) const {
    const ZvDataRec* record = GetByName(name);
    return record && record->GetKind() == ZvDataRec::Kind::String ? record->GetString() : fallback;
}

double ZvDataTable::GetNumber(const XStringW& name, double fallback) const {
    const ZvDataRec* record = GetByName(name);
    return record && record->GetKind() == ZvDataRec::Kind::Number ? record->GetNumber() : fallback;
}

const std::vector<uint8_t>* ZvDataTable::GetBinary(const XStringW& name) const {
    const ZvDataRec* record = GetByName(name);
    return record && record->GetKind() == ZvDataRec::Kind::Binary ? &record->GetBinary() : nullptr;
}

const ZvCore::BinXmlNode* ZvDataTable::GetXml(const XStringW& name) const {
    const ZvDataRec* record = GetByName(name);
    return record && record->GetKind() == ZvDataRec::Kind::XmlNode ? &record->GetXml() : nullptr;
}
