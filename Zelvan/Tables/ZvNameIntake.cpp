#include "Zelvan/Tables/ZvNameIntake.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include <algorithm>
#include <array>

ZvNameIntake::ZvNameIntake(ZvNativeDesc& desc, bool merging)
    : m_desc(desc), m_drawing(desc.Drawing()), m_merging(merging) {
    const ZvEntityNameTable& names = m_drawing.NameTable();
    m_highest = 2 * std::max<uint64_t>(names.SlotCount(), names.Limit());
    for (uint16_t code = 1; code <= ZvTableCode::kLastBorrowable; ++code)
        m_translates = m_translates || desc.HasTableIndex(ZvTableCode::Full(code));
}

void ZvNameIntake::Take(std::span<ZvEntity* const> entities) {
    constexpr size_t kBatch = 64;
    const ZvEntityNameTable& names = m_drawing.NameTable();
    for (size_t at = 0; at < entities.size(); at += kBatch) {
        const std::span<ZvEntity* const> batch = entities.subspan(at, std::min(kBatch, entities.size() - at));
        // Names come in the order of the tree, so their slots lie far apart: one look at each without anything else
        // between has the memory of all on its way.
        std::array<bool, kBatch> taken;
        for (size_t i = 0; i < batch.size(); ++i)
            taken[i] = names.Exists(batch[i]->Name32());
        for (size_t i = 0; i < batch.size(); ++i)
            TakeOne(batch[i], taken[i]);
    }
}

void ZvNameIntake::TakeOne(ZvEntity* entity, bool taken) {
    if (m_translates)
        entity->TableUpdate(m_desc);
    ZvEntityNameTable& names = m_drawing.NameTable();
    const uint32_t name = entity->Name32();
    if (taken || name == 0 || name > m_highest || names.Exists(name)) { // taken meanwhile, too
        m_waiting.emplace_back(entity, name);
        return;
    }
    if (names.Update(entity).value != name)
        m_desc.nameTranslation[name] = entity->Name32();
    else if (m_merging)
        m_kept.insert(name);
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
