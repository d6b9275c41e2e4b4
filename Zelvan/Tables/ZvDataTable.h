#pragma once
#include "Zelvan/Tables/ZvDataRec.h"
#include "Zelvan/Tables/ZvTable.h"

class ZV_API ZvDataTable : public ZvTableOf<ZvDataRec, ZvTableCode::Data> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
    /// Programs clear up after themselves: internal records, too.
    bool MayDelete(const ZvTableRecord& record) const override;
    /// The record of that name (a valid, non-empty one), made when missing. Names that begin with "__" make
    /// internal records.
    ZvDataRec& GetOrMake(const XStringW& name);
    /// Erases the record of that name; false when there is none.
    bool Remove(const XStringW& name);
    // The fallback for a missing record or one of another kind.
    XStringW GetString(const XStringW& name, const XStringW& fallback = {}) const;
    double GetNumber(const XStringW& name, double fallback = 0) const;
    /// Null for a missing record or one of another kind.
    const std::vector<uint8_t>* GetBinary(const XStringW& name) const;
    const ZvCore::BinXmlNode* GetXml(const XStringW& name) const;
};
