#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Vec.h"

/// A sheet of paper laid over the drawing: what it covers is printed on it.
class ZV_API ZvPaperPage : public ZvTableRecord {
public:
    uint16_t GetRecordCode() const override { return ZvTableCode::Paper; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    /// Size of the sheet as it lies: width along the text, in mm (landscape turns the portrait form). Default
    /// A4, 210 x 297.
    double GetWidth() const { return m_landscape ? m_longSide : m_shortSide; }
    double GetHeight() const { return m_landscape ? m_shortSide : m_longSide; }
    /// Either order; false, unchanged, unless both lie in 1..100000 mm.
    bool SetSize(double widthMm, double heightMm);
    bool IsLandscape() const { return m_landscape; }
    void SetLandscape(bool on);
    /// Unprintable border, mm.
    struct Margins {
        double left = 10, top = 10, right = 10, bottom = 10;
        friend bool operator==(const Margins&, const Margins&) = default;
    };
    const Margins& GetMargins() const { return m_margins; }
    /// Clamped so that some of the sheet stays printable.
    void SetMargins(const Margins& margins);
    /// World position of the sheet's centre.
    const Vec3d& GetCenter() const { return m_center; }
    void SetCenter(const Vec3d& center);
    /// World units covered by one millimetre of paper, > 0. Default 0.001 (a metre on paper is a unit).
    double GetWorldPerMm() const { return m_worldPerMm; }
    void SetWorldPerMm(double value);
    /// Counter-clockwise turn of the sheet over the drawing, radians.
    double GetAngle() const { return m_angle; }
    void SetAngle(double radians);
    bool BelongsToLayout() const { return m_belongsToLayout; }
    void SetBelongsToLayout(bool on);
    const XStringW& GetPaperName() const { return m_paperName; }
    void SetPaperName(const XStringW& name);
    const XStringW& GetPrinter() const { return m_printer; }
    void SetPrinter(const XStringW& name);
    /// Position in the print sequence.
    int GetOrder() const { return m_order; }
    void SetOrder(int order);
    bool IsPrinted() const { return m_printed; }
    void SetPrinted(bool on);

    /// World bounds of the sheet, of its printable part.
    ZvBounds2D Sheet() const;
    ZvBounds2D Printable() const;

    void DrawUI(IZvSurface& surface, const Rect2I& box) const override;

protected:
    void Fields(ZvRecordFields& visit) override;
    void FieldsChanged() override;

private:
    ZvBounds2D Turned(double left, double bottom, double right, double top) const;
    double m_shortSide = 210;
    double m_longSide = 297;
    bool m_landscape = false;
    Margins m_margins;
    Vec3d m_center;
    double m_worldPerMm = 0.001;
    double m_angle = 0;
    bool m_belongsToLayout = false;
    bool m_printed = true;
    int32_t m_order = 0;
    XStringW m_paperName{u"A4"};
    XStringW m_printer;
};
