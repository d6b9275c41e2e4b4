#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"

/// A line type: dashes and gaps by turns along the line.
///
/// The pattern comes from three parameters: a dash of a x c, then a gap of b x c. With a = 0 the dash is a
/// dot. Any other pattern is given as dash data directly; the parameters are then 0.
class ZV_API ZvLineTypeRec : public ZvTableRecord {
public:
    /// Unit of the dash data.
    enum class Units : int32_t { Points, World };

    uint16_t GetRecordCode() const override { return ZvTableCode::LineType; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    /// Sets the parameters and generates the dash data. Negative parameters count as 0.
    void SetPattern(double a, double b, double c);
    double ParamA() const { return m_a; }
    double ParamB() const { return m_b; }
    double ParamC() const { return m_c; }
    /// Lengths by turns: dash (0: dot), gap, dash, gap ... An odd last dash gets no gap. Empty or of no
    /// length: continuous. False, unchanged, for negative or non-finite lengths or a pattern of more than
    /// 1024 lengths.
    bool SetDashes(const std::vector<double>& lengths);
    const std::vector<double>& Dashes() const { return m_dashes; }
    double PatternLength() const;
    Units GetUnits() const { return m_units; }
    void SetUnits(Units units);
    const XStringW& GetDescription() const { return m_description; }
    void SetDescription(const XStringW& text);

    void DrawUI(IZvSurface& surface, const Rect2I& box) const override;

protected:
    void Fields(ZvRecordFields& visit) override;
    void FieldsChanged() override;

private:
    void Generate();
    double m_a = 0, m_b = 0, m_c = 0;
    std::vector<double> m_dashes;
    Units m_units = Units::Points;
    XStringW m_description;
};
