#include "Zelvan/Tables/ZvDimStyle.h"
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include "Zelvan/Tables/ZvTextStyleTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvUnits.h"
#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double kDefaultHeightPoints = 10;
constexpr int kMostDecimals = 12;
constexpr double kInchesPerMeter = 39.37007874015748;
constexpr double kGradiansPerRadian = 63.66197723675813;

constexpr int kRadius = 3;
constexpr int kDiameter = 4;

bool IsAngle(int dimType) {
    return dimType == 2 || dimType == 5 || dimType == 6;
}

struct LengthForm {
    double perMeter;
    const char16_t* abbreviation;
};

/// By ZvDimStyle::LengthUnit; world units have no form of their own.
constexpr std::array<LengthForm, 7> kLengthForms = {{{0, u""},
                                                     {0.001, u"km"},
                                                     {1, u"m"},
                                                     {100, u"cm"},
                                                     {1000, u"mm"},
                                                     {kInchesPerMeter, u"in"},
                                                     {kInchesPerMeter, u""}}};

} // namespace

ZvDimStyle::ZvDimStyle() {
    m_values.textHeight = ZvUniSize::Points(kDefaultHeightPoints);
}

std::unique_ptr<ZvTableRecord> ZvDimStyle::NewOfKind() const {
    return std::make_unique<ZvDimStyle>();
}

void ZvDimStyle::Set(const Values& values) {
    m_values = values;
    FieldsChanged();
    IncModified();
}

void ZvDimStyle::Fields(ZvRecordFields& visit) {
    Values& v = m_values;
    visit.Field("TextStyle", v.textStyle);
    visit.Field("TextHeight", v.textHeight);
    visit.Field("TextColor", v.textColor);
    visit.Enum("TextPlace", v.textPlace, TextPlace::Outside);
    visit.Field("TextAligned", v.textAligned);
    visit.Field("TextGap", v.textGap);
    visit.Field("LineColor", v.lineColor);
    visit.Field("LineWidth", v.lineWidth);
    visit.Field("ExtensionColor", v.extensionColor);
    visit.Field("ExtensionWidth", v.extensionWidth);
    visit.Field("ExtensionOffset", v.extensionOffset);
    visit.Field("ExtensionBeyond", v.extensionBeyond);
    visit.Field("SuppressFirst", v.suppressFirst);
    visit.Field("SuppressSecond", v.suppressSecond);
    visit.Enum("Arrow", v.arrow, Arrow::Block);
    visit.Field("ArrowBlock", v.arrowBlock);
    visit.Field("ArrowSize", v.arrowSize);
    visit.Enum("LengthUnit", v.lengthUnit, LengthUnit::FeetInch);
    visit.Field("LengthDecimals", v.lengthDecimals);
    visit.Field("LengthFactor", v.lengthFactor);
    visit.Field("RoundTo", v.roundTo);
    visit.Enum("AngleUnit", v.angleUnit, AngleUnit::Gradians);
    visit.Field("AngleDecimals", v.angleDecimals);
    visit.Field("TrailingZeros", v.trailingZeros);
    visit.Field("LeadingZero", v.leadingZero);
    visit.Field("ShowUnit", v.showUnit);
    visit.Field("DecimalSeparator", v.decimalSeparator);
    visit.Field("Prefix", v.prefix);
    visit.Field("Suffix", v.suffix);
    visit.Field("Tolerance", v.tolerance);
    visit.Field("ToleranceUpper", v.toleranceUpper);
    visit.Field("ToleranceLower", v.toleranceLower);
}

void ZvDimStyle::FieldsChanged() {
    const auto keep = [](double& value, double low, double high, double fallback) {
        value = std::isfinite(value) ? std::clamp(value, low, high) : fallback;
    };
    Values& v = m_values;
    keep(v.textGap, -10, 100, 0.25);
    keep(v.extensionOffset, 0, 1000, 0.25);
    keep(v.extensionBeyond, 0, 1000, 0.5);
    keep(v.arrowSize, 0, 1000, 1);
    keep(v.roundTo, 0, 1e15, 0);
    keep(v.toleranceUpper, -1e15, 1e15, 0);
    keep(v.toleranceLower, -1e15, 1e15, 0);
    if (!std::isfinite(v.lengthFactor))
        v.lengthFactor = 1;
    v.lengthDecimals = std::clamp(v.lengthDecimals, 0, kMostDecimals);
    v.angleDecimals = std::clamp(v.angleDecimals, 0, kMostDecimals);
    if (v.decimalSeparator.IsEmpty())
        v.decimalSeparator = u".";
}

// --- references --------------------------------------------------------------------------------------------

ZvTextStyle* ZvDimStyle::GetTextStyleRecord() const {
    const ZvDrawing* drawing = GetParentDrawing();
    ZvTextStyleTable* styles = drawing ? drawing->TextStyleTable() : nullptr;
    if (!styles)
        return nullptr;
    ZvTextStyle* style = styles->Get(m_values.textStyle);
    return style ? style : styles->GetDefaultStyle();
}

ZvBlock* ZvDimStyle::GetArrowBlockRecord() const {
    const ZvDrawing* drawing = GetParentDrawing();
    const bool isBlock = m_values.arrow == Arrow::Block && drawing && drawing->BlockTable();
    return isBlock ? drawing->BlockTable()->Get(m_values.arrowBlock) : nullptr;
}

void ZvDimStyle::TableUsage(ZvUsageTable& usage) const {
    if (m_values.textStyle >= 0)
        usage.Use(ZvTableCode::Full(ZvTableCode::TextStyle), m_values.textStyle);
    if (m_values.arrowBlock >= 0)
        usage.Use(ZvTableCode::Full(ZvTableCode::Block), m_values.arrowBlock);
}

void ZvDimStyle::TableUpdate(ZvNativeDesc& desc) {
    const auto translate = [&desc](int32_t& index, ZvTableCode::Code table) {
        if (index >= 0)
            index = desc.TranslateIndex(ZvTableCode::Full(table), index, true);
    };
    translate(m_values.textStyle, ZvTableCode::TextStyle);
    translate(m_values.arrowBlock, ZvTableCode::Block);
}

// --- values as text ----------------------------------------------------------------------------------------

XStringW ZvDimStyle::FormatValue(int dimType, double value) const {
    if (!std::isfinite(value))
        return u"-";
    const bool angle = IsAngle(dimType);
    XStringW text = m_values.prefix;
    if (m_values.prefix.IsEmpty() && dimType == kRadius)
        text = u"R";
    if (m_values.prefix.IsEmpty() && dimType == kDiameter)
        text = u"\u00D8";
    text += angle ? FormatAngle(value) : FormatLength(value);
    if (m_values.tolerance) {
        const int decimals = angle ? m_values.angleDecimals : m_values.lengthDecimals;
        if (m_values.toleranceUpper == m_values.toleranceLower) {
            text += XStringW(u" \u00B1") + FormatNumber(m_values.toleranceUpper, decimals);
        } else {
            text += XStringW(u" +") + FormatNumber(m_values.toleranceUpper, decimals);
            text += XStringW(u" -") + FormatNumber(m_values.toleranceLower, decimals);
        }
    }
    return text + m_values.suffix;
}

XStringW ZvDimStyle::FormatLength(double world) const {
    const ZvDrawing* drawing = GetParentDrawing();
    const ZvUnits* units = drawing ? drawing->Units() : nullptr;
    double value = world * m_values.lengthFactor;
    XStringW abbreviation = units ? units->WorldUnitAbbr() : XStringW();
    if (m_values.lengthUnit != LengthUnit::World) {
        const LengthForm& form = kLengthForms[size_t(m_values.lengthUnit)];
        value = value / (units ? units->WorldUnitsPerMeter() : 1) * form.perMeter;
        abbreviation = form.abbreviation;
    }
    if (m_values.roundTo > 0)
        value = std::round(value / m_values.roundTo) * m_values.roundTo;
    if (m_values.lengthUnit == LengthUnit::FeetInch)
        return FormatFeetInch(value);
    XStringW text = FormatNumber(value, m_values.lengthDecimals);
    if (m_values.showUnit && !abbreviation.IsEmpty())
        text += XStringW(u" ") + abbreviation;
    return text;
}

/// Inches are rounded before feet are split off, so that 11.996 inches read as one foot and not as 12 inches.
XStringW ZvDimStyle::FormatFeetInch(double inches) const {
    const double step = std::pow(10, -m_values.lengthDecimals);
    const double rounded = std::round(std::abs(inches) / step) * step;
    const double feet = std::floor((rounded + step / 2) / 12);
    const double rest = std::max(0.0, rounded - feet * 12);
    XStringW text = inches < 0 && rounded > 0 ? u"-" : u"";
    text += FormatNumber(feet, 0) + u"' " + FormatNumber(rest, m_values.lengthDecimals) + u"\"";
    return text;
}

XStringW ZvDimStyle::FormatAngle(double radians) const {
    const double degrees = radians * ZvUnits::kDegreesPerRadian;
    switch (m_values.angleUnit) {
    case AngleUnit::Degrees:
        return FormatNumber(degrees, m_values.angleDecimals) + u"\u00B0";
    case AngleUnit::Radians:
        return FormatNumber(radians, m_values.angleDecimals) + (m_values.showUnit ? u" rad" : u"");
    case AngleUnit::Gradians:
        return FormatNumber(radians * kGradiansPerRadian, m_values.angleDecimals) +
               (m_values.showUnit ? u" gon" : u"");
    case AngleUnit::DegreesMinutesSeconds:
        break;
    }
    const double step = std::pow(10, -m_values.angleDecimals);
    const double seconds = std::round(std::abs(degrees) * 3600 / step) * step;
    const auto whole = int64_t(seconds + step / 2);
    const double rest = std::max(0.0, seconds - double(whole / 60 * 60));
    XStringW text = degrees < 0 && seconds > 0 ? u"-" : u"";
    text += XStringW::Format("%lld", static_cast<long long>(whole / 3600)) + u"\u00B0";
    text += XStringW::Format("%02d", int(whole / 60 % 60)) + u"'";
    if (rest < 10 - step / 2)
        text += u"0";
    return text + FormatNumber(rest, m_values.angleDecimals) + u"\"";
}

XStringW ZvDimStyle::FormatNumber(double value, int decimals) const {
    std::u16string digits = XStringW::Format("%.*f", decimals, value).Str();
    if (digits.find_first_not_of(u"-0.") == std::u16string::npos && digits[0] == u'-')
        digits.erase(0, 1); // no negative zero
    size_t point = digits.find(u'.');
    if (!m_values.trailingZeros && point != std::u16string::npos) {
        digits.erase(digits.find_last_not_of(u'0') + 1);
        if (digits.back() == u'.')
            digits.pop_back();
        point = digits.find(u'.');
    }
    const size_t zero = digits[0] == u'-' ? 1 : 0;
    if (!m_values.leadingZero && point == zero + 1 && digits[zero] == u'0')
        digits.erase(zero, 1), --point;
    if (point != std::u16string::npos)
        digits.replace(point, 1, m_values.decimalSeparator.Str());
    return digits;
}

/// A small dimension: two extension lines, the dimension line and the text of the value 100.
void ZvDimStyle::DrawUI(IZvSurface& surface, const Rect2I& box) const {
    const float left = float(box.left) + 4, right = float(box.right) - 4;
    const float top = float(box.top) + float(box.Height()) * 0.55f, bottom = float(box.bottom) - 2;
    const float arrow = float(std::min(4.0 * m_values.arrowSize, box.Height() / 4.0));
    const Vec2f lines[][2] = {{{left, top}, {right, top}},
                              {{left, top - 2}, {left, bottom}},
                              {{right, top - 2}, {right, bottom}},
                              {{left, top}, {left + arrow, top - arrow / 2}},
                              {{left, top}, {left + arrow, top + arrow / 2}},
                              {{right, top}, {right - arrow, top - arrow / 2}},
                              {{right, top}, {right - arrow, top + arrow / 2}}};
    const size_t count = m_values.arrow == Arrow::None ? 3 : std::size(lines);
    surface.PushClip(box);
    surface.SetPen({});
    for (size_t i = 0; i < count; ++i)
        if (!(i == 1 && m_values.suppressFirst) && !(i == 2 && m_values.suppressSecond))
            surface.Polyline(lines[i], 2, false);
    ZvTextRun run;
    run.text = FormatValue(0, 100);
    run.heightPx = float(box.Height()) * 0.4f;
    run.baselineStart = {left + (right - left) / 4, top - 2};
    surface.Text(run);
    surface.PopClip();
}
