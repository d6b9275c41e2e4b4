#include "Zelvan/ZvUnits.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/BinXml.h"
#include <algorithm>
#include <charconv>
#include <cmath>

namespace {

using Preset = ZvUnits::Preset;

constexpr double kPresetScales[ZvUnits::kPresetCount] = {
    0.001, 1.0, 100.0, 1000.0, 39.37007874015748, 2834.6456692913384};
constexpr double kLayoutTextureScale = 0.01;

struct PresetList {
    std::vector<XStringW> names, abbreviations;
};

PresetList& ThePresetList() {
    static PresetList list;
    return list;
}

bool IsPreset(Preset preset) {
    return int(preset) >= 0 && int(preset) < ZvUnits::kPresetCount;
}

bool IsBlank(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\u00A0';
}

bool IsDigit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

void SkipBlanks(std::u16string_view text, size_t& at) {
    while (at < text.size() && IsBlank(text[at]))
        ++at;
}

constexpr double kMetersPerFoot = 0.3048, kMetersPerSurveyFoot = 1200.0 / 3937.0;

/// Units that are read beside the presets.
constexpr struct {
    std::u16string_view names[4];
    double metersPerUnit;
} kMoreUnits[] = {{{u"'", u"ft", u"foot", u"feet"}, kMetersPerFoot},
                  {{u"\"", u"''", u"inches", u"inches"}, 0.0254},
                  {{u"yd", u"yard", u"yards", u"yards"}, 0.9144},
                  {{u"mi", u"mile", u"miles", u"miles"}, 1609.344}};

/// "mm", "^2" behind "mm^2": takes the mark of a square unit off. False when there is none.
bool TakeSquareMark(std::u16string_view& unit) {
    for (const std::u16string_view mark :
         {std::u16string_view(u"^2"), std::u16string_view(u"2"), std::u16string_view(u"\u00B2")})
        if (unit.ends_with(mark)) {
            unit.remove_suffix(mark.size());
            return true;
        }
    return false;
}

} // namespace

ZvUnits::ZvUnits(ZvDrawing* drawing) : m_drawing(drawing), m_angleName(ZvStrings::GetW(ZvStr::UnitDegrees)) {
    if (drawing && drawing->IsChildLayout())
        m_textureScale = kLayoutTextureScale;
    SetPreset(Preset::Meters);
}

double ZvUnits::GetPresetScale(Preset preset) {
    return IsPreset(preset) ? kPresetScales[int(preset)] : 1.0;
}

bool ZvUnits::GetPresetParms(Preset preset, XStringW& name, XStringW& abbreviation, double& scale) {
    scale = GetPresetScale(preset);
    if (!IsPreset(preset)) {
        name.Clear();
        abbreviation.Clear();
        return false;
    }
    const PresetList& list = ThePresetList();
    const size_t at = size_t(preset);
    name = list.names.empty() ? ZvStrings::GetW(ZvStr::UnitKilometers + int(at)) : list.names[at];
    abbreviation =
        list.names.empty() ? ZvStrings::GetW(ZvStr::UnitAbbrKilometers + int(at)) : list.abbreviations[at];
    return true;
}

void ZvUnits::PopulatePresetList() {
    PresetList& list = ThePresetList();
    if (!list.names.empty())
        return;
    for (int i = 0; i < kPresetCount; ++i) {
        list.names.push_back(ZvStrings::GetW(ZvStr::UnitKilometers + i));
        list.abbreviations.push_back(ZvStrings::GetW(ZvStr::UnitAbbrKilometers + i));
    }
}

const std::vector<XStringW>& ZvUnits::GetPresetNameList() {
    return ThePresetList().names;
}

const std::vector<XStringW>& ZvUnits::GetPresetAbbrList() {
    return ThePresetList().abbreviations;
}

const std::vector<double>& ZvUnits::GetPresetAnglesList() {
    static const std::vector<double> angles = [] {
        std::vector<double> all;
        for (int degrees = 0; degrees < 360; degrees += 15)
            all.push_back(degrees * kRadiansPerDegree);
        return all;
    }();
    return angles;
}

double ZvUnits::ConvertDistance(Preset from, Preset to, double distance) {
    if (from != Preset::Meters)
        distance /= GetPresetScale(from);
    return to == Preset::Meters ? distance : distance * GetPresetScale(to);
}

void ZvUnits::SetPreset(Preset preset, double, bool applyToUcs) {
    double unitsPerMeter = 1;
    GetPresetParms(preset, m_worldName, m_worldAbbr, unitsPerMeter);
    m_preset = preset;
    m_customUnitsPerMeter = 0;
    m_scale = 1.0;
    m_paperName = ZvStrings::GetW(ZvStr::UnitPoints);
    m_paperAbbr = ZvStrings::GetW(ZvStr::UnitAbbrPoint);
    m_metersPerPaperUnit = kMetersPerPoint;
    m_paperUnitsPerMeter = kPointsPerMeter;
    ZvUcs* ucs = applyToUcs ? CurrentUcs() : nullptr;
    if (ucs) {
        ucs->SetScale(unitsPerMeter);
        ucs->SetUnitNames(m_worldName, m_worldAbbr);
    }
}

bool ZvUnits::SetCustomWorld(const XStringW& name, const XStringW& abbreviation, double unitsPerMeter) {
    if (!(unitsPerMeter > 0) || !std::isfinite(unitsPerMeter))
        return false;
    m_worldName = name;
    m_worldAbbr = abbreviation;
    m_customUnitsPerMeter = unitsPerMeter;
    return true;
}

void ZvUnits::SetWorldOf(const ZvCoordSystem& system) {
    const double meters = system.metersPerUnit;
    const auto is = [meters](double length) { return std::abs(meters - length) < length * 1e-9; };
    if (system.kind == ZvCoordSystem::Kind::Geographic)
        SetCustomWorld(ZvStrings::GetW(ZvStr::UnitDegrees), u"\u00B0", 1 / meters);
    else if (is(1))
        SetPreset(Preset::Meters);
    else if (is(kMetersPerFoot) || is(kMetersPerSurveyFoot))
        SetCustomWorld(ZvStrings::GetW(ZvStr::UnitFeet), u"ft", 1 / meters);
    else
        SetCustomWorld({}, {}, 1 / meters);
}

double ZvUnits::WorldUnitsPerMeter() const {
    return IsCustomWorld() ? m_customUnitsPerMeter : GetPresetScale(m_preset);
}

bool ZvUnits::IsMetric() const {
    const double decades = std::log10(WorldUnitsPerMeter());
    return std::abs(decades - std::round(decades)) < 1e-9;
}

bool ZvUnits::SetSeparators(const XStringW& decimal, const XStringW& coordinate) {
    const bool reserved = std::any_of(decimal.View().begin(), decimal.View().end(),
                                      [](char16_t c) { return IsDigit(c) || c == u'-' || c == u'+'; });
    if (decimal.Trimmed().IsEmpty() || coordinate.IsEmpty() || reserved ||
        decimal.Trimmed() == coordinate.Trimmed())
        return false;
    m_decimalSeparator = decimal;
    m_coordinateSeparator = coordinate;
    return true;
}

void ZvUnits::SetPrecision(int digits) {
    m_precision = std::clamp(digits, 0, 15);
}

ZvUcs* ZvUnits::CurrentUcs() const {
    const ZvUcsTable* table = m_drawing ? m_drawing->UcsTable() : nullptr;
    return table ? table->GetCurrent() : nullptr;
}

double ZvUnits::UU2World() const {
    const ZvUcs* ucs = CurrentUcs();
    return ucs && ucs->GetScale() > 0 ? 1.0 / ucs->GetScale() : 1.0;
}

XStringW ZvUnits::UserUnitAbbr() const {
    const ZvUcs* ucs = CurrentUcs();
    return ucs && !ucs->GetUnitAbbr().IsEmpty() ? ucs->GetUnitAbbr() : m_worldAbbr;
}

bool ZvUnits::ReadNumber(std::u16string_view text, size_t& at, double& value) const {
    std::string ascii;
    size_t i = at;
    const auto digits = [&] {
        const size_t start = ascii.size();
        for (; i < text.size() && IsDigit(text[i]); ++i)
            ascii += char(text[i]);
        return ascii.size() > start;
    };
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) {
        if (text[i++] == u'-')
            ascii += '-';
    }
    bool any = digits();
    const std::u16string_view rest = text.substr(std::min(i, text.size()));
    const bool own = rest.starts_with(m_decimalSeparator.View());
    const bool point = rest.starts_with(u'.') && m_coordinateSeparator.Trimmed() != XStringW(u".");
    const size_t width = own ? m_decimalSeparator.Length() : point ? 1 : 0;
    if (width && (any || (rest.size() > width && IsDigit(rest[width])))) {
        i += width;
        ascii += '.';
        any |= digits();
    }
    if (!any)
        return false;
    if (i < text.size() && (text[i] == u'e' || text[i] == u'E')) {
        const bool hasSign = i + 1 < text.size() && (text[i + 1] == u'-' || text[i + 1] == u'+');
        const size_t first = i + (hasSign ? 2 : 1);
        if (first < text.size() && IsDigit(text[first])) {
            ascii += 'e';
            if (hasSign && text[i + 1] == u'-')
                ascii += '-';
            i = first;
            digits();
        }
    }
    double read = 0;
    if (std::from_chars(ascii.data(), ascii.data() + ascii.size(), read).ec != std::errc())
        return false;
    value = read;
    at = i;
    return true;
}

double ZvUnits::UnitsPerMeterOf(const XStringW& unit) const {
    const auto matches = [&](const XStringW& name) {
        return !name.IsEmpty() && (unit.EqualsNoCase(name) || unit.EqualsNoCase(name + XStringW(u"s")) ||
                                   (unit + XStringW(u"s")).EqualsNoCase(name));
    };
    if (unit.EqualsNoCase(m_worldAbbr) || matches(m_worldName))
        return WorldUnitsPerMeter();
    for (int i = 0; i < kPresetCount; ++i) {
        XStringW name, abbreviation;
        double scale = 0;
        GetPresetParms(Preset(i), name, abbreviation, scale);
        if (unit.EqualsNoCase(abbreviation) || matches(name))
            return scale;
    }
    for (const auto& more : kMoreUnits)
        for (const std::u16string_view name : more.names)
            if (unit.EqualsNoCase(XStringW(name)))
                return 1 / more.metersPerUnit;
    return 0;
}

bool ZvUnits::ParseArea(const XStringW& text, double plainFactor, double& world) const {
    const std::u16string_view view = text.View();
    size_t at = 0;
    double value = 0, factor = plainFactor;
    SkipBlanks(view, at);
    if (!ReadNumber(view, at, value))
        return false;
    const XStringW rest = XStringW(view.substr(at)).Trimmed();
    if (!rest.IsEmpty()) {
        std::u16string_view unit = rest.View();
        const double unitsPerMeter = TakeSquareMark(unit) ? UnitsPerMeterOf(XStringW(unit).Trimmed()) : 0;
        if (unitsPerMeter <= 0)
            return false;
        factor = WorldUnitsPerMeter() / unitsPerMeter;
    }
    value *= factor * factor;
    if (!std::isfinite(value))
        return false;
    world = value;
    return true;
}

bool ZvUnits::ParseLength(const XStringW& text, double plainFactor, double& world) const {
    const std::u16string_view view = text.View();
    size_t at = 0;
    double sum = 0, sign = 1;
    for (int parts = 0; parts == 0 || at < view.size(); ++parts) {
        double value = 0, unitsPerMeter = 0;
        SkipBlanks(view, at);
        const bool isSigned = at < view.size() && (view[at] == u'-' || view[at] == u'+');
        if (parts == 0 && isSigned && view[at] == u'-')
            sign = -1;
        if ((parts > 0 && isSigned) || !ReadNumber(view, at, value))
            return false;
        SkipBlanks(view, at);
        const bool plain = parts == 0 && at == view.size();
        if (!plain && !ReadUnit(view, at, unitsPerMeter))
            return false;
        sum += std::abs(value) * (plain ? plainFactor : WorldUnitsPerMeter() / unitsPerMeter);
        SkipBlanks(view, at);
    }
    if (!std::isfinite(sum))
        return false;
    world = sign * sum;
    return true;
}

/// All that is left when that is a unit, else what stands in front of the next digit.
bool ZvUnits::ReadUnit(std::u16string_view text, size_t& at, double& unitsPerMeter) const {
    const std::u16string_view rest = text.substr(at);
    unitsPerMeter = UnitsPerMeterOf(XStringW(rest).Trimmed());
    if (unitsPerMeter > 0) {
        at = text.size();
        return true;
    }
    size_t end = 0;
    while (end < rest.size() && !IsDigit(rest[end]) &&
           !rest.substr(end).starts_with(m_decimalSeparator.View()))
        ++end;
    at += end;
    unitsPerMeter = UnitsPerMeterOf(XStringW(rest.substr(0, end)).Trimmed());
    return unitsPerMeter > 0;
}

bool ZvUnits::ParseDistance(const XStringW& text, double& world) const {
    return ParseLength(text, 1, world);
}

bool ZvUnits::ParseDistanceFromUCS(const XStringW& text, double& world) const {
    return ParseLength(text, UU2World(), world);
}

bool ZvUnits::IsValidDistanceFromUCS(const XStringW& text) const {
    double world = 0;
    return ParseDistanceFromUCS(text, world);
}

bool ZvUnits::ParseAreaFromUCS(const XStringW& text, double& world) const {
    return ParseArea(text, UU2World(), world);
}

/// How many numbers the text holds; 0 when it holds anything else.
int ZvUnits::ReadCoordinates(std::u16string_view text, double (&values)[3]) const {
    const XStringW separator = m_coordinateSeparator.Trimmed();
    size_t at = 0;
    int count = 0;
    SkipBlanks(text, at);
    while (at < text.size()) {
        if (count == 3 || !ReadNumber(text, at, values[count]))
            return 0;
        ++count;
        const size_t end = at;
        SkipBlanks(text, at);
        if (at == text.size())
            return count;
        const bool marked = !separator.IsEmpty() && text.substr(at).starts_with(separator.View());
        if (marked || text[at] == u';') {
            at += marked ? separator.Length() : 1;
            SkipBlanks(text, at);
            if (at == text.size())
                return 0;
        } else if (at == end) {
            return 0;
        }
    }
    return count;
}

bool ZvUnits::ParseCoord(const XStringW& text, Vec3d& world) const {
    double values[3] = {0, 0, 0};
    if (ReadCoordinates(text.View(), values) < 2)
        return false;
    const Vec3d user{values[0], values[1], values[2]};
    const ZvUcs* ucs = CurrentUcs();
    world = ucs ? ucs->UserToWorld(user) : user;
    return true;
}

bool ZvUnits::ParseCoord(const XStringW& text, Vec2d& world) const {
    double values[3] = {0, 0, 0};
    Vec3d point;
    if (ReadCoordinates(text.View(), values) != 2 || !ParseCoord(text, point))
        return false;
    world = point.XY();
    return true;
}

double ZvUnits::ParseAngle(const XStringW& text) const {
    const XStringW trimmed = text.Trimmed();
    size_t at = 0;
    double degrees = 0;
    return ReadNumber(trimmed.View(), at, degrees) ? degrees * kRadiansPerDegree : 0;
}

XStringW ZvUnits::FormatNumber(double value, int precision) const {
    if (!std::isfinite(value))
        return u"-";
    const double size = std::abs(value);
    XStringW text;
    if (size < 1e15)
        text = XStringW::Format("%.*f", precision, value + 0.0);
    if (text.IsEmpty() || (size > 0 && text.View().find_first_of(u"123456789") == std::u16string_view::npos))
        text = XStringW::Format("%.5e", value);
    const size_t point = text.View().find(u'.');
    if (point != std::u16string_view::npos)
        text.Str().replace(point, 1, m_decimalSeparator.View());
    return text;
}

namespace {

XStringW WithUnit(XStringW number, bool unit, const XStringW& abbreviation) {
    return unit && !abbreviation.IsEmpty() ? number + XStringW(u" ") + abbreviation : number;
}

} // namespace

XStringW ZvUnits::FormatDistance(double world, bool unit) const {
    return WithUnit(FormatNumber(world, m_precision), unit, m_worldAbbr);
}

XStringW ZvUnits::FormatDistanceToUCS(double world, bool unit) const {
    return WithUnit(FormatNumber(World2UU(world), m_precision), unit, UserUnitAbbr());
}

XStringW ZvUnits::FormatAreaToUCS(double world, bool unit) const {
    const double factor = UU2World();
    const XStringW abbreviation = UserUnitAbbr();
    return WithUnit(FormatNumber(world / factor / factor, m_precision), unit,
                    abbreviation.IsEmpty() ? abbreviation : abbreviation + XStringW(u"\u00B2"));
}

XStringW ZvUnits::FormatCoord(const Vec2d& world) const {
    const ZvUcs* ucs = CurrentUcs();
    const Vec3d point{world.x, world.y, 0};
    const Vec3d user = ucs ? ucs->WorldToUser(point) : point;
    return FormatNumber(user.x, m_precision) + m_coordinateSeparator + FormatNumber(user.y, m_precision);
}

XStringW ZvUnits::FormatCoord(const Vec3d& world) const {
    return FormatCoord(world, m_precision);
}

XStringW ZvUnits::FormatCoord(const Vec3d& world, int precision) const {
    const ZvUcs* ucs = CurrentUcs();
    const Vec3d user = ucs ? ucs->WorldToUser(world) : world;
    precision = std::clamp(precision, 0, 15);
    return FormatNumber(user.x, precision) + m_coordinateSeparator + FormatNumber(user.y, precision) +
           m_coordinateSeparator + FormatNumber(user.z, precision);
}

XStringW ZvUnits::GetFormattedCoordExample() const {
    return FormatNumber(1, m_precision) + m_coordinateSeparator + FormatNumber(2.5, m_precision);
}

XStringW ZvUnits::FormatAngle(double radians) const {
    if (!std::isfinite(radians))
        return u"-";
    double a = radians;
    if (a < 0)
        a += std::ceil(-a / kTurn) * kTurn;
    else
        a -= std::floor(a / kTurn) * kTurn;
    constexpr double kTiny = 1e-6;
    if (std::abs(a) < kTiny || std::abs(a - kTurn) < kTiny || std::abs(a + kTurn) < kTiny)
        a = 0;
    const double degrees = a * kDegreesPerRadian;
    const double whole = std::floor(degrees + 0.0001);
    return XStringW::Format("%.2f", std::abs(whole - degrees) < 0.001 ? whole : degrees);
}

void ZvUnits::Store(ZvCore::BinXmlNode& node) const {
    node.Set("Preset", int64_t(m_preset));
    node.Set("Scale", m_scale);
    node.Set("TextureScale", m_textureScale);
    if (IsCustomWorld()) {
        node.Set("CustomUnitsPerMeter", m_customUnitsPerMeter);
        node.Set("WorldUnitName", m_worldName);
        node.Set("WorldUnitAbbr", m_worldAbbr);
    }
    node.Set("DecimalSeparator", m_decimalSeparator);
    node.Set("CoordinateSeparator", m_coordinateSeparator);
    node.Set("Precision", int64_t(m_precision));
}

void ZvUnits::Load(const ZvCore::BinXmlNode& node) {
    SetPreset(Preset(int(node.GetInt("Preset", int64_t(Preset::Meters)))));
    const double scale = node.GetDouble("Scale", 1.0),
                 texture = node.GetDouble("TextureScale", m_textureScale);
    m_scale = std::isfinite(scale) && scale > 0 ? scale : 1.0;
    m_textureScale = std::isfinite(texture) && texture > 0 ? texture : m_textureScale;
    SetCustomWorld(node.GetString("WorldUnitName", {}), node.GetString("WorldUnitAbbr", {}),
                   node.GetDouble("CustomUnitsPerMeter", 0));
    SetSeparators(node.GetString("DecimalSeparator", m_decimalSeparator),
                  node.GetString("CoordinateSeparator", m_coordinateSeparator));
    SetPrecision(int(std::clamp<int64_t>(node.GetInt("Precision", m_precision), 0, 15)));
}
