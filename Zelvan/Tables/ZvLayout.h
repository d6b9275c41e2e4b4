#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"

class ZvPaperPage;

/// A paper-space layout: a drawing of its own, made for one sheet, that borrows tables 1..7 of the drawing
/// that it belongs to.
class ZV_API ZvLayout : public ZvTableRecord {
public:
    ZvLayout();
    ~ZvLayout() override;
    uint16_t GetRecordCode() const override { return ZvTableCode::Layout; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    /// The child drawing; exists while the record is in the table of a drawing.
    ZvDrawing* Drawing() const { return m_drawing.get(); }
    /// The sheet of the child drawing, null without a drawing.
    ZvPaperPage* GetPage() const;
    /// Leaves the child drawing with one paper page; the first stays.
    void EnsureSinglePage();
    /// Position among the layouts, as shown to the user.
    int GetOrder() const { return m_order; }
    void SetOrder(int order);
    const XStringW& GetDescription() const { return m_description; }
    void SetDescription(const XStringW& text);

    void CopyContents(const ZvTableRecord& from) override;
    void DropContents() override;
    void TableUsage(ZvUsageTable& usage) const override;
    void TableUpdate(ZvNativeDesc& desc) override;
    void OnInserted() override;
    void OnRemoving() override;
    bool HasContents() const override { return true; }
    bool ContentsOut(ZvNativeDesc& desc) const override;
    bool ContentsIn(ZvNativeDesc& desc, uint64_t end, ZvNameIntake& names) override;

protected:
    void Fields(ZvRecordFields& visit) override;

private:
    std::unique_ptr<ZvDrawing> m_drawing;
    Guid m_drawingGuid;
    int32_t m_order = 0;
    XStringW m_description;
};
