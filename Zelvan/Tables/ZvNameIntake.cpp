#include "Zelvan/Tables/ZvNameIntake.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include <algorithm>

ZvNameIntake::ZvNameIntake(ZvNativeDesc& desc, bool merging)
    : m_desc(desc), m_drawing(desc.Drawing()), m_merging(merging) {
    const ZvEntityNameTable& names = m_drawing.NameTable();
    m_highest = 2 * std::max<uint64_t>(names.SlotCount(), names.Limit());
    for (uint16_t code = 1; code <= ZvTableCode::kLastBorrowable; ++code)
        m_translates = m_translates || desc.HasTableIndex(ZvTableCode::Full(code));
}

void ZvNameIntake::Take(std::span<ZvEntity* const> entities) {
    ZvEntityNameTable& names = m_drawing.NameTable();
    for (ZvEntity* entity : entities) {
        if (m_translates)
            entity->TableUpdate(m_desc);
        const uint32_t name = entity->Name32();
        if (name == 0 || name > m_highest || names.Exists(name)) {
            m_waiting.emplace_back(entity, name);
            continue;
        }
        if (names.Update(entity).value != name)
            m_desc.nameTranslation[name] = entity->Name32();
        else if (m_merging)
            m_kept.insert(name);
    }
}

void ZvNameIntake::Finish() {
    ZvEntityNameTable& names = m_drawing.NameTable();
    for (const auto& [entity, name] : m_waiting) {
        const bool keptByOther = m_merging ? m_kept.count(name) != 0 : names.Exists(name);
        entity->SetName32(0);
        names.Add(entity);
        if (name != 0 && !keptByOther)
            m_desc.nameTranslation.emplace(name, entity->Name32());
    }
    m_waiting.clear();
    for (const auto& act : m_later)
        act(m_desc.nameTranslation);
    m_later.clear();
}
