#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include "Zelvan/ZvUniSize.h"
#include <string_view>

class IZvTextMeasure;

/// A text style: font, size and the way in which characters are set.
class ZV_API ZvTextStyle : public ZvTableRecord {
public:
    ZvTextStyle();
    uint16_t GetRecordCode() const override { return ZvTableCode::TextStyle; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    const XStringW& GetFont() const { return m_font; }
    void SetFont(const XStringW& family);
    /// Height given to new texts of the style.
    ZvUniSize GetSize() const { return m_size; }
    void SetSize(ZvUniSize size);
    bool IsBold() const { return m_bold; }
    bool IsItalic() const { return m_italic; }
    bool IsUnderline() const { return m_underline; }
    bool IsStrikeOut() const { return m_strikeOut; }
    void SetBold(bool on);
    void SetItalic(bool on);
    void SetUnderline(bool on);
    void SetStrikeOut(bool on);
    /// Factor on the width of characters, 0.01..100.
    double GetWidthFactor() const { return m_widthFactor; }
    void SetWidthFactor(double factor);
    /// Slant, radians, clockwise from upright, within +-1.4.
    double GetOblique() const { return m_oblique; }
    void SetOblique(double radians);
    /// Added between characters, in heights.
    double GetTracking() const { return m_tracking; }
    void SetTracking(double heights);
    /// Distance of base lines, in heights.
    double GetLineSpacing() const { return m_lineSpacing; }
    void SetLineSpacing(double heights);

    // --- metrics, for a text height of 1 (multiply by the height) ------------------------------------------
    /// Width of one line of text. Line breaks in it have no width.
    double MeasureLength(std::u16string_view line) const;
    /// Height of the base line above the bottom of the line box, as a fraction of the height.
    double GetBaselineFraction() const;

    void DrawUI(IZvSurface& surface, const Rect2I& box) const override;

protected:
    void Fields(ZvRecordFields& visit) override;
    void FieldsChanged() override;

private:
    template <class T>
    void Change(T& member, const T& value);
    IZvTextMeasure& Measure() const;

    XStringW m_font;
    ZvUniSize m_size;
    bool m_bold = false;
    bool m_italic = false;
    bool m_underline = false;
    bool m_strikeOut = false;
    double m_widthFactor = 1;
    double m_oblique = 0;
    double m_tracking = 0;
    double m_lineSpacing = 1.6;
    mutable double m_baseline = 0;
    mutable const IZvTextMeasure* m_baselineBy = nullptr; // who measured it; null: nobody yet
};
