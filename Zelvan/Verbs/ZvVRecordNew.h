#pragma once
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/Verbs/ZvRecordState.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include <memory>

/// Inserts a record into any table: layer, line type, style, block, view ... Undone, table and counters are as if it had
/// never been there; redone, it has its place and id again.
class ZV_API ZvVRecordNew : public ZvVerb {
public:
    /// `record` as for ZvTable::Insert: of the table's kind, in no table; without a name it gets one.
    ZvVRecordNew(ZvTable& table, std::unique_ptr<ZvTableRecord> record);
    /// An empty record of that name.
    ZvVRecordNew(ZvTable& table, const XStringW& name);
    ~ZvVRecordNew() override;

    /// The record, in its table or undone; null when the table refused it.
    ZvTableRecord* Record() const;

    Kind GetKind() const override { return Kind::Record; }
    void FlushNeverDone() override;
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override { return IsRefused(); }
    void Do() override;
    void Undo() override;
    bool Redo() override;

private:
    ZvRecordKey m_key;
    std::unique_ptr<ZvTableRecord> m_record; ///< while it is not in the table
    ZvTable::Counters m_before, m_after;
    uint32_t m_formerCurrent = 0; ///< id
    bool m_flagged = false;       ///< undone by its erased flag, since other records had come after it
};
