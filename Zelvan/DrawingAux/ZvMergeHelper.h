#pragma once
#include "Zelvan/Tables/ZvTableMerge.h"
#include "Zelvan/ZvName.h"
#include "ZvCore/Api.h"
#include "ZvCore/Progress.h"
#include "ZvCore/Status.h"
#include <cstdint>
#include <unordered_map>

class ZvDrawing;
class ZvSelection;

/// Brings the content of another drawing into this one: records by a merge profile, entities with new names,
/// references between all of them translated.
class ZV_API ZvMergeHelper {
public:
    explicit ZvMergeHelper(ZvDrawing& drawing) : m_drawing(drawing) {}

    struct Result {
        Zv::Status status = Zv::Status::Success;
        int entities = 0;
        int associations = 0;
        /// Name in the other drawing -> name here.
        std::unordered_map<uint32_t, uint32_t> names;
    };
    /// `selection` (of the other drawing) null: everything, unused records included. Otherwise these entities
    /// and the records that they use. Cancelled (by `progress`) or failed merges leave what was copied until
    /// then. The other drawing is not changed.
    Result Merge(const ZvDrawing& from, const ZvMergeProfile& profile = {},
                 const ZvSelection* selection = nullptr, ZvCore::IProgress* progress = nullptr);

private:
    ZvDrawing& m_drawing;
};
