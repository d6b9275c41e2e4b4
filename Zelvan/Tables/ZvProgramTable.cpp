#include "Zelvan/Tables/ZvProgramTable.h"

XStringW ZvProgramTable::DefaultNameBase() const {
    return u"Program";
}

std::vector<ZvProgram*> ZvProgramTable::GetTriggered(ZvProgram::Trigger trigger) const {
    std::vector<ZvProgram*> programs;
    for (int i = 0; i < Count(); ++i)
        if (ZvProgram* program = Get(i);
            program->IsEnabled() && !program->IsErased() && program->GetTrigger() == trigger)
            programs.push_back(program);
    return programs;
}
