#include "Apps/zvd/DrawingUnits.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/Tools/ZvLinearParts.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>
#include <cmath>

namespace {

constexpr int kMostDigits = 9;
constexpr double kShownMeters = 1e-3;

/// Digits after the point that show steps of `precision`.
int DigitsFor(double precision) {
    return precision > 0 ? std::clamp(int(std::ceil(-std::log10(precision) - 1e-9)), 0, kMostDigits)
                         : kMostDigits;
}

/// "m, km, ..." of the units that presets know by name.
std::string KnownUnits() {
    ZvUnits::PopulatePresetList();
    std::string known;
    for (const XStringW& abbreviation : ZvUnits::GetPresetAbbrList())
        known += abbreviation.ToUtf8() + ", ";
    return known + "ft, yd, mi";
}

} // namespace

DrawingUnits::DrawingUnits(const ZvDrawing& drawing)
    : m_units(*drawing.Units()), m_ucs(drawing.UcsTable()->GetCurrent()) {
    if (const ZvCoordSystem& system = drawing.UcsTable()->CoordinateSystem(); system.IsSet())
        m_units.SetWorldOf(system);
    m_units.SetSeparators(u".", u", ");
    m_units.SetPrecision(std::max(m_units.Precision(),
                                  DigitsFor(m_units.World2UU(m_units.WorldUnitsPerMeter() * kShownMeters))));
}

std::optional<DrawingUnits::Unit> DrawingUnits::FindUnit(const std::string& name, std::string& why) const {
    const XStringW wide = XStringW::FromUtf8(name);
    double one = 0;
    if (name.empty() || !m_units.ParseDistance(u"1 " + wide, one) || !(one > 0)) {
        why = "'" + name + "' is no unit of length: use one of " + KnownUnits();
        return std::nullopt;
    }
    for (int i = 0; i < ZvUnits::kPresetCount; ++i) {
        Unit unit;
        double perMeter = 0;
        ZvUnits::GetPresetParms(ZvUnits::Preset(i), unit.name, unit.abbreviation, perMeter);
        if (wide.EqualsNoCase(unit.name) || wide.EqualsNoCase(unit.abbreviation)) {
            unit.perWorldUnit = 1 / one;
            return unit;
        }
    }
    return Unit{1 / one, wide, wide};
}

// --- reading --------------------------------------------------------------------------------------------------

Vec3d DrawingUnits::ToWorld(const Vec3d& user) const {
    return m_ucs ? m_ucs->UserToWorld(user) : user;
}

std::optional<Vec3d> DrawingUnits::UserPlace(std::string_view word) const {
    double part[3] = {};
    size_t count = 0;
    for (size_t at = 0; at <= word.size(); ++count) {
        const size_t comma = std::min(word.find(',', at), word.size());
        const std::optional<double> world = Distance(word.substr(at, comma - at));
        if (!world || count == 3)
            return std::nullopt;
        part[count] = m_units.World2UU(*world);
        at = comma + 1;
    }
    return count < 2 ? std::nullopt : std::optional<Vec3d>({part[0], part[1], part[2]});
}

std::optional<Vec3d> DrawingUnits::Place(std::string_view word) const {
    const bool plain = word.find_first_of("; \t") == std::string_view::npos;
    if (Vec3d world; plain && m_units.ParseCoord(XStringW::FromUtf8(word), world))
        return world;
    const std::optional<Vec3d> user = UserPlace(word);
    return user ? std::optional<Vec3d>(ToWorld(*user)) : std::nullopt;
}

std::vector<Vec2d> DrawingUnits::Places(std::string_view word) const {
    std::vector<Vec2d> places;
    for (size_t at = 0; at <= word.size();) {
        const size_t end =
            std::min(word.find(',', std::min(word.find(',', at), word.size() - 1) + 1), word.size());
        const std::optional<Vec3d> place = Place(word.substr(at, end - at));
        if (!place)
            return {};
        places.push_back(place->XY());
        at = end + 1;
    }
    return places;
}

std::optional<Vec3d> DrawingUnits::Way(std::string_view word) const {
    const std::optional<Vec3d> place = Place(word);
    return place ? std::optional<Vec3d>(*place - ToWorld({})) : std::nullopt;
}

std::optional<double> DrawingUnits::Distance(std::string_view word) const {
    double world = 0;
    return m_units.ParseDistanceFromUCS(XStringW::FromUtf8(word), world) ? std::optional<double>(world)
                                                                         : std::nullopt;
}

std::optional<double> DrawingUnits::Angle(std::string_view word) const {
    double degrees = 0;
    const XStringW text = XStringW::FromUtf8(word);
    // Only what is a number all through: the angle itself takes anything.
    const bool plain = text.View().find_first_not_of(u"+-.0123456789eE") == std::u16string_view::npos &&
                       m_units.ParseDistance(text, degrees);
    return plain ? std::optional<double>(m_units.ParseAngle(text)) : std::nullopt;
}

// --- showing --------------------------------------------------------------------------------------------------

std::string DrawingUnits::PlaceText(const Vec3d& world) const {
    return m_units.FormatCoord(world).ToUtf8();
}

std::string DrawingUnits::PlanText(const Vec2d& world) const {
    return m_units.FormatCoord(world).ToUtf8();
}

std::string DrawingUnits::LengthText(double world) const {
    return m_units.FormatDistanceToUCS(world, true).ToUtf8();
}

std::string DrawingUnits::AreaText(double world) const {
    return m_units.FormatAreaToUCS(world, true).ToUtf8();
}

std::string DrawingUnits::AngleText(double radians) const {
    return m_units.FormatAngle(radians).ToUtf8() + " " + m_units.AngleUnitName().ToUtf8();
}

std::string DrawingUnits::ExtentText(const ZvBounds3D& bounds) const {
    if (bounds.IsNull())
        return "empty";
    return PlanText({bounds.minX, bounds.minY}) + " to " + PlanText({bounds.maxX, bounds.maxY}) + " (" +
           LengthText(bounds.Width()) + " x " + LengthText(bounds.Height()) + ")";
}

std::string DrawingUnits::PlaceHint() const {
    std::string example = m_units.GetFormattedCoordExample().ToUtf8();
    std::erase(example, ' ');
    return "write X,Y or X,Y,Z without blanks, for example " + example;
}

// --- measuring ------------------------------------------------------------------------------------------------

void DrawingMeasure::Add(const ZvEntity& entity) {
    if (entity.IsErased())
        return;
    ++entities;
    bounds.ExpandToFit(entity.Bounds3D());
    area += std::abs(entity.GetArea());
    ForEachLinearSegment(entity, [this](const ZvLinearSegment& segment) {
        length += (segment.b.XYZ() - segment.a.XYZ()).Length();
    });
}

void DrawingMeasure::Add(const DrawingMeasure& other) {
    entities += other.entities;
    length += other.length;
    area += other.area;
    bounds.ExpandToFit(other.bounds);
}
