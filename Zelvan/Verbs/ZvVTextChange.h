#pragma once
#include "Zelvan/DrawingAux/ZvAttributeColumn.h"
#include "Zelvan/Verbs/ZvOriginals.h"
#include "Zelvan/Verbs/ZvRecordState.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include <string>
#include <variant>
#include <vector>

/// Changes texts: what entities show (their property "Text"), attributes of features, names and descriptions of records.
class ZV_API ZvVTextChange : public ZvVerb {
public:
    explicit ZvVTextChange(ZvDrawing& drawing) : ZvVerb(&drawing) {}

    /// Each is false, nothing added, where there is no such text to change.
    bool AddEntity(const ZvEntity& entity, const XStringW& text);
    bool AddAttribute(const ZvEntity& entity, const XStringW& field, const XStringW& text);
    /// `property`: "Name", "Description" or another text of GetProperties.
    bool AddRecord(const ZvTableRecord& record, const std::string& property, const XStringW& text);

    Kind GetKind() const override { return Kind::TextChange; }
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override { return IsRefused() || m_changes.empty(); }
    void Do() override;
    void Undo() override;
    void UpdateLayersUsed() override;
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    struct OfEntity {
        uint32_t name;
    };
    struct OfAttribute {
        uint32_t name;
        XStringW field;
        bool hadRow = false;
        ZvAttributeColumn::Value before;
    };
    struct OfRecord {
        ZvRecordKey key;
        std::string property;
        ZvRecordState before;
    };
    struct Change {
        std::variant<OfEntity, OfAttribute, OfRecord> where;
        XStringW text;
    };
    /// Each false where nothing changed: with a reason, when the text was not taken.
    bool Make(const OfEntity& where, const XStringW& text, XStringW& why);
    bool Make(OfAttribute& where, const XStringW& text, XStringW& why);
    bool Make(OfRecord& where, const XStringW& text, XStringW& why);
    void TakeBack(const OfEntity&) {} // originals are restored together
    void TakeBack(const OfAttribute& where);
    void TakeBack(const OfRecord& where);

    std::vector<Change> m_changes;
    size_t m_made = 0; ///< how many of them, from the first on
    ZvOriginals m_originals;
};
