#pragma once
#include "Zelvan/Verbs/ZvOriginals.h"
#include "Zelvan/Verbs/ZvRecordState.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/ZvBrush.h"
#include "Zelvan/ZvLineType.h"
#include <utility>
#include <vector>

class ZvNativeDesc;
class ZvUsageTable;

/// Deletes records of any table. They stay in their places, flagged erased (files leave them out), so that neither ids nor
/// indices of others move; their names become free. Entities that a record owns (those of a layer, of a block) are erased
/// with it. What referred to a record by its index refers to none of its kind; undo restores all of it.
class ZV_API ZvVRecordErase : public ZvVerb {
public:
    explicit ZvVRecordErase(ZvDrawing& drawing) : ZvVerb(&drawing) {}
    explicit ZvVRecordErase(const ZvTableRecord& record);

    /// False for a record that the table cannot do without, or one added or erased already.
    bool Add(const ZvTableRecord& record);

    Kind GetKind() const override { return Kind::Record; }
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override { return IsRefused() || m_entries.empty(); }
    void Do() override;
    void Undo() override;
    void FlushDone() override;
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    struct Entry {
        ZvRecordKey key;
        ZvRecordState before;
        bool wasCurrent = false;
        bool isErased = false;
    };
    void EraseContents(ZvTableRecord& record);
    void DropReferences();
    void DropEntityReferences(ZvNativeDesc& desc);
    void DropRecordReferences(ZvNativeDesc& desc);
    void DropCurrentReferences(ZvNativeDesc& desc);
    bool RefersToErased(const ZvUsageTable& usage) const;

    std::vector<Entry> m_entries;
    ZvOriginals m_referrers; ///< entities that referred to the records
    std::vector<std::pair<ZvRecordKey, ZvRecordState>> m_referringRecords;
    ZvLineType m_currentLineType; ///< the drawing's current attributes
    ZvBrush m_currentBrush;
    int m_currentTextStyle = -1;
    size_t m_erasedBytes = 0; ///< of the erased entities, which live for the verb alone
};
