#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include "Zelvan/ZvColor.h"
#include "Zelvan/ZvLineWidth.h"
#include "Zelvan/ZvUniSize.h"

class ZvBlock;
class ZvTextStyle;

/// A dimension style: how dimensions look and how their values read. Lengths without a kind of their own are
/// multiples of the text height.
class ZV_API ZvDimStyle : public ZvTableRecord {
public:
    enum class Arrow : int32_t { Closed, Open, Dot, Tick, None, Block };
    enum class TextPlace : int32_t { Above, Centered, Outside };
    enum class LengthUnit : int32_t { World, Kilometers, Meters, Centimeters, Millimeters, Inch, FeetInch };
    enum class AngleUnit : int32_t { Degrees, DegreesMinutesSeconds, Radians, Gradians };

    ZvDimStyle();
    uint16_t GetRecordCode() const override { return ZvTableCode::DimStyle; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    /// Plain data: read freely, change through SetProperties or Set, which keep the values in range.
    struct Values {
        // Text
        int32_t textStyle = -1; ///< index of a text style, -1: the default one
        ZvUniSize textHeight;
        ZvColor textColor = ZvColor::ByLayer();
        TextPlace textPlace = TextPlace::Above;
        bool textAligned = true; ///< along the dimension line, else horizontal
        double textGap = 0.25;   ///< between text and line, in heights
        // Lines
        ZvColor lineColor = ZvColor::ByLayer();
        ZvLineWidth lineWidth;
        ZvColor extensionColor = ZvColor::ByLayer();
        ZvLineWidth extensionWidth;
        double extensionOffset =
            0.25; ///< from the measured point to the start of the extension line, in heights
        double extensionBeyond = 0.5; ///< beyond the dimension line, in heights
        bool suppressFirst = false;   ///< no first extension line
        bool suppressSecond = false;
        // Arrows
        Arrow arrow = Arrow::Closed;
        int32_t arrowBlock = -1; ///< index of a block for Arrow::Block
        double arrowSize = 1;    ///< in heights
        // Values
        LengthUnit lengthUnit = LengthUnit::World;
        int32_t lengthDecimals = 2; ///< 0..12
        double lengthFactor = 1;    ///< on the measured length before it is shown
        double roundTo = 0;         ///< lengths are rounded to multiples of it; 0: not
        AngleUnit angleUnit = AngleUnit::Degrees;
        int32_t angleDecimals = 2;
        bool trailingZeros = true;
        bool leadingZero = true;
        bool showUnit = false; ///< append the unit's abbreviation
        XStringW decimalSeparator{u"."};
        XStringW prefix;
        XStringW suffix;
        bool tolerance = false; ///< append the tolerances
        double toleranceUpper = 0;
        double toleranceLower = 0;
    };
    const Values& Get() const { return m_values; }
    void Set(const Values& values);

    ZvTextStyle* GetTextStyleRecord() const;
    ZvBlock* GetArrowBlockRecord() const;
    /// `dimType`: 0 and 1 linear, 3 radius, 4 diameter, 2, 5 and 6 angles. `value` in world units or radians.
    XStringW FormatValue(int dimType, double value) const;

    void DrawUI(IZvSurface& surface, const Rect2I& box) const override;
    void TableUsage(ZvUsageTable& usage) const override;
    void TableUpdate(ZvNativeDesc& desc) override;

protected:
    void Fields(ZvRecordFields& visit) override;
    void FieldsChanged() override;

private:
    XStringW FormatLength(double value) const;
    XStringW FormatFeetInch(double inches) const;
    XStringW FormatAngle(double value) const;
    XStringW FormatNumber(double value, int decimals) const;
    Values m_values;
};
