#pragma once
#include "Zelvan/ZvName.h"
#include "ZvCore/Api.h"
#include "ZvCore/BitMap.h"
#include "ZvCore/PagedBitTree.h"
#include <cstddef>
#include <cstdint>
#include <vector>

class ZvEntity;

/// Identity table of one drawing: slot i holds the entity whose name is i. Slot 0 is always empty. Owns
/// nothing.
///
/// Invariant: every slot from the cursor to the limit, both included, is empty.
/// Names are handed out in increasing order within a range; a freed name comes back only when a later search
/// finds a long run of empty slots.
class ZV_API ZvEntityNameTable {
public:
    static constexpr uint64_t kRange = 0x100000;       ///< names in a fresh range
    static constexpr uint64_t kShortestRange = 0x8000; ///< shortest freed run that is worth reusing
    static constexpr uint64_t kHighestName = 0xFFFFFFFF;

    ZvEntityNameTable() = default;
    ZvEntityNameTable(const ZvEntityNameTable&) = delete;
    ZvEntityNameTable& operator=(const ZvEntityNameTable&) = delete;

    /// Gives the entity the next name. Null entities report an error; so does a table without a free name or
    /// without memory (the entity then keeps the null name).
    ZvName Add(ZvEntity* entity);
    /// Registers the entity under the name that it carries. A null or taken name, or one that is implausibly
    /// high
    /// (see Reserve), gives it a fresh name instead. Answers the name that it has afterwards.
    ZvName Update(ZvEntity* entity);
    /// Puts another entity (or null) into an occupied slot and gives it that name. An empty slot reports an error and takes the
    /// entity anyway.
    void Update(ZvName name, ZvEntity* entity);
    /// Frees the entity's slot and its bits; the entity keeps its name. Null, out of range or not the slot's
    /// entity: reports an error, changes nothing and answers false.
    bool Remove(ZvEntity* entity);
    /// Forgets everything and starts anew with name 1.
    void Clear();

    /// Announces names up to `highestName` (from a file: its number of records or its highest stored name,
    /// whichever the reader trusts). Slots are made at once; names above twice that (or twice the current
    /// range) count as implausible in Update. False when there is no memory.
    bool Reserve(uint64_t highestName);

    /// Reports an error when there is no entity of that name.
    ZvEntity* Get(ZvName name) const {
        ZvEntity* entity = GetQuiet(name);
        return entity ? entity : ReportMissing(name);
    }
    ZvEntity* GetQuiet(ZvName name) const {
        return name.value < m_slotCount ? m_slotData[name.value] : nullptr;
    }
    /// By a 64-bit number as files store it; anything that is no name answers null.
    ZvEntity* RawGet(uint64_t name) const { return name < m_slotCount ? m_slotData[name] : nullptr; }
    /// `name` must be below SlotCount().
    ZvEntity* GetUnchecked32(uint32_t name) const { return m_slotData[name]; }
    bool Exists(ZvName name) const { return GetQuiet(name) != nullptr; }
    /// The occupied name that follows; the null name at the end.
    ZvName Next(ZvName after) const;
    /// Ascending by name, erased entities skipped; null starts from the beginning, null answers the end.
    ZvEntity* NextNonErased(const ZvEntity* previous) const;
    void GetAll(std::vector<ZvEntity*>& entities) const;
    void GetAllNonErased(std::vector<ZvEntity*>& entities) const;
    void GetAllNonErasedUntouchables(std::vector<ZvEntity*>& entities) const;

    int32_t Count() const { return int32_t(m_count); }
    size_t SlotCount() const { return m_slotCount; }
    /// The most recently assigned name.
    ZvName TopName() const { return m_topName; }
    uint64_t Cursor() const { return m_cursor; }
    uint64_t Limit() const { return m_limit; }

    bool IsSelected(ZvName name) const { return m_selected.Get(name.value); }
    /// Names without a slot are ignored.
    void SetSelected(ZvName name, bool on);
    /// The selected name that follows; the null name at the end.
    ZvName NextSelected(ZvName after) const;
    void ClearSelected() { m_selected.ClearAll(); }
    bool IsUntouchable(ZvName name) const { return m_untouchable.Get(name.value); }

    /// 9 bytes a slot.
    size_t MemUsage() const { return m_slotCount * 9; }

private:
    bool Grow(uint64_t name);
    void Store(uint64_t name, ZvEntity* entity);
    void FindEmptyRange();
    bool FindFreedRange(uint64_t shortest);
    uint64_t HighestOccupied() const;
    bool IsPlausible(uint64_t name) const;
    ZvEntity* ReportMissing(ZvName name) const;

    std::vector<ZvEntity*> m_slots;
    ZvEntity* const* m_slotData = nullptr; // = m_slots.data(): one load less in look-ups
    size_t m_slotCount = 0;
    BitMap m_selected;
    PagedBitTree m_untouchable;
    size_t m_count = 0;
    uint64_t m_cursor = 1;
    uint64_t m_limit = kRange;
    uint64_t m_plausible = 0;
    ZvName m_topName;
};
