#pragma once
#include "ZvCore/Api.h"
#include <cstdint>
#include <functional>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

class ZvDrawing;
class ZvEntity;
class ZvNativeDesc;

/// Makes entities that are being loaded part of the drawing: has them translate the indices of records that
/// they read, and registers them in the name table under the names that the file gives them.
///
/// A null name, one that is taken, and one that no sound file would hold wait until all entities are there;
/// only then do they get fresh names, so that a fresh name never takes a stored one. The descriptor learns
/// old → new, except where an entity of the same load kept the old name: references then mean that one.
class ZV_API ZvNameIntake {
public:
    /// `merging`: the drawing had entities before.
    ZvNameIntake(ZvNativeDesc& desc, bool merging);
    void Take(std::span<ZvEntity* const> entities);
    /// `act` runs in Finish, with the map old → new.
    using Names = std::unordered_map<uint32_t, uint32_t>;
    void WhenNamed(std::function<void(const Names&)> act) { m_later.push_back(std::move(act)); }
    void Finish();

private:
    void TakeOne(ZvEntity* entity, bool taken);

    ZvNativeDesc& m_desc;
    ZvDrawing& m_drawing;
    bool m_merging;
    bool m_translates = false; // some table has other indices in the file
    uint64_t m_highest;        // names above wait
    std::vector<std::pair<ZvEntity*, uint32_t>> m_waiting;
    std::vector<std::function<void(const Names&)>> m_later;
    std::unordered_set<uint32_t> m_kept; // merging only: names kept by entities of this load
};
