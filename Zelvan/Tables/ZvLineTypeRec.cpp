#include "Zelvan/Tables/ZvLineTypeRec.h"
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include <cmath>
#include <numeric>

namespace {

constexpr size_t kMostDashes = 1024;

bool IsLength(double value) {
    return std::isfinite(value) && value >= 0;
}

bool AreLengths(const std::vector<double>& lengths) {
    for (const double length : lengths)
        if (!IsLength(length))
            return false;
    return lengths.size() <= kMostDashes;
}

} // namespace

std::unique_ptr<ZvTableRecord> ZvLineTypeRec::NewOfKind() const {
    return std::make_unique<ZvLineTypeRec>();
}

void ZvLineTypeRec::SetPattern(double a, double b, double c) {
    m_a = a, m_b = b, m_c = c;
    for (double* parameter : {&m_a, &m_b, &m_c})
        if (!IsLength(*parameter))
            *parameter = 0;
    Generate();
    FieldsChanged();
    IncModified();
}

void ZvLineTypeRec::Generate() {
    m_dashes.clear();
    if (m_b * m_c > 0)
        m_dashes = {m_a * m_c, m_b * m_c};
}

bool ZvLineTypeRec::SetDashes(const std::vector<double>& lengths) {
    if (!AreLengths(lengths))
        return false;
    m_a = m_b = m_c = 0;
    m_dashes = lengths;
    FieldsChanged();
    IncModified();
    return true;
}

double ZvLineTypeRec::PatternLength() const {
    return std::accumulate(m_dashes.begin(), m_dashes.end(), 0.0);
}

void ZvLineTypeRec::SetUnits(Units units) {
    m_units = units;
    IncModified();
}

void ZvLineTypeRec::SetDescription(const XStringW& text) {
    m_description = text;
    IncModified();
}

void ZvLineTypeRec::Fields(ZvRecordFields& visit) {
    visit.Field("PatternA", m_a);
    visit.Field("PatternB", m_b);
    visit.Field("PatternC", m_c);
    visit.Field("Dashes", m_dashes);
    visit.Enum("Units", m_units, Units::World);
    visit.Field("Description", m_description);
}

/// Parameters win over dash data that came with them; patterns that would draw nothing or never end become
/// continuous.
void ZvLineTypeRec::FieldsChanged() {
    if (!IsLength(m_a) || !IsLength(m_b) || !IsLength(m_c))
        m_a = m_b = m_c = 0;
    if (m_c > 0)
        Generate();
    if (!AreLengths(m_dashes))
        m_dashes.clear();
    if (m_dashes.size() % 2)
        m_dashes.push_back(0);
    if (!(PatternLength() > 0) || !std::isfinite(PatternLength()))
        m_dashes.clear();
}

void ZvLineTypeRec::DrawUI(IZvSurface& surface, const Rect2I& box) const {
    constexpr float kPixelsPerPoint = 96.0f / 72.0f;
    ZvPen pen;
    const double world =
        m_units == Units::World && PatternLength() > 0 ? box.Width() / 4 / PatternLength() : 0;
    for (const double length : m_dashes)
        pen.dashes.push_back(float(world > 0 ? length * world : length * kPixelsPerPoint));
    const float middle = float(box.top + box.bottom) / 2;
    const Vec2f line[] = {{float(box.left), middle}, {float(box.right), middle}};
    surface.PushClip(box);
    surface.SetPen(pen);
    surface.Polyline(line, 2, false);
    surface.PopClip();
}
