#pragma once
#include "Zelvan/ZvBounds.h"
#include "Zelvan/ZvUnits.h"
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ZvDrawing;
class ZvEntity;
class ZvUcs;

/// How places, lengths, areas and angles of a drawing are read from and shown to who works at the command line: in the user's
/// unit (that of the current UCS record, the world unit unless set), with decimal point and comma whatever the drawing's own
/// separators are, and with the digits that show a millimetre. Changes nothing in the drawing.
class DrawingUnits {
public:
    explicit DrawingUnits(const ZvDrawing& drawing);

    /// A length unit that is read and shown. The first two are what a UCS record is given for it.
    struct Unit {
        double perWorldUnit = 1;
        XStringW name, abbreviation;
    };
    /// "km", "inch", "ft" ...; nothing with the reason in `why` for what is none.
    std::optional<Unit> FindUnit(const std::string& name, std::string& why) const;

    // --- reading: plain numbers are user units, a unit may stand behind each (2.5km, 10'6''); nothing for what does not parse
    /// "X,Y" or "X,Y,Z" to a place in the world.
    std::optional<Vec3d> Place(std::string_view word) const;
    /// "X,Y,X,Y ..." to places in the plane; empty for what does not parse.
    std::vector<Vec2d> Places(std::string_view word) const;
    /// The same to a way in the world, whatever the UCS record's origin is.
    std::optional<Vec3d> Way(std::string_view word) const;
    /// To world units.
    std::optional<double> Distance(std::string_view word) const;
    /// Decimal degrees to radians.
    std::optional<double> Angle(std::string_view word) const;

    // --- showing
    std::string PlaceText(const Vec3d& world) const;
    /// X and Y alone.
    std::string PlanText(const Vec2d& world) const;
    std::string LengthText(double world) const;
    std::string AreaText(double world) const;
    std::string AngleText(double radians) const;
    /// "X, Y to X, Y (W unit x H unit)" or "empty".
    std::string ExtentText(const ZvBounds3D& bounds) const;
    /// World units of a length on the ground.
    double FromMeters(double meters) const { return meters * m_units.WorldUnitsPerMeter(); }
    /// What a place looks like, for who wrote none.
    std::string PlaceHint() const;

private:
    std::optional<Vec3d> UserPlace(std::string_view word) const;
    Vec3d ToWorld(const Vec3d& user) const;

    ZvUnits m_units;
    const ZvUcs* m_ucs;
};

/// What can be measured of entities, world units. Erased ones and those without length or area add nothing.
struct DrawingMeasure {
    uint64_t entities = 0;
    double length = 0; ///< of all lines, in space
    double area = 0;   ///< of polygons and other areas, holes taken off
    ZvBounds3D bounds;

    void Add(const ZvEntity& entity);
    void Add(const DrawingMeasure& other);
};
