#include "Zelvan/ZvEntityNameTable.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "ZvCore/Log.h"
#include "ZvCore/XString.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>
#include <array>
#include <new>

ZvName ZvEntityNameTable::Add(ZvEntity* entity) {
    if (!entity) {
        ZvErrors::Report(ZvErrorCode::NameTable, "ZvEntityNameTable.add");
        return {};
    }
    if (m_cursor > kHighestName || !Grow(m_cursor)) {
        ZvErrors::Report(ZvErrorCode::OutOfMemory, "ZvEntityNameTable.add");
        return {};
    }
    const uint64_t name = m_cursor;
    Store(name, entity);
    entity->SetName32(uint32_t(name));
    m_topName = ZvName(uint32_t(name));
    if (m_cursor < m_limit)
        ++m_cursor;
    else
        FindEmptyRange();
    return m_topName;
}

ZvName ZvEntityNameTable::Update(ZvEntity* entity) {
    if (!entity) {
        ZvErrors::Report(ZvErrorCode::NameTable, "ZvEntityNameTable.update");
        return {};
    }
    const uint64_t name = entity->Name32();
    if (name == 0) {
        ZvErrors::Report(ZvErrorCode::NullName, "ZvEntityNameTable.update");
        return Add(entity);
    }
    if (GetQuiet(ZvName(uint32_t(name)))) {
        ZvErrors::Report(ZvErrorCode::NameTaken, "ZvEntityNameTable.update");
        return Add(entity);
    }
    if (!IsPlausible(name) || !Grow(name))
        return Add(entity);
    Store(name, entity);
    if (name == m_limit)
        FindEmptyRange();
    else if (name >= m_cursor && name < m_limit)
        m_cursor = name + 1;
    return entity->Name();
}

void ZvEntityNameTable::Update(ZvName name, ZvEntity* entity) {
    if (name.IsNull() || (name.value >= m_slotCount && !(IsPlausible(name.value) && Grow(name.value)))) {
        ZvErrors::Report(ZvErrorCode::NameTable, "ZvEntityNameTable.Update");
        return;
    }
    ZvEntity*& slot = m_slots[name.value];
    if (!slot) {
        const auto text =
            XStringA::Format("Update(name, ptr). Name:Ptr = %llu:%llX", (unsigned long long)name.value,
                             (unsigned long long)reinterpret_cast<uintptr_t>(entity));
        ZvErrors::Report(ZvErrorCode::NameTable, text.View());
        if (!entity)
            return;
        entity->SetName32(name.value);
        Store(name.value, entity);
        if (name.value == m_limit)
            FindEmptyRange();
        else if (name.value >= m_cursor && name.value < m_limit)
            m_cursor = uint64_t(name.value) + 1;
        return;
    }
    slot = entity;
    if (entity)
        entity->SetName32(name.value);
    m_untouchable.Set(name.value, entity && entity->IsUntouchable());
    if (!entity) {
        m_selected.Set(name.value, false);
        --m_count;
    }
}

bool ZvEntityNameTable::Remove(ZvEntity* entity) {
    const uint32_t name = entity ? entity->Name32() : 0;
    if (name == 0 || name >= m_slotCount || m_slots[name] != entity) {
        ZvErrors::Report(ZvErrorCode::NameTable, "ZvEntityNameTable.Remove");
        return false;
    }
    m_slots[name] = nullptr;
    m_selected.Set(name, false);
    m_untouchable.Set(name, false);
    --m_count;
    return true;
}

void ZvEntityNameTable::Clear() {
    std::vector<ZvEntity*>().swap(m_slots);
    m_slotData = nullptr;
    m_slotCount = 0;
    m_selected = BitMap();
    m_untouchable.Clear();
    m_count = 0;
    m_cursor = 1;
    m_limit = kRange;
    m_plausible = 0;
    m_topName = {};
}

bool ZvEntityNameTable::Reserve(uint64_t highestName) {
    m_plausible = std::max(m_plausible, std::min(highestName, kHighestName));
    return Grow(m_plausible);
}

bool ZvEntityNameTable::IsPlausible(uint64_t name) const {
    return name <= 2 * std::max({m_plausible, m_limit, uint64_t(m_slotCount)});
}

bool ZvEntityNameTable::Grow(uint64_t name) {
    if (name < m_slotCount)
        return true;
    const size_t size = size_t(std::max<uint64_t>(uint64_t(m_slotCount) * 2, name + 1));
    try {
        m_selected.Resize(size);
        m_slots.resize(size, nullptr);
    } catch (const std::bad_alloc&) {
        return false;
    }
    m_slotData = m_slots.data();
    m_slotCount = size;
    return true;
}

void ZvEntityNameTable::Store(uint64_t name, ZvEntity* entity) {
    m_slots[name] = entity;
    if (entity->IsUntouchable())
        m_untouchable.Set(name, true);
    ++m_count;
}

// --- free ranges ------------------------------------------------------------------------------------------

void ZvEntityNameTable::FindEmptyRange() {
    if (double(m_slotCount) > 2.0 * double(m_count) && FindFreedRange(kShortestRange))
        return;
    m_cursor = m_count ? HighestOccupied() + 1 : 1;
    if (m_cursor > kHighestName) {
        // The end of all names: any gap will do from here on.
        if (!FindFreedRange(1))
            m_limit = m_cursor;
        return;
    }
    m_limit = std::min(m_cursor + kRange, kHighestName);
    ZvLog::Printf(ZvLog::Level::Trace, "FindEmptyRange MORE SPACE %lld - %lld\n", (long long)m_cursor,
                  (long long)m_limit);
}

/// Takes the first run of at least kRange empty slots, else the first of at least half that, and so on down
/// to `shortest`: one pass finds the first run for each of the lengths.
bool ZvEntityNameTable::FindFreedRange(uint64_t shortest) {
    struct Run {
        uint64_t first = 0, last = 0;
    };
    std::array<Run, 21> firstOfLength{}; // by halvings of kRange
    for (uint64_t i = 1; i < m_slotCount;) {
        if (m_slots[i]) {
            ++i;
            continue;
        }
        const uint64_t first = i;
        while (i < m_slotCount && !m_slots[i])
            ++i;
        for (size_t h = 0; h < firstOfLength.size(); ++h)
            if (!firstOfLength[h].first && i - first >= kRange >> h)
                firstOfLength[h] = {first, i - 1};
        if (firstOfLength[0].first)
            break;
    }
    for (size_t h = 0; h < firstOfLength.size() && kRange >> h >= shortest; ++h)
        if (firstOfLength[h].first) {
            m_cursor = firstOfLength[h].first;
            m_limit = firstOfLength[h].last;
            ZvLog::Printf(ZvLog::Level::Trace, "FindEmptyRange LIBERATED %lld - %lld\n", (long long)m_cursor,
                          (long long)m_limit);
            return true;
        }
    return false;
}

uint64_t ZvEntityNameTable::HighestOccupied() const {
    for (uint64_t i = m_slotCount; i-- > 1;)
        if (m_slots[i])
            return i;
    return 0;
}

// --- look-up and iteration --------------------------------------------------------------------------------

ZvEntity* ZvEntityNameTable::ReportMissing(ZvName) const {
    ZvErrors::Report(ZvErrorCode::NameTable, "ZvEntityNameTable.Get");
    return nullptr;
}

ZvName ZvEntityNameTable::Next(ZvName after) const {
    for (size_t i = size_t(after.value) + 1; i < m_slotCount; ++i)
        if (m_slotData[i])
            return ZvName(uint32_t(i));
    return {};
}

ZvEntity* ZvEntityNameTable::NextNonErased(const ZvEntity* previous) const {
    for (size_t i = previous ? size_t(previous->Name32()) + 1 : 1; i < m_slotCount; ++i)
        if (m_slotData[i] && !m_slotData[i]->IsErased())
            return m_slotData[i];
    return nullptr;
}

void ZvEntityNameTable::GetAll(std::vector<ZvEntity*>& entities) const {
    entities.reserve(entities.size() + m_count);
    for (ZvEntity* entity : m_slots)
        if (entity)
            entities.push_back(entity);
}

void ZvEntityNameTable::GetAllNonErased(std::vector<ZvEntity*>& entities) const {
    entities.reserve(entities.size() + m_count);
    for (ZvEntity* entity = NextNonErased(nullptr); entity; entity = NextNonErased(entity))
        entities.push_back(entity);
}

void ZvEntityNameTable::GetAllNonErasedUntouchables(std::vector<ZvEntity*>& entities) const {
    for (ZvEntity* entity = NextNonErased(nullptr); entity; entity = NextNonErased(entity))
        if (m_untouchable.Get(entity->Name32()))
            entities.push_back(entity);
}

void ZvEntityNameTable::SetSelected(ZvName name, bool on) {
    if (!name.IsNull() && name.value < m_slotCount)
        m_selected.Set(name.value, on);
}

ZvName ZvEntityNameTable::NextSelected(ZvName after) const {
    const size_t next = m_selected.NextSet(size_t(after.value) + 1);
    return next < m_selected.Size() ? ZvName(uint32_t(next)) : ZvName();
}
