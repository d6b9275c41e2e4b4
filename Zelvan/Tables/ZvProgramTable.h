#pragma once
#include "Zelvan/Tables/ZvProgram.h"
#include "Zelvan/Tables/ZvTable.h"

class ZV_API ZvProgramTable : public ZvTableOf<ZvProgram, ZvTableCode::Program> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
    /// Enabled programs of a trigger, in table order.
    std::vector<ZvProgram*> GetTriggered(ZvProgram::Trigger trigger) const;
};
