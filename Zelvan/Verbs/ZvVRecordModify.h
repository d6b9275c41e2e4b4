#pragma once
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/Verbs/ZvRecordState.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include <string>
#include <utility>
#include <vector>

/// Renames and edits records of any table. Either the verb sets properties (Set), or the command calls AddOriginal for
/// each record, edits them itself and calls StoreModified before handing the verb over.
class ZV_API ZvVRecordModify : public ZvVerb {
public:
    explicit ZvVRecordModify(ZvDrawing& drawing) : ZvVerb(&drawing) {}
    explicit ZvVRecordModify(const ZvTableRecord& record);

    /// Twice for one record keeps the first.
    void AddOriginal(const ZvTableRecord& record);
    void StoreModified();
    /// For all records added: a property of GetProperties ("Name" renames), set when the verb is done.
    void Set(const std::string& id, ZvProperty::Value value);
    /// Why values were not taken by the last Do.
    const std::vector<std::string>& Refusals() const { return m_refusals; }

    Kind GetKind() const override { return Kind::Record; }
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override;
    void Do() override;
    void Undo() override;
    /// False, nothing changed, when a record is gone.
    bool Redo() override;
    void UpdateLayersUsed() override;

private:
    struct Entry {
        ZvRecordKey key;
        ZvRecordState before, after;
    };
    void SetValues(ZvTableRecord& record);

    std::vector<Entry> m_entries;
    std::vector<std::pair<std::string, ZvProperty::Value>> m_values;
    std::vector<std::string> m_refusals;
    bool m_stored = false; ///< `after` is known
};
