#include "Zelvan/Tables/ZvTextStyle.h"
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/Ports/ZvTableTextMeasure.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>
#include <cmath>

namespace {

constexpr double kDefaultHeightPoints = 10;
constexpr double kMostOblique = 1.4;

double Within(double value, double low, double high, double fallback) {
    return std::isfinite(value) ? std::clamp(value, low, high) : fallback;
}

} // namespace

ZvTextStyle::ZvTextStyle() : m_font(u"Arial"), m_size(ZvUniSize::Points(kDefaultHeightPoints)) {}

std::unique_ptr<ZvTableRecord> ZvTextStyle::NewOfKind() const {
    return std::make_unique<ZvTextStyle>();
}

template <class T>
void ZvTextStyle::Change(T& member, const T& value) {
    if (member == value)
        return;
    member = value;
    FieldsChanged();
    IncModified();
}

void ZvTextStyle::SetFont(const XStringW& family) {
    Change(m_font, family);
}

void ZvTextStyle::SetSize(ZvUniSize size) {
    Change(m_size, size);
}

void ZvTextStyle::SetBold(bool on) {
    Change(m_bold, on);
}

void ZvTextStyle::SetItalic(bool on) {
    Change(m_italic, on);
}

void ZvTextStyle::SetUnderline(bool on) {
    Change(m_underline, on);
}

void ZvTextStyle::SetStrikeOut(bool on) {
    Change(m_strikeOut, on);
}

void ZvTextStyle::SetWidthFactor(double factor) {
    Change(m_widthFactor, factor);
}

void ZvTextStyle::SetOblique(double radians) {
    Change(m_oblique, radians);
}

void ZvTextStyle::SetTracking(double heights) {
    Change(m_tracking, heights);
}

void ZvTextStyle::SetLineSpacing(double heights) {
    Change(m_lineSpacing, heights);
}

void ZvTextStyle::Fields(ZvRecordFields& visit) {
    visit.Field("Font", m_font);
    visit.Field("Size", m_size);
    visit.Field("Bold", m_bold);
    visit.Field("Italic", m_italic);
    visit.Field("Underline", m_underline);
    visit.Field("StrikeOut", m_strikeOut);
    visit.Field("WidthFactor", m_widthFactor);
    visit.Field("Oblique", m_oblique);
    visit.Field("Tracking", m_tracking);
    visit.Field("LineSpacing", m_lineSpacing);
}

void ZvTextStyle::FieldsChanged() {
    m_widthFactor = Within(m_widthFactor, 0.01, 100, 1);
    m_oblique = Within(m_oblique, -kMostOblique, kMostOblique, 0);
    m_tracking = Within(m_tracking, -1, 100, 0);
    m_lineSpacing = Within(m_lineSpacing, 0.1, 100, 1.6);
    m_baselineBy = nullptr;
}

// --- metrics -----------------------------------------------------------------------------------------------

IZvTextMeasure& ZvTextStyle::Measure() const {
    const ZvDrawing* drawing = GetParentDrawing();
    IZvTextMeasure* port = drawing ? drawing->TextMeasure() : nullptr;
    return port ? *port : ZvTableTextMeasure::Default();
}

double ZvTextStyle::MeasureLength(std::u16string_view line) const {
    const auto isBreak = [](char16_t c) { return c == u'\r' || c == u'\n'; };
    std::u16string printable(line);
    std::erase_if(printable, isBreak);
    if (printable.empty())
        return 0;
    const auto isSecondHalf = [](char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; };
    const auto halves = std::count_if(printable.begin(), printable.end(), isSecondHalf);
    const double gaps = double(printable.size() - size_t(halves)) - 1;
    return std::max(0.0,
                    Measure().Measure(printable, ZvFont{m_font, m_bold, m_italic}).width * m_widthFactor +
                        gaps * m_tracking);
}

double ZvTextStyle::GetBaselineFraction() const {
    IZvTextMeasure& measure = Measure();
    if (m_baselineBy != &measure) {
        m_baselineBy = &measure;
        const ZvTextExtent extent = measure.Measure(u"x", ZvFont{m_font, m_bold, m_italic});
        const double height = extent.ascent + extent.descent;
        m_baseline = height > 0 ? extent.descent / height : 0;
    }
    return m_baseline;
}

void ZvTextStyle::DrawUI(IZvSurface& surface, const Rect2I& box) const {
    ZvTextRun run;
    run.text = GetName();
    run.fontFamily = m_font;
    run.heightPx = float(box.Height()) * 0.7f;
    run.baselineStart = {float(box.left) + 2, float(box.bottom) - float(box.Height()) * 0.3f};
    surface.PushClip(box);
    surface.Text(run);
    surface.PopClip();
}
