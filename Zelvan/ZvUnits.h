#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"
#include <vector>

class ZvDrawing;
class ZvUcs;
struct ZvCoordSystem;
namespace ZvCore {
class BinXmlNode;
}

/// What one world unit of a drawing means, and how lengths, areas, coordinates and angles are shown to and
/// read from its user.
///
/// World coordinates are plain doubles; the preset says what one unit of them means. The user's unit comes
/// from the current UCS record: its scale is user units per world unit. Names that end in "UCS" and the
/// coordinates work in user units (coordinates also in the record's origin and axes), the others in world
/// units.
///
/// Texts of numbers: an optional sign, digits with the decimal separator (a point is taken as well), an
/// optional exponent. Behind a length may stand a preset's abbreviation or name, those of the world unit, or
/// feet, yards and miles ("12.5 mm", "3 inch", "10'"), which then count instead of the default unit; areas take
/// the same with "2", "^2" or U+00B2 at its end. A length may be a sum of such parts, the sign in front counting
/// for all of them (-10'6", 1 km 250 m). Blanks around the parts do not matter.
class ZV_API ZvUnits {
public:
    enum class Preset : int {
        Kilometers = 0,
        Meters = 1,
        Centimeters = 2,
        Millimeters = 3,
        Inch = 4,
        Point = 5
    };
    static constexpr int kPresetCount = 6;
    static constexpr double kMetersPerPoint = 0.00035277777777777776;
    static constexpr double kPointsPerMeter = 2834.645669291339;
    static constexpr double kRadiansPerDegree = 0.017453292519943295;
    static constexpr double kDegreesPerRadian = 57.29577951308232;
    static constexpr double kTurn = 6.283185307179586;

    /// `drawing` may be null (units by themselves: no UCS, scale 1) and must outlive this.
    explicit ZvUnits(ZvDrawing* drawing = nullptr);

    // --- presets -------------------------------------------------------------------------------------
    /// Units per metre; 1 for a number that is no preset.
    static double GetPresetScale(Preset preset);
    /// Name, abbreviation and scale of a preset: from the application's list once that is filled, else the
    /// built-in ones. False, with empty names and scale 1, for a number that is no preset.
    static bool GetPresetParms(Preset preset, XStringW& name, XStringW& abbreviation, double& scale);
    /// Fills the application's list once (window thread); further calls change nothing.
    static void PopulatePresetList();
    /// Empty until the list is filled.
    static const std::vector<XStringW>& GetPresetNameList();
    static const std::vector<XStringW>& GetPresetAbbrList();
    /// Angles offered to users, radians: multiples of 15 degrees and of 45 over a whole turn, ascending.
    static const std::vector<double>& GetPresetAnglesList();
    static double ConvertDistance(Preset from, Preset to, double distance);

    Preset GetPreset() const { return m_preset; }
    /// Takes the preset's names, resets the scale to 1 (whatever `scale` says: it is the scale of a unit that
    /// is no preset) and the paper unit to points. `applyToUcs`: also sets scale and unit names of the
    /// drawing's current UCS record.
    void SetPreset(Preset preset, double scale = 1.0, bool applyToUcs = false);
    /// A world unit that is no preset; `unitsPerMeter` must be positive and finite, else nothing changes and
    /// false is returned.
    bool SetCustomWorld(const XStringW& name, const XStringW& abbreviation, double unitsPerMeter);
    /// The world unit that positions in a coordinate system are in: metres, degrees, a kind of foot, or one without a name.
    void SetWorldOf(const ZvCoordSystem& system);
    bool IsCustomWorld() const { return m_customUnitsPerMeter > 0; }
    /// World units per metre.
    double WorldUnitsPerMeter() const;
    /// Whether the world unit is a multiple or part of the metre by a power of ten.
    bool IsMetric() const;

    // --- fields --------------------------------------------------------------------------------------
    double Scale() const { return m_scale; }
    /// 0.01 in a child layout drawing unless set.
    double TextureScale() const { return m_textureScale; }
    void SetTextureScale(double scale) { m_textureScale = scale; }
    const XStringW& WorldUnitName() const { return m_worldName; }
    const XStringW& WorldUnitAbbr() const { return m_worldAbbr; }
    const XStringW& DecimalSeparator() const { return m_decimalSeparator; }
    const XStringW& CoordinateSeparator() const { return m_coordinateSeparator; }
    /// Refused (false) when empty, when the two would be equal, or when a decimal separator holds a digit or
    /// a sign.
    bool SetSeparators(const XStringW& decimal, const XStringW& coordinate);
    const XStringW& AngleUnitName() const { return m_angleName; }
    const XStringW& AngleUnitAbbr() const { return m_angleAbbr; }
    const XStringW& PaperUnitName() const { return m_paperName; }
    const XStringW& PaperUnitAbbr() const { return m_paperAbbr; }
    double MetersPerPaperUnit() const { return m_metersPerPaperUnit; }
    double PaperUnitsPerMeter() const { return m_paperUnitsPerMeter; }
    /// Digits after the decimal separator in formatted lengths and coordinates, 0..15; default 3. Areas use
    /// the same.
    int Precision() const { return m_precision; }
    void SetPrecision(int digits);

    // --- user units ----------------------------------------------------------------------------------
    /// World units per user unit: 1 / scale of the current UCS record; 1 when there is none or its scale is
    /// not positive.
    double UU2World() const;
    double UU2World(double userUnits) const { return userUnits * UU2World(); }
    double World2UU(double world) const { return world / UU2World(); }

    // --- reading. False, and the result untouched, for text that does not parse
    // ----------------------------------------------
    /// World units unless a unit is given.
    bool ParseDistance(const XStringW& text, double& world) const;
    /// User units unless a unit is given; the result is in world units.
    bool ParseDistanceFromUCS(const XStringW& text, double& world) const;
    bool IsValidDistanceFromUCS(const XStringW& text) const;
    /// Square user units unless a unit is given; the result is in square world units.
    bool ParseAreaFromUCS(const XStringW& text, double& world) const;
    /// Two or three numbers in user units; the result is in world units (z 0 when missing). Between the
    /// numbers stands the coordinate separator (blanks around it may be missing), or a semicolon, or blanks
    /// alone.
    bool ParseCoord(const XStringW& text, Vec3d& world) const;
    /// Two numbers.
    bool ParseCoord(const XStringW& text, Vec2d& world) const;
    /// Decimal degrees to radians; 0 for an empty text and for one that does not begin with a number.
    double ParseAngle(const XStringW& text) const;

    // --- writing -------------------------------------------------------------------------------------
    // Fixed notation with Precision() digits; values that would need more than 15 digits before the separator
    // and values below half of the last digit (but not 0) are written in exponent form with 6 significant
    // digits, so that nothing shows as 0 that is not. Not a number shows as "-". With `unit`, a blank and the
    // abbreviation follow.
    XStringW FormatDistance(double world, bool unit = false) const;
    XStringW FormatDistanceToUCS(double world, bool unit = false) const;
    /// The unit of areas is the abbreviation with U+00B2.
    XStringW FormatAreaToUCS(double world, bool unit = false) const;
    /// User units, with the coordinate separator between them.
    XStringW FormatCoord(const Vec2d& world) const;
    XStringW FormatCoord(const Vec3d& world) const;
    XStringW FormatCoord(const Vec3d& world, int precision) const;
    /// What a coordinate looks like in these units, for hints: "1.000, 2.500" with the separators and
    /// precision set.
    XStringW GetFormattedCoordExample() const;
    /// Degrees with two digits, from one turn beginning at 0.
    XStringW FormatAngle(double radians) const;

    /// The fields as attributes of a node; absent ones leave the defaults. A preset's scale is not applied to
    /// UCS records.
    void Store(ZvCore::BinXmlNode& node) const;
    void Load(const ZvCore::BinXmlNode& node);

private:
    ZvUcs* CurrentUcs() const;
    void TakePresetNames();
    bool ReadNumber(std::u16string_view text, size_t& at, double& value) const;
    int ReadCoordinates(std::u16string_view text, double (&values)[3]) const;
    bool ParseArea(const XStringW& text, double plainFactor, double& world) const;
    bool ParseLength(const XStringW& text, double plainFactor, double& world) const;
    bool ReadUnit(std::u16string_view text, size_t& at, double& unitsPerMeter) const;
    double UnitsPerMeterOf(const XStringW& unit) const;
    XStringW UserUnitAbbr() const;
    XStringW FormatNumber(double value, int precision) const;

    ZvDrawing* m_drawing;
    Preset m_preset = Preset::Meters;
    double m_scale = 1.0;
    double m_textureScale = 1.0;
    double m_customUnitsPerMeter = 0; ///< 0: the preset counts
    XStringW m_worldName, m_worldAbbr;
    XStringW m_decimalSeparator = u".";
    XStringW m_coordinateSeparator = u", ";
    XStringW m_angleName = u"degrees";
    XStringW m_angleAbbr = u"\u00EF\u00BF\u00BD";
    XStringW m_paperName, m_paperAbbr;
    double m_metersPerPaperUnit = kMetersPerPoint;
    double m_paperUnitsPerMeter = kPointsPerMeter;
    int m_precision = 3;
};
